// The start-up code of macOS in GNUstep, around a probe in place of the game: see LaunchProbe.m.
#include "tests/support/VirtualDisplay.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

namespace {

namespace fs = std::filesystem;
using support::Process;

fs::path newFolder()
{
    std::string name = fs::temp_directory_path() / "vantor-launch-XXXXXX";
    return fs::canonical(mkdtemp(name.data()));
}

// GNUstep starts a daemon that stays for some seconds; by then it is a child of this process.
void endDaemons()
{
    for (pid_t child = 0; std::ifstream("/proc/thread-self/children") >> child;) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
}

/// An application bundle in a folder of its own, into which GNUstep's files go as well.
class Launch : public testing::Test
{
protected:
    Launch()
    {
        prctl(PR_SET_CHILD_SUBREAPER, 1);
        fs::create_directories(bundle / "Resources");
        fs::copy_file(VANTOR_LAUNCH_PROBE, program);
        fs::copy_file(VANTOR_INFO_PLIST, information);
        std::ofstream(folder / "GNUstep.conf")
            << "GNUSTEP_USER_DEFAULTS_DIR=" << folder.string()
            << "/Defaults\nGNUSTEP_USER_DIR_LIBRARY=" << folder.string() << "/Library\n";
    }

    ~Launch() override
    {
        display.reset();
        endDaemons();
        fs::remove_all(folder);
    }

    /// The command in the environment of a start.
    std::vector<std::string> onDisplay(const std::vector<std::string>& words) const
    {
        std::vector<std::string> all = {"env",
                                        "DISPLAY=" + display->name(),
                                        "TEMP=" + folder.string(),
                                        "GNUSTEP_CONFIG_FILE=" + (folder / "GNUstep.conf").string(),
                                        "SDL_VIDEODRIVER=dummy",
                                        "MALLOC_PERTURB_=90"};  // fresh memory is not zero
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }

    std::string printedBy(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), program);
        Process probe(onDisplay(arguments));
        EXPECT_EQ(probe.end(), "status 7") << "the result of SDL_main is the exit status";
        return probe.output();
    }

    const fs::path folder = newFolder();
    const fs::path applications = folder / "Applications";
    const fs::path bundle = applications / "Probe.app";
    const fs::path program = bundle / "Probe";
    const fs::path information = bundle / "Resources/Info-gnustep.plist";
    std::optional<support::VirtualDisplay> display{std::in_place};
};

}  // namespace

TEST_F(Launch, PassesTheArgumentsOnUnlessTheDesktopAddedItsOwn)
{
    const std::string document = folder / "Bücher.txt";
    std::ofstream(document) << "\n";
    const std::string here = fs::current_path();
    const std::string beside = applications;  // where the bundle is
    const struct
    {
        std::vector<std::string> given;
        std::string seen, folder;
    } cases[] = {
        {{}, "", here},
        {{"--host", "-psn_0_1234", "--port", "5"}, " [--host] [-psn_0_1234] [--port] [5]", here},
        {{"-psnX", "--host", "127.0.0.1"}, " [/first]", beside},
        {{"-ps"}, " [-ps]", here},
        // GNUstep's way to say that the desktop asks for a document.
        {{"-psn_0_1234", "-GSFilePath", document}, " [/first] [" + document + "]", beside},
        {{"-GSFilePath", document}, " [-GSFilePath] [" + document + "]", here},
    };
    for (const auto& c : cases) {
        const std::string output = printedBy(c.given);
        const std::string expected =
            "\nSDL_main" + c.seen + "\nin " + c.folder + "\na late document is refused\n";
        EXPECT_NE(output.find(expected), std::string::npos) << output;
        EXPECT_EQ(output.find("SDL_main"), output.rfind("SDL_main")) << "called once";
        EXPECT_NE(output.find("foreground application\n"), std::string::npos);
    }
}

TEST_F(Launch, BuildsAMenuBarUnderTheNameOfTheBundleOrOfTheProcessWhoseQuitEndsTheGameAndNotTheProcess)
{
    const std::string output = printedBy({});
    EXPECT_EQ(output.substr(std::min(output.find("Vantor:\n"), output.size())),
              "Vantor:\n"
              "About Vantor, orderFrontStandardAboutPanel:\n"
              "--\n"
              "Hide Vantor, command h, hide:\n"
              "Hide Others, option command h, hideOtherApplications:\n"
              "Show All, unhideAllApplications:\n"
              "--\n"
              "Quit Vantor, command q, terminate:\n"
              "Window:\n"
              "Minimize, command m, performMiniaturize:\n"
              "Quit asks the main loop to end\n");
    std::ofstream(information) << "{}";
    const std::string nameless = printedBy({});  // GNUstep arranges a menu of this name in its own way
    for (const char* item : {"\nAbout Probe,", "\nHide Probe,", "\nQuit Probe,"}) {
        EXPECT_NE(nameless.find(item), std::string::npos) << item << "\n" << nameless;
    }
}

// An open descriptor still starts a program whose folder is gone.
TEST_F(Launch, AbortsWhereTheFolderOfTheBundleIsGone)
{
    const std::string script = "exec 9<\"$1\"; rm -r \"$2\"; exec /proc/self/fd/9 -psn_0_1234";
    Process probe(onDisplay({"sh", "-c", script, "sh", program, applications}));
    EXPECT_EQ(probe.end(), "signal " + std::to_string(SIGABRT)) << probe.output();
    EXPECT_TRUE(probe.hasPrinted("chdir (parentdir) == 0")) << probe.output();
    EXPECT_FALSE(probe.hasPrinted("SDL_main"));
}
