#include "tests/support/VirtualDisplay.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

namespace support {

// Xvfb chooses a free number and prints it, with a line end, once it accepts connections.
VirtualDisplay::VirtualDisplay()
    : server({"sh", "-c", "exec Xvfb -displayfd 1 -noreset -nolisten tcp -screen 0 800x600x24 2>/dev/null"})
{
    if (!eventually([this] { return server.hasPrinted("\n"); }, 20s)) {
        throw std::runtime_error("Xvfb does not start (package xvfb)");
    }
    displayName = ":" + server.output();
    displayName.pop_back();
}

void VirtualDisplay::run(const std::string& command) const
{
    outputOf({"sh", "-c", "export DISPLAY=" + displayName + "; exec " + command});
}

void VirtualDisplay::expectImage(const std::string& name, const std::string& region,
                                 const std::function<void()>& prepare) const
{
    const std::string golden = VANTOR_GOLDEN_IMAGES + name + ".png";
    const std::string seen = VANTOR_SEEN_IMAGES + name + ".seen.png";
    if (std::getenv("VANTOR_REMAKE_PICTURES") != nullptr) {
        std::this_thread::sleep_for(1800ms);  // until a scene stands still
        prepare();
        screenshot(region, golden);
    }
    const int area = std::stoi(region) * std::stoi(region.substr(region.find('x') + 1));
    int different = 0;
    const auto isLikeGolden = [&] {
        prepare();
        screenshot(region, seen);
        different = countDifferent(golden, seen, VANTOR_SEEN_IMAGES + name + ".differences.png");
        return different <= area / 1000;
    };
    EXPECT_TRUE(eventually(isLikeGolden, 20s))
        << different << " pixels differ from " << golden << "; see " << seen;
}

int countDifferent(const std::string& first, const std::string& second, const std::string& differences)
{
    Process compare({"compare", "-metric", "AE", "-fuzz", "5%", first, second, differences});
    const std::string end = compare.end();  // 1 where a pixel differs, 2 where the files do not fit
    if (end != "status 0" && end != "status 1") {
        throw std::runtime_error("compare: " + end + "\n" + compare.output());
    }
    return static_cast<int>(std::stod(compare.output()));
}

}  // namespace support
