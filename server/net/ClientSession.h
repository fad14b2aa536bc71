#pragma once

#include "network/Framing.h"

#include <boost/asio/ip/tcp.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace practice {

/// One client's TCP connection, with a bounded send queue and a bounded receive buffer.
///
/// Lives on its socket's single-threaded executor. Sending never blocks. A client is cut off when its queue
/// is full, because it does not read. It is also cut off when its bytes are no frames. The owner looks at
/// `state` regularly and then closes the session. The traffic goes into the measurement log's counters.
class ClientSession : public std::enable_shared_from_this<ClientSession>
{
public:
    enum class State : std::uint8_t
    {
        open,
        hungUp,  ///< by the client, or the network failed
        cutOff,  ///< see cutOffReason
        closed   ///< by the owner
    };

    /// Bytes that may wait for a client: several seconds of the fullest match, or its introduction twice
    /// over.
    static constexpr std::size_t defaultQueueLimit = std::size_t(256) * 1024;

    explicit ClientSession(boost::asio::ip::tcp::socket socket, std::size_t queueLimit = defaultQueueLimit);

    using FrameHandler = std::function<void(const framing::ClientFrame&)>;

    /// The handler gets each frame received, until the session ends; it must not close the session.
    void start(FrameHandler onFrame);
    /// Queues a frame for the next flush.
    void send(const std::string& frame);
    /// Starts to write what is queued, unless a write is under way: one write for many frames.
    void flush();
    void close() { end(State::closed, ""); }

    State state() const { return current; }
    const std::string& cutOffReason() const { return reason; }
    boost::asio::ip::tcp::endpoint peer() const { return remote; }
    /// The number of bytes received since the last call.
    std::size_t takeReceivedBytes() { return std::exchange(receivedBytes, 0); }

private:
    boost::asio::ip::tcp::socket socket;
    boost::asio::ip::tcp::endpoint remote;
    std::size_t queueLimit;
    State current = State::open;
    std::string reason;
    FrameHandler onFrame;
    std::array<char, 2048> buffer{};
    std::size_t receivedBytes = 0;
    std::string stream;    ///< received and not cut into frames yet
    std::string queued;    ///< waits for the write in flight
    std::string inFlight;  ///< belongs to the write under way; empty if there is none

    void receive();
    void handleReceive(const boost::system::error_code& error, std::size_t bytes);
    void end(State state, const std::string& reason);
};

}  // namespace practice
