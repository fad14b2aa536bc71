#pragma once

#include "Common/PortPair.h"
#include "tests/relay/Milliseconds.h"
#include "tests/support/Waiting.h"
#include "tools/relay/Relay.h"

#include <boost/asio/write.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

/// One end of a TCP connection, and what it has heard so far.
struct StreamEnd
{
    boost::asio::ip::tcp::socket socket;
    std::string heard = {};
    bool hasEnded = false;  ///< the other end says no more
    boost::system::error_code end = {};

    void send(const std::string& bytes) { boost::asio::write(socket, boost::asio::buffer(bytes)); }
    /// Takes what has arrived.
    void poll()
    {
        std::array<char, 65536> buffer;
        boost::system::error_code error;
        socket.non_blocking(true);
        while (const std::size_t size = socket.read_some(boost::asio::buffer(buffer), error)) {
            heard.append(buffer.data(), size);
        }
        if (!hasEnded && error != boost::asio::error::would_block) {
            hasEnded = true;
            end = error;
        }
    }
};

/// A UDP socket, and the datagrams it has heard.
struct DatagramEnd
{
    boost::asio::ip::udp::socket& socket;
    std::vector<std::string> heard = {};
    std::vector<boost::asio::ip::udp::endpoint> senders = {};

    void poll()
    {
        std::array<char, 65536> buffer;
        boost::asio::ip::udp::endpoint sender;
        boost::system::error_code error;
        socket.non_blocking(true);
        for (;;) {
            const std::size_t size = socket.receive_from(boost::asio::buffer(buffer), sender, 0, error);
            if (error) {
                return;
            }
            heard.emplace_back(buffer.data(), size);
            senders.push_back(sender);
        }
    }
};

/// A server's ports, a relay before them, and whatever clients the test makes, all on the test's thread.
class LocalNetwork
{
public:
    explicit LocalNetwork(relay::RelayConfig config = {}) : relay(io, toServer(std::move(config)))
    {
        relay.start();
    }

    boost::asio::io_context io;
    PortPair server{io, 0};
    std::vector<std::string> log;
    relay::Relay relay;

    boost::asio::ip::udp::endpoint relayAddress() const
    {
        return {boost::asio::ip::address_v4::loopback(), relay.port()};
    }
    StreamEnd connect()
    {
        boost::asio::ip::tcp::socket socket(io);
        socket.connect({boost::asio::ip::address_v4::loopback(), relay.port()});
        return {std::move(socket)};
    }
    /// The server's end of the connection made last.
    StreamEnd accept()
    {
        boost::asio::ip::tcp::socket socket(io);
        server.acceptor.non_blocking(true);
        boost::system::error_code error;
        EXPECT_TRUE(await([&] {
            server.acceptor.accept(socket, error);
            return !error;
        }));
        return {std::move(socket)};
    }
    boost::asio::ip::udp::socket datagramSocket()
    {
        return {io, {boost::asio::ip::address_v4::loopback(), 0}};
    }
    /// Runs the relay until the condition holds; false where it does not within 20 s.
    template <class Condition>
    bool await(Condition condition, support::Clock::duration timeout = std::chrono::seconds(20))
    {
        const auto both = [&] {
            io.poll();
            return condition();
        };
        return support::eventually(both, timeout);
    }
    bool hasLogged(const std::string& line) const { return std::count(log.begin(), log.end(), line) > 0; }

private:
    relay::RelayConfig toServer(relay::RelayConfig config)
    {
        config.serverHost = "127.0.0.1";
        config.serverPort = std::to_string(server.number());
        config.log = [this](const std::string& line) { log.push_back(line); };
        return config;
    }
};
