#include "tests/support/VirtualDisplay.h"

#include <iterator>
#include <sstream>
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
    std::istringstream words(command);
    std::vector<std::string> all = {"env", "DISPLAY=" + displayName};
    all.insert(all.end(), std::istream_iterator<std::string>(words), {});
    outputOf(all);
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
