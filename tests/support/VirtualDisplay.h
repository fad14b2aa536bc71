#pragma once

#include "tests/support/Picture.h"
#include "tests/support/Process.h"

#include <memory>
#include <string>
#include <vector>

namespace support {

/// An X server of one test, without a window manager, as large as the client's window, so that a window pixel
/// is a screen pixel. Throws where Xvfb or one of the tools is missing.
class VirtualDisplay
{
public:
    VirtualDisplay();

    /// As in the environment variable DISPLAY.
    const std::string& name() const { return displayName; }

    /// Key names are those of xdotool. A press shorter than a frame can be missed: wait between down and up.
    void keyDown(const std::string& key) const { xdotool({"keydown", key}); }
    void keyUp(const std::string& key) const { xdotool({"keyup", key}); }
    void buttonDown() const { xdotool({"mousedown", "1"}); }
    void buttonUp() const { xdotool({"mouseup", "1"}); }
    void movePointer(int dx, int dy) const;

    /// Starts a window manager, which must be there before the client's window for a person to close it.
    void startWindowManager();
    /// What a click on the window's close button does; needs the window manager.
    void closeWindow(const std::string& windowClass) const;

    /// Kept as a PPM file too, where the environment names a folder in VANTOR_KEEP_SCREENSHOTS (with a slash
    /// behind).
    Picture screenshot() const;

private:
    void xdotool(std::vector<std::string> words) const;
    void runTool(std::vector<std::string> command) const;

    std::unique_ptr<Process> server;
    std::unique_ptr<Process> windowManager;
    std::string displayName;
};

}  // namespace support
