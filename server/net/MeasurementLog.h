#pragma once

#include "server/match/Match.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>

#include <functional>
#include <string>

namespace practice {

/// Appends a row of the process's traffic, players and projectiles to a file once a second.
///
/// Lives on the thread that runs the io_context, and writes on it: meant for a file on a local disk.
class MeasurementLog
{
public:
    using Say = std::function<void(const std::string& line)>;

    /// Throws std::runtime_error unless `file` is, or can be made, a regular file that we may append to.
    /// `say` hears of the first row that did not make the file longer, as on a full disk, and of no other.
    MeasurementLog(boost::asio::io_context& io, const Match& match, const std::string& file, Say say);

    /// Leaves the io_context without work of ours.
    void stop();

private:
    const Match& match;
    boost::asio::steady_timer timer;
    std::string name;
    Say say;
    bool failing = false;

    void schedule();
    void writeRow();
};

}  // namespace practice
