#pragma once

#include "tests/support/VirtualDisplay.h"

#include <functional>

namespace support {

/// What a part of the client's window has to look like: a picture file that a person looked at when it was
/// made.
///
/// At most one pixel in 1,000 may differ. One version of Mesa draws the same bits in every run; another one,
/// or Mesa's other software rasteriser, differs in a few hundred of 480,000 pixels.
struct GoldenImage
{
    std::string name;    ///< of the file, without folder and ending
    std::string region;  ///< as in VirtualDisplay::screenshot
};

/// Waits until the screen looks like the image. If it does not in time, the test fails and names the picture
/// of what was seen, beside which is one of the differences.
///
/// With VANTOR_REMAKE_PICTURES in the environment it makes the golden image anew before.
///
/// `prepare` runs before each look at the screen, for what does not last.
void expectImage(
    const VirtualDisplay& display, const GoldenImage& image, const std::function<void()>& prepare = [] {});

}  // namespace support
