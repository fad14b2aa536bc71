#pragma once

#include "network/Messages.h"
#include "server/net/PracticeServer.h"
#include "tests/server/Heard.h"

#include <boost/asio/write.hpp>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace std::chrono_literals;

/// A player's end of the protocol over real sockets on 127.0.0.1; never waits, so that one test thread can
/// run it together with a server.
class TestClient
{
public:
    Heard heard;
    std::vector<std::string> datagrams;
    std::string address;  ///< its end of the connection, as "127.0.0.1:40000"
    bool serverHungUp = false;

    explicit TestClient(std::uint16_t serverPort) : server(loopback, serverPort)
    {
        tcp.connect({loopback, serverPort});
        tcp.non_blocking(true);
        address = "127.0.0.1:" + std::to_string(tcp.local_endpoint().port());
    }

    /// Takes what has arrived.
    void poll()
    {
        std::array<char, 65536> buffer;
        while (udp.available() > 0) {
            datagrams.emplace_back(buffer.data(), udp.receive(boost::asio::buffer(buffer)));
            std::string frames = datagrams.back();
            heard.take(frames);
            EXPECT_EQ(frames, "") << "half a frame at a datagram's end";
        }
        boost::system::error_code error;
        while (!error) {
            stream.append(buffer.data(), tcp.read_some(boost::asio::buffer(buffer), error));
        }
        serverHungUp = serverHungUp || (error && error != boost::asio::error::would_block);
        heard.take(stream);
    }
    void sendDatagram(const std::string& bytes) { udp.send_to(boost::asio::buffer(bytes), server); }
    void steer(const practice::ShipInput& input)
    {
        sendDatagram(messages::steeringFrame(qport(), {input.orientation, input.controls}));
    }
    void sendStream(const std::string& bytes)
    {
        boost::system::error_code hungUp;
        boost::asio::write(tcp, boost::asio::buffer(bytes), hungUp);
    }
    void hangUp() { tcp.close(); }
    void reset()
    {
        tcp.set_option(boost::asio::socket_base::linger(true, 0));
        tcp.close();
    }

    std::uint64_t id() const { return heard.welcome.id(); }
    std::uint16_t qport() const { return static_cast<std::uint16_t>(heard.welcome.qport()); }
    Vector3 position() const { return heard.positions.at(id()); }
    bool hasLost(std::uint64_t ship) const
    {
        return std::count(heard.destroyed.begin(), heard.destroyed.end(), ship) != 0;
    }

private:
    const boost::asio::ip::address_v4 loopback = boost::asio::ip::address_v4::loopback();
    boost::asio::io_context io;
    boost::asio::ip::tcp::socket tcp{io};
    boost::asio::ip::udp::socket udp{io, {loopback, 0}};
    boost::asio::ip::udp::endpoint server;
    std::string stream;
};

/// A server and its clients in one thread.
class Server : public testing::Test
{
protected:
    boost::asio::io_context io;
    practice::ServerConfig config;  ///< to be changed before `open`
    std::vector<std::string> log;
    std::unique_ptr<practice::PracticeServer> server;
    std::vector<std::unique_ptr<TestClient>> clients;

    void open(unsigned bots)
    {
        config.port = 0;
        config.log = [this](const std::string& line) { log.push_back(line); };
        config.bots = bots;
        server = std::make_unique<practice::PracticeServer>(io, config);
        server->start();
    }
    /// False if the time ran out first.
    bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds time = 5s)
    {
        const auto end = std::chrono::steady_clock::now() + time;
        while (!condition() && std::chrono::steady_clock::now() < end) {
            io.run_for(5ms);
            for (const auto& client : clients) {
                client->poll();
            }
        }
        return condition();
    }
    void run(std::chrono::milliseconds time)
    {
        runUntil([] { return false; }, time);
    }
    TestClient& connect() { return *clients.emplace_back(std::make_unique<TestClient>(server->port())); }
    TestClient& join()
    {
        TestClient& client = connect();
        EXPECT_TRUE(runUntil([&client] { return client.id() != 0; }));
        run(30ms);  // for the rest of the introduction
        return client;
    }
};
