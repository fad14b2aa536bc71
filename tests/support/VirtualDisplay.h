#pragma once

#include "tests/support/Process.h"

#include <functional>
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

    /// Runs a shell's command on this display; throws unless it succeeds.
    void run(const std::string& command) const;
    /// Words of xdotool, like "keydown w mousedown 1". A press shorter than a frame can be missed.
    void xdotool(const std::string& words) const { run("xdotool " + words); }
    /// Saves a part of the screen, like "320x200+0+0" (width, height, left, top), in a picture file.
    void screenshot(const std::string& region, const std::string& file) const
    {
        run("import -silent -window root -strip -crop " + region + " +repage " + file);
    }

    /// Waits until a part of the screen looks like the golden image of that name: a picture that a person
    /// looked at when it was made. If it does not in time, the test fails and names the picture of what was
    /// seen, beside which is one of the differences.
    ///
    /// At most one pixel in 1,000 may differ. One version of Mesa draws the same bits in every run; another
    /// one, or Mesa's other software rasteriser, differs in a few hundred of 480,000 pixels.
    ///
    /// With VANTOR_REMAKE_PICTURES in the environment it makes the golden image anew before.
    ///
    /// `prepare` runs before each look at the screen, for what does not last.
    void expectImage(
        const std::string& name, const std::string& region,
        const std::function<void()>& prepare = [] {}) const;

private:
    Process server;
    std::string displayName;
};

/// How many pixels of two picture files of one size differ by more than 5 % of the largest distance of
/// colours.
int countDifferent(const std::string& first, const std::string& second,
                   const std::string& differences = "null:");

}  // namespace support
