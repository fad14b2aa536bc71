#pragma once

#include "relay/Connection.h"
#include "relay/RelayConfig.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/write.hpp>

#include <array>
#include <string>
#include <utility>

namespace relay {

/// One client's TCP connection, and ours to the server on its behalf.
///
/// All bytes arrive, in order: late, and some of them wrong. An end of file is passed on after the
/// bytes before it. When one side breaks, the link hands that side's last bytes to the system and then resets
/// the other side. A slow reader loses the bytes that the system still holds. Lives on the single-threaded
/// executor of the client's socket.
class TcpLink final : public Connection
{
public:
    using Socket = boost::asio::ip::tcp::socket;
    using Error = boost::system::error_code;

    /// The config outlives the link. `number`: from 1.
    TcpLink(Socket client_, std::uint32_t number, const RelayConfig& config_)
        : Connection("connection " + std::to_string(number), config_.log),
          client(std::move(client_)),
          server(client.get_executor()),
          config(config_),
          cutTimer(client.get_executor(), config_.cutTime()),
          up(client, server, {Transport::stream, number, Direction::toServer}, config_),
          down(server, client, {Transport::stream, number, Direction::toClient}, config_)
    {
    }

    /// Connects to the server.
    void start(const boost::asio::ip::tcp::endpoint& endpoint)
    {
        log("opened");
        config.record(up.flow, Chunk::OPENED);
        cutTimer.async_wait(whileOpen([this](const Error&) { cut(); }));
        server.async_connect(endpoint, whileOpen([this](const Error& error) { handleConnect(error); }));
    }

private:
    enum class State : std::uint8_t
    {
        whole,
        halfClosed,  ///< one direction has delivered its end of file
        halfBroken   ///< one direction cannot deliver; the other delivers its last bytes
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
              queue(Impairment(config.conditions, config.seed, flow_)),
              timer(from_.get_executor())
        {
        }

        Socket &from, &to;
        Flow flow;
        DelayQueue queue;  ///< an empty piece: the source sends no more
        boost::asio::steady_timer timer;
        std::array<char, 16384> received{};
        std::string delivered;  ///< what is being written
        Error sourceError;
        bool isReading = false;
        bool isDelivering = false;  ///< waits until a piece is due, or writes it
    };

    Socket client, server;
    const RelayConfig& config;
    boost::asio::steady_timer cutTimer;
    Pipe up, down;
    State state = State::whole;
    bool halvesNextPiece = false;
    bool hasHalved = false;

    void cut()
    {
        if (config.cut == Cut::half) {
            halvesNextPiece = true;
            return;
        }
        if (config.cut == Cut::reset) {
            closeWithReset();
        }
        end("cut");
    }

    void handleConnect(const Error& error)
    {
        if (error) {
            end("cannot reach the server: " + error.message());
            return;
        }
        Error ignored;  // without it the bytes come a little later
        for (Pipe* const pipe : {&up, &down}) {
            pipe->to.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
            read(*pipe);
        }
    }

    void read(Pipe& pipe)
    {
        if (pipe.isReading || pipe.sourceError || pipe.queue.size() >= Pipe::byteLimit) {
            return;
        }
        pipe.isReading = true;
        const auto handle = [this, &pipe](const Error& error, std::size_t bytes) {
            handleRead(pipe, error, bytes);
        };
        pipe.from.async_receive(boost::asio::buffer(pipe.received), whileOpen(handle));
    }

    void handleRead(Pipe& pipe, const Error& error, std::size_t bytes)
    {
        pipe.isReading = false;
        pipe.sourceError = error;
        config.record(pipe.flow, error ? Chunk::CLOSED : Chunk::BYTES, pipe.received.data(), bytes);
        pipe.queue.push(Clock::now(), std::string(pipe.received.data(), bytes));
        read(pipe);
        deliver(pipe);
    }

    void deliver(Pipe& pipe)
    {
        if (pipe.isDelivering || pipe.queue.size() == 0) {
            return;
        }
        pipe.isDelivering = true;
        pipe.timer.expires_at(pipe.queue.nextDue());
        pipe.timer.async_wait(whileOpen([this, &pipe](const Error&) { write(pipe); }));
    }

    void write(Pipe& pipe)
    {
        pipe.delivered = pipe.queue.pop(Clock::now()).value();
        read(pipe);
        const bool isEnd = pipe.delivered.empty();
        if (halvesNextPiece) {
            hasHalved = true;
            pipe.delivered.resize(pipe.delivered.size() / 2);
        }
        if (!isEnd) {
            const auto handle = [this, &pipe](const Error& error, std::size_t) {
                handleWritten(pipe, error);
            };
            boost::asio::async_write(pipe.to, boost::asio::buffer(pipe.delivered), whileOpen(handle));
        } else if (pipe.sourceError == boost::asio::error::eof) {
            Error ignored;  // a closed socket needs no end of file
            pipe.to.shutdown(Socket::shutdown_send, ignored);
            endDirection(State::halfClosed);
        } else {
            breakOff();
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
        if (hasHalved) {
            end("cut");
            return;
        }
        pipe.isDelivering = false;
        deliver(pipe);
    }

    void endDirection(State half)
    {
        if (state == State::whole) {
            state = half;
        } else if (state == State::halfClosed && half == State::halfClosed) {
            end("closed");
        } else {
            breakOff();
        }
    }

    void breakOff()
    {
        closeWithReset();
        end("broken");
    }

    /// From now on closing resets both sides.
    void closeWithReset()
    {
        Error ignored;  // a closed socket needs no reset
        for (Socket* const socket : {&client, &server}) {
            socket->set_option(Socket::linger(true, 0), ignored);
        }
    }

    void hangUp() override
    {
        Error ignored;  // closing is all we can do
        cutTimer.cancel(ignored);
        for (Pipe* const pipe : {&up, &down}) {
            pipe->timer.cancel(ignored);
            pipe->to.close(ignored);
        }
    }
};

}  // namespace relay
