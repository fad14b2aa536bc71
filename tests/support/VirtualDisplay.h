#pragma once

#include "tests/support/Picture.h"
#include "tests/support/Process.h"

#include <string>

namespace support {

/// An X server of one test, without a window manager, as large as the client's window, so that a window pixel
/// is a screen pixel.
class VirtualDisplay
{
public:
    VirtualDisplay();

    /// As in the environment variable DISPLAY.
    const std::string& name() const { return displayName; }

    /// Runs a command, its words separated by blanks, on this display; throws unless it succeeds.
    std::string run(const std::string& command) const;
    /// Words of xdotool, like "keydown w mousedown 1". A press shorter than a frame can be missed.
    void xdotool(const std::string& words) const { run("xdotool " + words); }
    Picture screenshot() const { return Picture(run("import -silent -window root -depth 8 ppm:-")); }

private:
    Process server;
    std::string displayName;
};

}  // namespace support
