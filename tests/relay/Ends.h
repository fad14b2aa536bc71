#pragma once

#include "peer/Waiting.h"
#include "service/PortPair.h"

#include <boost/asio/write.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <list>
#include <string>
#include <utility>
#include <vector>

/// One end of a TCP connection, and what it has heard so far.
struct StreamEnd
{
    boost::asio::ip::tcp::socket socket;
    std::string heard = {};
    boost::system::error_code end = {};  ///< why it hears no more
    bool isDeaf = false;

    void send(const std::string& bytes) { boost::asio::write(socket, boost::asio::buffer(bytes)); }
    void endSpeech() { socket.shutdown(boost::asio::ip::tcp::socket::shutdown_send); }
    /// Takes what has arrived.
    void poll()
    {
        std::array<char, 65536> buffer;
        boost::system::error_code error = end;
        while (!error && !isDeaf && socket.is_open()) {
            socket.non_blocking(true);
            heard.append(buffer.data(), socket.read_some(boost::asio::buffer(buffer), error));
        }
        end = error == boost::asio::error::would_block ? end : error;
    }
};

/// A UDP socket, and the datagrams it has heard so far.
struct DatagramEnd
{
    using Address = boost::asio::ip::udp::endpoint;

    boost::asio::ip::udp::socket socket;
    std::vector<std::string> heard = {};
    std::vector<Address> senders = {};

    void send(const std::string& bytes, const Address& to) { socket.send_to(boost::asio::buffer(bytes), to); }
    void poll()
    {
        std::array<char, 65536> buffer;
        Address sender;
        boost::system::error_code error;
        const auto receive = [&] {
            return socket.receive_from(boost::asio::buffer(buffer), sender, 0, error);
        };
        for (std::size_t size = receive(); !error; size = receive()) {
            heard.emplace_back(buffer.data(), size);
            senders.push_back(sender);
        }
    }
};

/// The ends that a test makes, which stay as long as this. All is on the test's thread: the ends, and what is
/// tested, get on while it waits.
class Ends
{
public:
    boost::asio::io_context io;

    static DatagramEnd::Address at(std::uint16_t port)
    {
        return {boost::asio::ip::address_v4::loopback(), port};
    }
    StreamEnd& connect(std::uint16_t port)
    {
        boost::asio::ip::tcp::socket socket(io);
        socket.connect({boost::asio::ip::address_v4::loopback(), port});
        return add(std::move(socket));
    }
    StreamEnd& add(boost::asio::ip::tcp::socket socket)
    {
        return streams.emplace_back(StreamEnd{std::move(socket)});
    }
    DatagramEnd& addDatagrams() { return add(boost::asio::ip::udp::socket(io, at(0))); }
    DatagramEnd& add(boost::asio::ip::udp::socket socket)
    {
        socket.non_blocking(true);
        return datagrams.emplace_back(DatagramEnd{std::move(socket)});
    }
    void poll()
    {
        io.poll();
        std::for_each(streams.begin(), streams.end(), [](StreamEnd& end) { end.poll(); });
        std::for_each(datagrams.begin(), datagrams.end(), [](DatagramEnd& end) { end.poll(); });
    }
    /// Whether the condition comes to hold within the time.
    template <class Condition>
    bool await(Condition condition, peer::Clock::duration timeout = std::chrono::seconds(20))
    {
        const auto both = [&] {
            poll();
            return condition();
        };
        return peer::eventually(both, timeout);
    }
    void pass(peer::Clock::duration time)
    {
        await([] { return false; }, time);
    }

private:
    std::list<StreamEnd> streams;
    std::list<DatagramEnd> datagrams;
};
