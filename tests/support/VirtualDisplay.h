#pragma once

#include "tests/support/Process.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace support {

/// An X server of one test, without a window manager. It is as large as the client's window, so that a window
/// pixel is a screen pixel.
class VirtualDisplay
{
public:
    // Xvfb chooses a free number and prints it, with a line end, once it accepts connections.
    VirtualDisplay()
        : server(
              {"sh", "-c", "exec Xvfb -displayfd 1 -noreset -nolisten tcp -screen 0 800x600x24 2>/dev/null"})
    {
        if (!eventually([this] { return server.hasPrinted("\n"); }, 20s)) {
            throw std::runtime_error("Xvfb does not start (package xvfb)");
        }
        displayName = ":" + server.output();
        displayName.pop_back();
    }

    /// As in the environment variable DISPLAY.
    const std::string& name() const { return displayName; }

    /// Runs a shell's command on this display; throws unless it succeeds.
    void run(const std::string& command) const
    {
        outputOf({"sh", "-c", "export DISPLAY=" + displayName + "; exec " + command});
    }
    /// Words of xdotool, like "keydown w mousedown 1". A press shorter than a frame can be missed.
    void xdotool(const std::string& words) const { run("xdotool " + words); }
    /// Saves a part of the screen, like "320x200+0+0" (width, height, left, top), in an image file.
    void screenshot(const std::string& region, const std::string& file) const
    {
        run("import -silent -window root -strip -crop " + region + " +repage " + file);
    }

    /// Waits until a part of the screen looks like the golden image of that name. A person approved the
    /// golden image when it was made. If the wait times out, the test fails and names the file of the last
    /// screenshot. An image of the differences lies beside that file.
    ///
    /// At most one pixel in 1,000 may differ by more than 5 % of the largest distance of colours. One version
    /// of Mesa draws the same bits in every run. Another version, or Mesa's other software rasteriser,
    /// differs in a few hundred of 480,000 pixels.
    ///
    /// With VANTOR_REMAKE_PICTURES in the environment it first makes the golden image anew.
    void expectImage(const std::string& name, const std::string& region) const
    {
        const std::string golden = VANTOR_GOLDEN_IMAGES + name + ".png";
        const std::string seen = VANTOR_SEEN_IMAGES + name + ".seen.png";
        if (std::getenv("VANTOR_REMAKE_PICTURES") != nullptr) {
            std::this_thread::sleep_for(1800ms);  // until a scene stands still
            screenshot(region, golden);
        }
        const int area = std::stoi(region) * std::stoi(region.substr(region.find('x') + 1));
        std::string different;
        const auto isLikeGolden = [&] {
            screenshot(region, seen);
            Process compare({"compare", "-metric", "AE", "-fuzz", "5%", golden, seen,
                             VANTOR_SEEN_IMAGES + name + ".differences.png"});
            const std::string end = compare.end();  // 1 where a pixel differs, 2 where the files do not fit
            different = compare.output();
            return (end == "status 0" || end == "status 1") && std::stod(different) <= area / 1000;
        };
        EXPECT_TRUE(eventually(isLikeGolden, 40s))
            << different << " pixels differ from " << golden << "; see " << seen;
    }

private:
    Process server;
    std::string displayName;
};

}  // namespace support
