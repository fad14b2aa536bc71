// The parts of the engine that only macOS builds, over stand-ins for its frameworks.
#include "tests/engine/FreshWorld.h"

#include <CoreFoundation/CoreFoundation.h>
#include <OpenGL/OpenGL.h>

#include <algorithm>
#include <functional>
#include <set>

struct StandInBundle
{
};
struct StandInURL
{
};
struct StandInString
{
};
struct StandInContext
{
};

namespace {

StandInBundle mainBundle;
StandInURL bundleUrl;
StandInString bundlePathString;
StandInContext currentContext;

std::string bundlePath;
std::multiset<CFTypeRef> copies;  ///< not released yet
CGLError answerToEnable = kCGLNoError;
int enabledOption = 0;

std::string printedBy(const std::function<void()>& action)
{
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

bool isAscii(const std::string& text)
{
    return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c < 128; });
}

}  // namespace

CFBundleRef CFBundleGetMainBundle()
{
    return &mainBundle;
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle)
{
    EXPECT_EQ(bundle, &mainBundle);
    return static_cast<CFURLRef>(*copies.insert(&bundleUrl));
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFIndex pathStyle)
{
    EXPECT_EQ(url, &bundleUrl);
    EXPECT_EQ(pathStyle, kCFURLPOSIXPathStyle);
    return static_cast<CFStringRef>(*copies.insert(&bundlePathString));
}

unsigned char CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, std::uint32_t encoding)
{
    EXPECT_EQ(string, &bundlePathString);
    EXPECT_EQ(encoding, kCFStringEncodingASCII);
    const bool fits = isAscii(bundlePath) && bundlePath.size() < static_cast<std::size_t>(size);
    if (fits) {
        bundlePath.copy(buffer, bundlePath.size());
        buffer[bundlePath.size()] = '\0';
    }
    return fits ? 1 : 0;
}

void CFRelease(CFTypeRef object)
{
    EXPECT_EQ(copies.erase(object), 1U) << "not a copy, or released before";
}

CGLContextObj CGLGetCurrentContext()
{
    return &currentContext;
}

CGLError CGLEnable(CGLContextObj context, CGLContextEnable option)
{
    EXPECT_EQ(context, &currentContext);
    enabledOption = option;
    return answerToEnable;
}

using EngineOnMacOS = FreshWorld;

TEST_F(EngineOnMacOS, TakesItsResourcesFromTheBundle)
{
    const std::string complaint =
        "Error the application's path is not ASCII or too long, trying the working directory\n";
    const std::string longest(1023, 'x');
    const struct
    {
        std::string bundle, folder, printed;
    } cases[] = {
        {"/Applications/Vantor.app", "/Applications/Vantor.app/Contents/Resources/", ""},
        {longest, longest + "/Contents/Resources/", ""},
        {longest + "x", "./Contents/Resources/", complaint},
        {"/Spiele für alle/Vantor.app", "./Contents/Resources/", complaint},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bundle);
        bundlePath = c.bundle;
        EXPECT_EQ(printedBy([this] { resources->setupResourceFolder(); }), c.printed);
        EXPECT_EQ(resources->resourceFolder, c.folder);
        EXPECT_TRUE(copies.empty());
    }
}

TEST_F(EngineOnMacOS, AsksForMultithreadedOpenGLAndOnlyReportsARefusal)
{
    glRecorder.deliver(4, 0xFF0000, 800, 600);
    for (const auto& [answer, printed] :
         {std::pair(kCGLNoError, ""), std::pair(kCGLBadContext, "Could not enable opengl-MT\n")}) {
        answerToEnable = answer;
        enabledOption = 0;
        EXPECT_EQ(printedBy([] { VT.init(); }), printed);
        EXPECT_EQ(enabledOption, 313);
    }
}
