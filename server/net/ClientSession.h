#pragma once

#include "server/net/ClientFrame.h"

#include <boost/asio/ip/tcp.hpp>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace practice {

/// One client's TCP connection: a bounded send queue and a bounded receive buffer.
///
/// Lives on its socket's single-threaded executor. Sending never blocks and never calls back from within
/// `send`. A client that does not read is cut off once its queue is full, and one whose bytes are no frames
/// at once. The traffic goes into the measurement log's counters.
class ClientSession : public std::enable_shared_from_this<ClientSession>
{
public:
    using Frame = std::function<void(const framing::ClientFrame&)>;
    /// `fault` is empty when the client hung up, else it says why it was cut off. Called at most once.
    using End = std::function<void(const std::string& fault)>;

    /// Bytes that may wait for a client: several seconds of the fullest match, or its introduction twice
    /// over.
    static constexpr std::size_t defaultQueueLimit = std::size_t(256) * 1024;

    explicit ClientSession(boost::asio::ip::tcp::socket socket, std::size_t queueLimit = defaultQueueLimit);

    void start(Frame onFrame, End onEnd);
    /// Queues a frame for the next flush.
    void send(const std::string& frame);
    /// Starts to write what is queued, unless that is under way: one write for many frames.
    void flush();
    /// Ends the session and forgets the callbacks, so not to be called from within one; queued bytes are
    /// dropped.
    void close();

    boost::asio::ip::tcp::endpoint peer() const { return remote; }
    /// How many bytes have come since the last call.
    std::size_t takeReceivedBytes() { return std::exchange(receivedBytes, 0); }

private:
    boost::asio::ip::tcp::socket socket;
    boost::asio::ip::tcp::endpoint remote;
    std::size_t queueLimit;
    Frame onFrame;
    End onEnd;
    std::array<char, 2048> received{};
    std::size_t receivedBytes = 0;
    ClientStream stream;
    std::string queued;    ///< waits for the write in flight
    std::string inFlight;  ///< belongs to the pending write; empty if there is none
    bool ended = false;

    void receive();
    void handleReceive(const boost::system::error_code& error, std::size_t bytes);
    void write();
    void end(const std::string& fault);
    void shutDown();
};

}  // namespace practice
