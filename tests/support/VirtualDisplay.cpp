#include "tests/support/VirtualDisplay.h"

#include <iterator>
#include <sstream>
#include <stdexcept>

namespace support {

// Xvfb chooses a free number and tells it, with a line end, once it accepts connections.
VirtualDisplay::VirtualDisplay()
    : server({"sh", "-c", "exec Xvfb -displayfd 1 -noreset -nolisten tcp -screen 0 800x600x24 2>/dev/null"})
{
    if (!eventually([this] { return server.hasPrinted("\n"); }, 20s)) {
        throw std::runtime_error("Xvfb does not start (package xvfb)");
    }
    displayName = ":" + server.output();
    displayName.pop_back();
}

std::string VirtualDisplay::run(const std::string& command) const
{
    std::istringstream words(command);
    std::vector<std::string> all = {"env", "DISPLAY=" + displayName};
    all.insert(all.end(), std::istream_iterator<std::string>(words), {});
    return outputOf(all);
}

}  // namespace support
