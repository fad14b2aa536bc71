#pragma once

#include "relay/RelayConfig.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>

#include <array>
#include <deque>
#include <functional>
#include <memory>
#include <string>

namespace relay {

/// One direction of a TCP connection: what comes out of one socket goes into the other, later, in order, and
/// none of it is lost.
///
/// Lives on the sockets' single-threaded executor. Where the other side does not read, or the delay is long,
/// it stops reading at byteLimit. An end of file is passed on after the bytes before it.
class StreamPipe : public std::enable_shared_from_this<StreamPipe>
{
public:
    using Socket = std::shared_ptr<boost::asio::ip::tcp::socket>;
    enum class Cause
    {
        endOfFile,
        brokenSource,  ///< the system has taken all that came before
        brokenTarget   ///< what the target itself said last may still be under way in the other pipe
    };
    /// Called at most once.
    using End = std::function<void(Cause)>;

    static constexpr std::size_t byteLimit = std::size_t(256) * 1024;

    /// The config outlives the pipe.
    StreamPipe(Socket from, Socket to, const Flow& flow, const RelayConfig& config);

    void start(End onEnd);
    /// Calls nobody any more. The sockets are the owner's to close.
    void close();

private:
    struct Piece
    {
        Time due;
        std::string bytes;  ///< none: the end of what this side says
    };

    Socket from, to;
    Flow flow;
    const RelayConfig& config;
    Impairment impairment;
    boost::asio::steady_timer timer;
    End onEnd;
    std::array<char, 16384> received{};
    std::deque<Piece> waiting;  ///< the first one is being awaited or written
    std::size_t waitingBytes = 0;
    Time lastDue;
    bool isReading = false;
    bool isBroken = false;  ///< the piece without bytes stands for an error
    bool closed = false;

    void read();
    void handleRead(const boost::system::error_code& error, std::size_t bytes);
    void push(std::string bytes);
    void awaitFirst();
    void deliverFirst();
    void handleWritten(const boost::system::error_code& error);
    void finish();
};

}  // namespace relay
