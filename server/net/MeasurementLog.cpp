#include "server/net/MeasurementLog.h"

#include "instrumentation/Logger.h"
#include "scene/SceneGraph.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace practice {

namespace {

/// The logger computes rates anew only after more than a second, in whole milliseconds.
constexpr std::chrono::milliseconds period{1005};

void requireFile(const std::string& name)
{
    const auto refuse = [&name](const std::string& reason) {
        throw std::runtime_error("cannot write measurements to '" + name + "': " + reason);
    };
    std::error_code unknown;  // opening the file reports it
    const auto status = std::filesystem::status(name, unknown);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        refuse("not a regular file");
    }
    if (!std::ofstream(name, std::ios::app)) {
        refuse(std::strerror(errno));
    }
}

/// Bytes; 0 if there is no such file.
std::uintmax_t sizeOf(const std::string& name)
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(name, error);
    return error ? 0 : size;
}

/// The logger counts the objects of the process's scene. A server draws nothing, so null entries will do.
void fillScene(const Match& match)
{
    const auto& ships = match.allShips();
    const auto alive = std::count_if(ships.begin(), ships.end(), [](const Ship& s) { return s.alive; });
    using Objects = std::list<Transform*>;
    SceneGraph::getInstance()->typeLists = {{SGT_PLAYER, Objects(static_cast<std::size_t>(alive))},
                                            {SGT_PROJECTILE, Objects(match.allShots().size())}};
}

}  // namespace

MeasurementLog::MeasurementLog(boost::asio::io_context& io, PracticeServer& server_, const std::string& file,
                               LogOnce::Log log)
    : server(server_), timer(io), name(file), errors(std::move(log))
{
    requireFile(file);
    Logger::getInstance()->setFileToWriteTo(file);
    schedule();
}

void MeasurementLog::schedule()
{
    timer.expires_after(period);
    timer.async_wait([this](const boost::system::error_code&) {
        writeRow();
        schedule();
    });
}

void MeasurementLog::writeRow()
{
    fillScene(server.currentMatch());
    Logger* logger = Logger::getInstance();
    logger->extraColumns = server.counts();
    const auto latest = std::chrono::duration_cast<std::chrono::microseconds>(server.takeLatestDelay());
    logger->extraColumns["latest step us"] = static_cast<std::uint64_t>(latest.count());
    const std::uintmax_t sizeBefore = sizeOf(name);  // the logger does not report a full disk
    logger->calcPrS();
    logger->writeMeasurementToFile();
    if (sizeOf(name) <= sizeBefore) {
        errors.log("cannot write measurements to '" + name + "' any more");
    }
}

}  // namespace practice
