#include "tests/support/VirtualDisplay.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace support {

namespace {

constexpr int startTimeout = 20000;  // milliseconds; the machine may be busy

// Xvfb chooses a free number and tells it, with a line end, once it accepts connections.
std::string readDisplayNumber(int fd)
{
    std::string number;
    pollfd ready = {fd, POLLIN, 0};
    char c = 0;
    while (poll(&ready, 1, startTimeout) == 1 && read(fd, &c, 1) == 1) {
        if (c == '\n') {
            return number;
        }
        number += c;
    }
    throw std::runtime_error("Xvfb does not start");
}

Descriptor discard()
{
    return Descriptor(open("/dev/null", O_WRONLY | O_CLOEXEC));
}

}  // namespace

VirtualDisplay::VirtualDisplay()
{
    requireProgram("Xvfb", "xvfb");
    requireProgram("xdotool", "xdotool");
    requireProgram("import", "imagemagick");
    Pipe number;
    const Descriptor nowhere = discard();
    Launch launch;
    launch.command = {"Xvfb", "-displayfd", "3", "-noreset",  "-nolisten",
                      "tcp",  "-screen",    "0", "800x600x24"};
    launch.output = nowhere.get();
    launch.extraDescriptor = number.writeEnd.get();
    server = std::make_unique<Process>(launch);
    number.writeEnd.close();
    displayName = ":" + readDisplayNumber(number.readEnd.get());
}

void VirtualDisplay::movePointer(int dx, int dy) const
{
    xdotool({"mousemove_relative", "--", std::to_string(dx), std::to_string(dy)});
}

void VirtualDisplay::startWindowManager()
{
    requireProgram("openbox", "openbox");
    requireProgram("wmctrl", "wmctrl");
    const Descriptor nowhere = discard();
    Launch launch{{"openbox"}, {"DISPLAY=" + displayName}, nowhere.get()};
    windowManager = std::make_unique<Process>(launch);
    // A window that opens while the manager is starting may never be shown.
    launch.command = {"wmctrl", "-m"};
    if (!eventually([&] { return Process(launch).end() == "status 0"; })) {
        throw std::runtime_error("openbox does not start");
    }
}

void VirtualDisplay::closeWindow(const std::string& windowClass) const
{
    runTool({"wmctrl", "-x", "-c", windowClass});
}

Picture VirtualDisplay::screenshot() const
{
    std::string file = std::filesystem::temp_directory_path() / "vantor-screen-XXXXXX";
    const Descriptor reserved(mkstemp(file.data()));
    runTool({"import", "-silent", "-window", "root", "-depth", "8", "ppm:" + file});
    if (const char* keep = std::getenv("VANTOR_KEEP_SCREENSHOTS")) {
        std::filesystem::copy_file(file, std::string(keep) + file.substr(file.rfind('-') + 1) + ".ppm");
    }
    Picture picture(file);
    std::filesystem::remove(file);
    return picture;
}

void VirtualDisplay::xdotool(std::vector<std::string> words) const
{
    words.insert(words.begin(), "xdotool");
    runTool(std::move(words));
}

void VirtualDisplay::runTool(std::vector<std::string> command) const
{
    run({std::move(command), {"DISPLAY=" + displayName}});
}

}  // namespace support
