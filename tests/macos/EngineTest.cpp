// The resource folder on macOS, over a stand-in for its framework. The OpenGL switch is only compiled.
#include "engine/ResourceFolder.h"

#include <CoreFoundation/CoreFoundation.h>
#include <gtest/gtest.h>

TEST(EngineOnMacOS, LooksForItsFilesInTheBundle)
{
    const std::string longest(1023, 'x');
    for (const std::string& bundle :
         {longest, longest + "x", std::string("/Spiele für alle"), std::string()}) {
        bundlePath = bundle;
        testing::internal::CaptureStdout();
        EXPECT_EQ(applicationFolder(), bundle == longest ? bundle : ".");
        EXPECT_EQ(testing::internal::GetCapturedStdout().empty(), bundle == longest) << bundle;
        EXPECT_EQ(copies, 0) << bundle;
    }
}
