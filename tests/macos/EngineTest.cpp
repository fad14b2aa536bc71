// The parts of the engine that only macOS builds, over stand-ins for its frameworks.
#include "engine/MultithreadedGL.h"
#include "engine/ResourceFolder.h"

#include <CoreFoundation/CoreFoundation.h>
#include <OpenGL/OpenGL.h>
#include <gtest/gtest.h>

static std::string bundlePath;  ///< empty: there is no bundle
static int copies = 0;          ///< not released yet
static CGLError answerToEnable = kCGLNoError;

CFBundleRef CFBundleGetMainBundle()
{
    return reinterpret_cast<CFBundleRef>(&bundlePath);
}

CFURLRef CFBundleCopyBundleURL(CFBundleRef bundle)
{
    copies += bundlePath.empty() ? 0 : 1;
    return bundlePath.empty() ? nullptr : reinterpret_cast<CFURLRef>(bundle);
}

CFStringRef CFURLCopyFileSystemPath(CFURLRef url, long pathStyle)
{
    copies += 1;
    return pathStyle == kCFURLPOSIXPathStyle ? reinterpret_cast<CFStringRef>(url) : nullptr;
}

unsigned char CFStringGetCString(CFStringRef, char* buffer, long size, unsigned encoding)
{
    const bool isAscii = encoding == kCFStringEncodingASCII && bundlePath.find("ü") == std::string::npos;
    const bool fits = isAscii && bundlePath.size() < static_cast<std::size_t>(size);
    bundlePath.copy(buffer, fits ? bundlePath.size() : 0);  // into zeros
    return fits ? 1 : 0;
}

void CFRelease(CFTypeRef object)
{
    copies -= object == &bundlePath ? 1 : 0;
}

CGLContextObj CGLGetCurrentContext()
{
    return nullptr;
}

CGLError CGLEnable(CGLContextObj, int option)
{
    return option == kCGLCEMPEngine ? answerToEnable : kCGLNoError + 1;
}

TEST(EngineOnMacOS, LooksForItsFilesInTheBundle)
{
    const std::string longest(1023, 'x');
    const std::pair<std::string, std::string> cases[] = {// the bundle, the folder
                                                         {longest, longest},
                                                         {longest + "x", "."},
                                                         {"/Spiele für alle/Vantor.app", "."},
                                                         {"", "."}};
    for (const auto& [bundle, folder] : cases) {
        bundlePath = bundle;
        testing::internal::CaptureStdout();
        EXPECT_EQ(applicationFolder(), folder);
        EXPECT_EQ(testing::internal::GetCapturedStdout().empty(), folder != ".") << bundle;
        EXPECT_EQ(copies, 0) << bundle;
    }
}

TEST(EngineOnMacOS, EnablesMultithreadedOpenGL)
{
    EXPECT_TRUE(enableMultithreadedGL());
    answerToEnable = kCGLNoError + 1;
    EXPECT_FALSE(enableMultithreadedGL());
}
