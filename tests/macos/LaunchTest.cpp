// The start-up code of macOS in GNUstep, around a probe in place of the game: see LaunchProbe.m.
#include "tests/support/VirtualDisplay.h"

#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

using namespace std::chrono_literals;
using support::Process;

namespace {

namespace fs = std::filesystem;

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
        nameBundle("Star");
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

    void nameBundle(const std::string& name) const
    {
        std::ofstream(bundle / "Resources/Info-gnustep.plist") << "{ CFBundleName = \"" << name << "\"; }";
    }

    /// The words: settings of the environment, the program, its arguments.
    std::vector<std::string> onDisplay(const std::vector<std::string>& words) const
    {
        std::vector<std::string> all = {"env",
                                        "DISPLAY=" + display->name(),
                                        "TEMP=" + folder.string(),
                                        "GNUSTEP_CONFIG_FILE=" + (folder / "GNUstep.conf").string(),
                                        "SDL_VIDEODRIVER=x11",
                                        "SDL_VIDEO_WINDOW_POS=400,300",
                                        "LIBGL_ALWAYS_SOFTWARE=1",
                                        "MALLOC_PERTURB_=90"};  // fresh memory is not zero
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }

    /// What a start prints that ends by itself.
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
    std::optional<support::VirtualDisplay> display{std::in_place};
};

/// What the probe has printed from the last mention of `mark` on.
std::string since(const std::string& output, const std::string& mark)
{
    const std::size_t start = output.rfind(mark);
    return start == std::string::npos ? "" : output.substr(start);
}

/// The newest place that the probe has printed of the item: its x and y on the screen, or nothing.
std::string placeOf(const std::string& item, const std::string& output)
{
    const std::string line = since(output, item + " at ");
    const std::size_t start = item.size() + 4;
    return line.empty() ? "" : line.substr(start, line.find('\n') - start);
}

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
        {{"--host", "127.0.0.1", "--port", "5"}, " [--host] [127.0.0.1] [--port] [5]", here},
        {{"--host", "-psn_0_1234"}, " [--host] [-psn_0_1234]", here},
        {{"-psn_0_1234"}, "", beside},
        {{"-psn_0_1234", "--host", "127.0.0.1"}, "", beside},
        // GNUstep's way to say that the desktop asks for a document.
        {{"-psn_0_1234", "-GSFilePath", document}, " [" + document + "]", beside},
        {{"-GSFilePath", document}, " [-GSFilePath] [" + document + "]", here},
    };
    for (const auto& c : cases) {
        const std::string output = printedBy(c.given);
        const std::string expected =
            "SDL_main" + c.seen + "\nin " + c.folder + "\na late document is refused\n";
        EXPECT_EQ(since(output, "SDL_main").substr(0, expected.size()), expected);
        EXPECT_EQ(output.find("SDL_main"), output.rfind("SDL_main")) << "called once";
        EXPECT_NE(output.find("foreground application\n"), std::string::npos);
    }
}

TEST_F(Launch, BuildsAMenuBarUnderTheNameOfTheBundleOrOfTheProcess)
{
    EXPECT_EQ(since(printedBy({}), "Star:\n"),
              "Star:\n"
              "About Star, orderFrontStandardAboutPanel:\n"
              "--\n"
              "Hide Star, command h, hide:\n"
              "Hide Others, option command h, hideOtherApplications:\n"
              "Show All, unhideAllApplications:\n"
              "--\n"
              "Quit Star, command q, terminate:\n"
              "Window:\n"
              "Minimize, command m, performMiniaturize:\n");
    nameBundle("");
    const std::string output = printedBy({});  // GNUstep arranges a menu of this name in its own way
    for (const char* item : {"\nAbout Probe,", "\nHide Probe,", "\nQuit Probe,"}) {
        EXPECT_NE(output.find(item), std::string::npos) << item << "\n" << output;
    }
}

TEST_F(Launch, QuitChosenWithTheMouseEndsTheGameAndNotTheProcess)
{
    Process probe(onDisplay({"PROBE_WINDOW=1", program}));
    std::string place;  // of Quit; another one once the menu is open
    const auto awaitAnotherPlace = [&] {
        const std::string before = place;
        const auto isPrinted = [&] {
            place = placeOf("Quit", probe.output());
            return !place.empty() && place != before;
        };
        return support::eventually(isPrinted);
    };
    ASSERT_TRUE(awaitAnotherPlace()) << probe.output();
    display->xdotool("mousemove " + placeOf("menu", probe.output()) + " mousedown 1");
    ASSERT_TRUE(awaitAnotherPlace()) << probe.output();
    display->xdotool("mousemove " + place + " sleep 0.2 mouseup 1");
    EXPECT_EQ(probe.end(), "status 0") << probe.output();
    EXPECT_TRUE(probe.hasPrinted("SDL_QUIT\n"));
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
