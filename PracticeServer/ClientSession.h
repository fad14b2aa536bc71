#pragma once

#include "PracticeServer/ClientFrame.h"

#include <boost/asio/ip/tcp.hpp>

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace practice {

/// One client's TCP connection: a bounded send queue and a bounded receive buffer.
///
/// Lives on its socket's single-threaded executor. Sending never blocks and never calls back from within
/// `send`. A client that does not read is cut off once its queue is full.
class ClientSession : public std::enable_shared_from_this<ClientSession>
{
public:
    using Frame = std::function<void(const ClientFrame&)>;
    /// `fault` is empty when the client hung up, else it says why it was cut off. Called at most once.
    using End = std::function<void(const std::string& fault)>;

    /// Bytes that may wait for a client: minutes of play.
    static constexpr std::size_t defaultQueueLimit = std::size_t(256) * 1024;

    explicit ClientSession(boost::asio::ip::tcp::socket socket, std::size_t queueLimit = defaultQueueLimit);

    void start(Frame onFrame, End onEnd);
    void send(const std::string& frame);
    /// Ends the session and forgets the callbacks, so not to be called from within one; queued bytes are
    /// dropped.
    void close();

    boost::asio::ip::tcp::endpoint peer() const { return remote; }

private:
    boost::asio::ip::tcp::socket socket;
    boost::asio::ip::tcp::endpoint remote;
    std::size_t queueLimit;
    Frame onFrame;
    End onEnd;
    std::array<char, 2048> received{};
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
