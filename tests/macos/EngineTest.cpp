// The parts of the engine that only macOS builds, over stand-ins for its frameworks.
#include "engine/MultithreadedGL.h"
#include "engine/ResourceFolder.h"

#include <CoreFoundation/CoreFoundation.h>
#include <OpenGL/OpenGL.h>
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

TEST(EngineOnMacOS, EnablesMultithreadedOpenGL)
{
    EXPECT_TRUE(enableMultithreadedGL());
    answer = 1;
    EXPECT_FALSE(enableMultithreadedGL());
}
