#pragma once

#include "server/net/PracticeServer.h"
#include "service/LogOnce.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <string>

namespace practice {

/// Appends a row to a file once a second: the process's traffic, players, projectiles, the server's counts,
/// and how late the latest step of that second was.
///
/// Writes on the thread that runs the io_context: meant for a file on a local disk.
class MeasurementLog
{
public:
    /// Throws std::runtime_error unless `file` is, or can become, a regular file that we may append to. Logs
    /// once that a row did not make the file longer, as on a full disk. `server` must outlive the log.
    MeasurementLog(boost::asio::io_context& io, PracticeServer& server, const std::string& file,
                   LogOnce::Log log);

private:
    PracticeServer& server;
    boost::asio::steady_timer timer;
    std::string name;
    LogOnce errors;

    void schedule();
    void writeRow();
};

}  // namespace practice
