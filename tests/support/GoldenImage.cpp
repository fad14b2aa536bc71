#include "tests/support/GoldenImage.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace support {

namespace {

constexpr int onePixelIn = 1000;              // may differ
constexpr Clock::duration settling = 1800ms;  // until a scene stands still
constexpr Clock::duration patience = 20s;     // for a busy machine

int area(const std::string& region)
{
    return std::stoi(region) * std::stoi(region.substr(region.find('x') + 1));
}

}  // namespace

void expectImage(const VirtualDisplay& display, const GoldenImage& image,
                 const std::function<void()>& prepare)
{
    const std::string golden = VANTOR_GOLDEN_IMAGES + image.name + ".png";
    const std::string seen = VANTOR_SEEN_IMAGES + image.name + ".seen.png";
    const std::string differences = VANTOR_SEEN_IMAGES + image.name + ".differences.png";
    if (std::getenv("VANTOR_REMAKE_PICTURES") != nullptr) {
        std::this_thread::sleep_for(settling);
        prepare();
        display.screenshot(image.region, golden);
    }
    int different = 0;
    const auto isLikeGolden = [&] {
        prepare();
        display.screenshot(image.region, seen);
        different = countDifferent(golden, seen, differences);
        return different * onePixelIn <= area(image.region);
    };
    EXPECT_TRUE(eventually(isLikeGolden, patience))
        << different << " pixels differ from " << golden << "; see " << seen;
}

}  // namespace support
