#pragma once

#include "tests/support/Process.h"

#include <string>

namespace support {

/// An X server of one test, without a window manager. It is as large as the client's window, so that a window
/// pixel is a screen pixel.
class VirtualDisplay
{
public:
    VirtualDisplay();

    /// As in the environment variable DISPLAY.
    const std::string& name() const { return displayName; }

    /// Runs a command, its words separated by blanks, on this display; throws unless it succeeds.
    void run(const std::string& command) const;
    /// Words of xdotool, like "keydown w mousedown 1". A press shorter than a frame can be missed.
    void xdotool(const std::string& words) const { run("xdotool " + words); }
    /// Saves a part of the screen, like "320x200+0+0" (width, height, left, top), in a picture file.
    void screenshot(const std::string& region, const std::string& file) const
    {
        run("import -silent -window root -strip -crop " + region + " +repage " + file);
    }

private:
    Process server;
    std::string displayName;
};

/// How many pixels of two picture files of one size differ by more than 5 % of the largest distance of
/// colours.
int countDifferent(const std::string& first, const std::string& second,
                   const std::string& differences = "null:");

}  // namespace support
