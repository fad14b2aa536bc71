#pragma once

#include "PracticeServer/PracticeServer.h"
#include "tests/PracticeServer/TestClient.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using namespace std::chrono_literals;

/// A server and its clients in one thread, over real sockets.
class Server : public testing::Test
{
protected:
    boost::asio::io_context io;
    practice::ServerConfig config;  ///< to be changed before `open`
    std::vector<std::string> log;
    std::unique_ptr<practice::PracticeServer> server;
    std::vector<std::unique_ptr<TestClient>> clients;

    Server()
    {
        config.port = 0;
        config.log = [this](const std::string& line) { log.push_back(line); };
    }
    void open(unsigned bots)
    {
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
    TestClient& join()
    {
        TestClient& client = *clients.emplace_back(std::make_unique<TestClient>(server->port()));
        EXPECT_TRUE(runUntil([&client] { return client.id() != 0; }));
        run(30ms);  // for the rest of the introduction
        return client;
    }
    bool logHas(const std::string& line) const
    {
        return std::find(log.begin(), log.end(), line) != log.end();
    }
};
