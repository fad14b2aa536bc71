#pragma once

#include "peer/HeadlessClient.h"
#include "server/net/PracticeServer.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using practice::ShipInput;

/// A server and its clients in one thread. Each test also fails if the server breaks the protocol.
class Server : public testing::Test
{
protected:
    using Client = peer::HeadlessClient;

    boost::asio::io_context io;
    practice::ServerConfig config;  ///< to be changed before `open`
    std::vector<std::string> log;
    std::unique_ptr<practice::PracticeServer> server;
    std::vector<std::unique_ptr<Client>> clients;

    void TearDown() override
    {
        for (const auto& client : clients) {
            EXPECT_TRUE(client->checker.faults().empty()) << client->checker.faults().begin()->first;
        }
    }
    void open(unsigned bots)
    {
        config.port = 0;
        config.log = [this](const std::string& line) { log.push_back(line); };
        config.bots = bots;
        server = std::make_unique<practice::PracticeServer>(io, config);
        server->start();
    }
    /// Returns false if the time ran out first.
    bool runUntil(const std::function<bool()>& condition, peer::Clock::duration time = 10s)
    {
        const auto end = peer::Clock::now() + time;
        while (!condition() && peer::Clock::now() < end) {
            io.run_for(5ms);
            for (const auto& client : clients) {
                client->poll();
            }
        }
        return condition();
    }
    void run(peer::Clock::duration time)
    {
        runUntil([] { return false; }, time);
    }
    Client& connect() { return *clients.emplace_back(std::make_unique<Client>(io, server->port())); }
    Client& join()
    {
        Client& client = connect();
        EXPECT_TRUE(runUntil([&client] { return client.id() != 0; }));
        run(30ms);  // for the rest of the introduction
        return client;
    }
    /// Joins, and steers until snapshots arrive.
    Client& play()
    {
        Client& client = join();
        client.steer({});
        EXPECT_TRUE(runUntil([&client] { return !client.datagrams.received.empty(); }));
        return client;
    }
};
