#include "tests/support/GoldenImage.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace support {

namespace {

constexpr int onePixelIn = 1000;  // may differ
constexpr int patience = 10;      // settling times, for a busy machine

int area(const std::string& region)
{
    return std::stoi(region) * std::stoi(region.substr(region.find('x') + 1));
}

}  // namespace

void expectImage(const VirtualDisplay& display, const GoldenImage& image)
{
    const std::string golden = VANTOR_GOLDEN_IMAGES + image.name + ".png";
    const std::string seen = VANTOR_SEEN_IMAGES + image.name + ".seen.png";
    const std::string differences = VANTOR_SEEN_IMAGES + image.name + ".differences.png";
    if (std::getenv("VANTOR_REMAKE_PICTURES") != nullptr) {
        std::this_thread::sleep_for(image.settling);
        display.screenshot(image.region, golden);
    }
    int different = 0;
    const auto isLikeGolden = [&] {
        display.screenshot(image.region, seen);
        different = countDifferent(golden, seen, differences);
        return different * onePixelIn <= area(image.region);
    };
    EXPECT_TRUE(eventually(isLikeGolden, patience * image.settling))
        << different << " pixels differ from " << golden << "; see " << seen;
}

}  // namespace support
