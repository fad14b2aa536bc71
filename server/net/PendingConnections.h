#pragma once

#include "service/LogOnce.h"

#include <boost/asio/ip/tcp.hpp>

#include <cstddef>
#include <deque>
#include <optional>
#include <utility>

namespace practice {

/// Where connections wait to be let in, so that those which hang up at once cost next to nothing and keep
/// nobody behind them waiting.
///
/// Lives on the acceptor's single-threaded executor. Whoever owns it looks in regularly, once a step: that is
/// also when accepting goes on after the pending was full, or the system out of descriptors.
class PendingConnections
{
public:
    /// More wait in the system's own queue.
    static constexpr std::size_t room = 128;

    /// The acceptor is not owned. The log hears when connections cannot be accepted, once until one can
    /// again.
    PendingConnections(boost::asio::ip::tcp::acceptor& acceptor_, LogOnce::Log log)
        : acceptor(acceptor_), shortage(std::move(log))
    {
    }

    void open() { accept(); }
    /// Accepts nothing more, and hangs up on all who wait.
    void close();

    /// Sends away those who have hung up, and goes on accepting.
    void tidy();
    /// The one who has waited longest, if anybody does.
    std::optional<boost::asio::ip::tcp::socket> next();

private:
    boost::asio::ip::tcp::acceptor& acceptor;
    LogOnce shortage;
    std::deque<boost::asio::ip::tcp::socket> waiting;
    bool closed = false;
    bool accepting = false;
    unsigned pause = 0;  ///< calls of `tidy` until it is tried again

    void accept();
    void handleAccept(const boost::system::error_code& error, boost::asio::ip::tcp::socket socket);
};

}  // namespace practice
