#pragma once

#include "peer/Waiting.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/udp.hpp>

#include <list>
#include <string>
#include <vector>

namespace peer {

/// One end of a TCP connection. Nothing here blocks or throws: `poll` does what is possible now.
///
/// Not thread-safe. No handler runs on the io_context, so nobody needs to run it.
class StreamEnd
{
public:
    explicit StreamEnd(boost::asio::ip::tcp::socket connected);

    boost::asio::ip::tcp::socket socket;
    std::string received;
    boost::system::error_code
        end;              ///< why nothing more comes: eof, a reset, or operation_aborted after close
    bool paused = false;  ///< a paused end reads nothing, so that the other side must wait

    /// Receives what has arrived and sends what was left to send.
    void poll();
    /// Sends as much as the system takes now, and the rest while polling.
    void send(const std::string& bytes);
    /// Whether the system has taken all, or the other side takes no more.
    bool isSent() const { return unsent.empty(); }
    /// Half close: the other side reads the end of the stream behind the last byte sent.
    void finishSending();
    /// Full close. Bytes not sent yet are lost.
    void close();
    /// Closes such that the other side sees a reset.
    void reset();

private:
    std::string unsent;
    bool finishing = false;  ///< the half close waits for the unsent bytes
};

struct Datagram
{
    Clock::time_point arrival;
    boost::asio::ip::udp::endpoint sender;
    std::string bytes;
};

/// A bound UDP socket. Nothing blocks; a datagram that cannot be sent is lost.
class DatagramEnd
{
public:
    using Address = boost::asio::ip::udp::endpoint;

    explicit DatagramEnd(boost::asio::ip::udp::socket bound);

    boost::asio::ip::udp::socket socket;
    std::vector<Datagram> received;

    void poll();
    void send(const std::string& bytes, const Address& to);
};

/// A port of 127.0.0.1.
DatagramEnd::Address loopback(std::uint16_t port);
/// Throws boost::system::system_error where it cannot connect to that port of 127.0.0.1.
boost::asio::ip::tcp::socket connectTo(boost::asio::io_context& io, std::uint16_t port);

/// The ends that a test uses, and the io_context of all that runs on the test's thread. Both make progress
/// while the test waits.
class Endpoints
{
public:
    boost::asio::io_context io;

    StreamEnd& connect(std::uint16_t port) { return add(connectTo(io, port)); }
    StreamEnd& add(boost::asio::ip::tcp::socket connected)
    {
        return streams.emplace_back(std::move(connected));
    }
    /// On a free port of 127.0.0.1.
    DatagramEnd& addDatagrams() { return add(boost::asio::ip::udp::socket(io, loopback(0))); }
    DatagramEnd& add(boost::asio::ip::udp::socket bound) { return datagrams.emplace_back(std::move(bound)); }

    void poll();
    /// Polls until the condition holds. False if it does not hold when the time is over.
    template <class Condition>
    bool await(Condition condition, Clock::duration timeout = 20s)
    {
        const auto pollAndAsk = [&] {
            poll();
            return condition();
        };
        return eventually(pollAndAsk, timeout);
    }
    void pass(Clock::duration time)
    {
        await([] { return false; }, time);
    }

private:
    std::list<StreamEnd> streams;
    std::list<DatagramEnd> datagrams;
};

}  // namespace peer
