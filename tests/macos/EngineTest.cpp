// The parts of the engine that only macOS builds, over stand-ins for its frameworks.
#include "tests/engine/FreshWorld.h"

#include <CoreFoundation/CoreFoundation.h>
#include <OpenGL/OpenGL.h>

#include <algorithm>
#include <array>
#include <set>

namespace {

const int bundleUrl = 0;
std::string bundlePath;           ///< none: empty
std::multiset<CFTypeRef> copies;  ///< not released yet
long currentContext = 0;
CGLError answerToEnable = kCGLNoError;

}  // namespace

CFBundleRef CFBundleGetMainBundle()
{
    return bundlePath.data();
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef)
{
    return bundlePath.empty() ? nullptr : static_cast<CFURLRef>(*copies.insert(&bundleUrl));
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, CFIndex pathStyle)
{
    EXPECT_EQ(url, &bundleUrl);
    EXPECT_EQ(pathStyle, kCFURLPOSIXPathStyle);
    return static_cast<CFStringRef>(*copies.insert(&bundlePath));
}

unsigned char CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, std::uint32_t encoding)
{
    EXPECT_EQ(encoding, kCFStringEncodingASCII);
    const bool isAscii = std::all_of(string->begin(), string->end(), [](unsigned char c) { return c < 128; });
    const bool fits = isAscii && string->size() < static_cast<std::size_t>(size);
    std::copy_n(string->c_str(), fits ? string->size() + 1 : 0, buffer);
    return fits ? 1 : 0;
}

void CFRelease(CFTypeRef object)
{
    EXPECT_EQ(copies.erase(object), 1U) << "not a copy, or released before";
}

CGLContextObj CGLGetCurrentContext()
{
    return glRecorder.calls.find("SDL_SetVideoMode") == std::string::npos ? nullptr : &currentContext;
}

CGLError CGLEnable(CGLContextObj context, CGLContextEnable option)
{
    EXPECT_EQ(context, &currentContext);
    EXPECT_EQ(option, 313);
    return answerToEnable;
}

using EngineOnMacOS = FreshWorld;

TEST_F(EngineOnMacOS, TakesItsResourcesFromTheBundle)
{
    const std::string complaint =
        "Error the application's path is unknown, not ASCII or too long, trying the working directory\n";
    const std::string longest(1023, 'x');
    const std::array<std::string, 3> cases[] = {
        // the bundle, the folder, what is printed
        {longest, longest + "/Contents/Resources/", ""},
        {longest + "x", "./Contents/Resources/", complaint},
        {"/Spiele für alle/Vantor.app", "./Contents/Resources/", complaint},
        {"", "./Contents/Resources/", complaint},
    };
    for (const auto& [bundle, folder, printed] : cases) {
        bundlePath = bundle;
        testing::internal::CaptureStdout();
        resources->setupResourceFolder();
        EXPECT_EQ(testing::internal::GetCapturedStdout(), printed) << bundle;
        EXPECT_EQ(resources->resourceFolder, folder);
        EXPECT_TRUE(copies.empty());
    }
}

TEST_F(EngineOnMacOS, AsksForMultithreadedOpenGLAndOnlyReportsARefusal)
{
    glRecorder.deliver(4, 0xFF0000, 800, 600);
    for (const CGLError answer : {kCGLNoError, kCGLBadContext}) {
        glRecorder.calls.clear();
        answerToEnable = answer;
        testing::internal::CaptureStdout();
        VT.init();
        EXPECT_EQ(testing::internal::GetCapturedStdout(),
                  answer == kCGLNoError ? "" : "Could not enable opengl-MT\n");
    }
}
