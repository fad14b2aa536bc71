#pragma once

#include "relay/RelayConfig.h"
#include "relay/WhileOpen.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>

#include <array>
#include <deque>
#include <functional>
#include <string>
#include <utility>

namespace relay {

/// One client's TCP connection, and ours to the server on its behalf.
///
/// Bytes arrive later, but all of them and in order. An end of file is passed on after the bytes before it. A
/// connection that breaks on one side is reset on the other once the system has taken the last bytes of the
/// broken side; a slow reader loses those that the system still holds. Lives on the single-threaded executor
/// of the client's socket.
class TcpLink : public WhileOpen<TcpLink>
{
public:
    using Socket = boost::asio::ip::tcp::socket;
    using Error = boost::system::error_code;
    /// `reason`: why the connection is over, for the log.
    using OnEnd = std::function<void(const std::string& reason)>;

    /// The config outlives the link. `number`: from 1.
    TcpLink(Socket client_, std::uint32_t number, const RelayConfig& config_)
        : client(std::move(client_)),
          server(client.get_executor()),
          config(config_),
          cutTimer(client.get_executor(), config_.cutTime()),
          up(client, server, {Transport::stream, number, Direction::toServer}, config_),
          down(server, client, {Transport::stream, number, Direction::toClient}, config_)
    {
    }

    /// Connects to the server. Announces the end once.
    void start(const boost::asio::ip::tcp::endpoint& endpoint, OnEnd onEnd_)
    {
        onEnd = std::move(onEnd_);
        config.record(up.flow, Chunk::Kind::opened);
        cutTimer.async_wait(whileOpen([this](const Error&) { end("cut"); }));
        server.async_connect(endpoint, whileOpen([this](const Error& error) { handleConnect(error); }));
    }

    /// Hangs up on both sides and calls nobody any more.
    void close()
    {
        onEnd = nullptr;
        end({});
    }

    bool isOpen() const { return state != State::ended; }

private:
    enum class State : std::uint8_t
    {
        connecting,
        open,
        halfClosed,  ///< one direction has delivered its end of file
        halfBroken,  ///< one direction cannot deliver; the other delivers its last bytes
        ended
    };

    struct Piece
    {
        Time due;           ///< at the earliest: pieces keep their order
        std::string bytes;  ///< empty: the source sends no more
    };

    /// One direction of the connection.
    struct Pipe
    {
        static constexpr std::size_t byteLimit =
            std::size_t(256) * 1024;  ///< reads nothing while so many wait

        Pipe(Socket& from_, Socket& to_, const Flow& flow_, const RelayConfig& config)
            : from(from_),
              to(to_),
              flow(flow_),
              impairment(config.conditions, config.seed, flow_),
              timer(from_.get_executor())
        {
        }

        Socket &from, &to;
        Flow flow;
        Impairment impairment;
        boost::asio::steady_timer timer;
        std::array<char, 16384> received{};
        std::deque<Piece> waiting;  ///< the first one is being awaited or written
        std::size_t waitingBytes = 0;
        Error sourceError;
    };

    Socket client, server;
    const RelayConfig& config;
    boost::asio::steady_timer cutTimer;
    Pipe up, down;
    OnEnd onEnd;
    State state = State::connecting;

    void handleConnect(const Error& error)
    {
        if (error) {
            end("cannot reach the server: " + error.message());
            return;
        }
        state = State::open;
        Error ignored;  // without it the bytes come a little later
        for (Pipe* const pipe : {&up, &down}) {
            pipe->to.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
            read(*pipe);
        }
    }

    void read(Pipe& pipe)
    {
        const auto handle = [this, &pipe](const Error& error, std::size_t bytes) {
            handleRead(pipe, error, bytes);
        };
        pipe.from.async_receive(boost::asio::buffer(pipe.received), whileOpen(handle));
    }

    void handleRead(Pipe& pipe, const Error& error, std::size_t bytes)
    {
        pipe.sourceError = error;
        config.record(pipe.flow, error ? Chunk::Kind::closed : Chunk::Kind::bytes, pipe.received.data(),
                      bytes);
        const Time due = Clock::now() + pipe.impairment.next().delay;
        pipe.waiting.push_back({due, std::string(pipe.received.data(), bytes)});
        pipe.waitingBytes += bytes;
        if (pipe.waiting.size() == 1) {
            awaitFirst(pipe);
        }
        if (!error && pipe.waitingBytes < Pipe::byteLimit) {
            read(pipe);
        }
    }

    void awaitFirst(Pipe& pipe)
    {
        pipe.timer.expires_at(pipe.waiting.front().due);
        pipe.timer.async_wait(whileOpen([this, &pipe](const Error&) { deliverFirst(pipe); }));
    }

    void deliverFirst(Pipe& pipe)
    {
        const std::string& bytes = pipe.waiting.front().bytes;
        if (!bytes.empty()) {
            const auto handle = [this, &pipe](const Error& error, std::size_t) {
                handleWritten(pipe, error);
            };
            boost::asio::async_write(pipe.to, boost::asio::buffer(bytes), whileOpen(handle));
        } else if (pipe.sourceError == boost::asio::error::eof) {
            Error ignored;  // a closed socket needs no end of file
            pipe.to.shutdown(Socket::shutdown_send, ignored);
            endDirection(State::halfClosed);
        } else {
            end("broken");
        }
    }

    /// A broken target ends nothing yet: the other direction reads from it, delivers its last bytes, and ends
    /// soon.
    void handleWritten(Pipe& pipe, const Error& error)
    {
        if (error) {
            endDirection(State::halfBroken);
            return;
        }
        const bool wasFull = pipe.waitingBytes >= Pipe::byteLimit;
        pipe.waitingBytes -= pipe.waiting.front().bytes.size();
        pipe.waiting.pop_front();
        if (!pipe.waiting.empty()) {
            awaitFirst(pipe);
        }
        if (wasFull && pipe.waitingBytes < Pipe::byteLimit) {
            read(pipe);
        }
    }

    void endDirection(State half)
    {
        if (state == State::open) {
            state = half;
        } else {
            end(state == State::halfClosed && half == State::halfClosed ? "closed" : "broken");
        }
    }

    void end(const std::string& reason)
    {
        state = State::ended;
        Error ignored;  // closing is all we can do
        cutTimer.cancel(ignored);
        for (Pipe* const pipe : {&up, &down}) {
            pipe->timer.cancel(ignored);
            if (reason == "broken") {
                pipe->to.set_option(Socket::linger(true, 0), ignored);  // a reset
            }
            pipe->to.close(ignored);
        }
        if (const OnEnd announce = std::exchange(onEnd, nullptr)) {
            announce(reason);
        }
    }
};

}  // namespace relay
