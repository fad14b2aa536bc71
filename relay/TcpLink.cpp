#include "relay/TcpLink.h"

#include <boost/asio/post.hpp>

#include <utility>

namespace relay {

using boost::asio::ip::tcp;
using boost::system::error_code;

TcpLink::TcpLink(tcp::socket client_, std::uint32_t number_, const RelayConfig& config_)
    : client(std::make_shared<tcp::socket>(std::move(client_))),
      server(std::make_shared<tcp::socket>(client->get_executor())),
      number(number_),
      config(config_),
      cutTimer(client->get_executor()),
      up(std::make_shared<StreamPipe>(client, server, Flow{Transport::stream, number_, Direction::toServer},
                                      config_)),
      down(std::make_shared<StreamPipe>(server, client, Flow{Transport::stream, number_, Direction::toClient},
                                        config_))
{
}

void TcpLink::start(const tcp::endpoint& serverEndpoint, End onEnd_)
{
    onEnd = std::move(onEnd_);
    config.record({Transport::stream, number, Direction::toServer}, Chunk::Kind::opened);
    scheduleCut();
    server->async_connect(serverEndpoint, [self = shared_from_this()](const error_code& error) {
        if (!self->ended) {
            self->handleConnect(error);
        }
    });
}

void TcpLink::close()
{
    end({});
    onEnd = nullptr;
}

void TcpLink::handleConnect(const error_code& error)
{
    if (error) {
        end("cannot reach the server: " + error.message());
        return;
    }
    error_code ignored;  // without it the bytes come a little later
    client->set_option(tcp::no_delay(true), ignored);
    server->set_option(tcp::no_delay(true), ignored);
    startPipe(up);
    startPipe(down);
}

void TcpLink::startPipe(const std::shared_ptr<StreamPipe>& pipe)
{
    pipe->start([weak = weak_from_this()](StreamPipe::Cause cause) {
        if (const auto self = weak.lock(); self != nullptr && !self->ended) {
            self->directionEnded(cause);
        }
    });
}

/// A broken target ends nothing yet: the other pipe reads from it, delivers what it still said, and ends
/// soon.
void TcpLink::directionEnded(StreamPipe::Cause cause)
{
    --openDirections;
    isBroken = isBroken || cause != StreamPipe::Cause::endOfFile;
    if (openDirections == 0 || cause == StreamPipe::Cause::brokenSource) {
        end(isBroken ? "broken" : "closed", isBroken);
    }
}

void TcpLink::scheduleCut()
{
    if (!config.cutAfter) {
        return;
    }
    cutTimer.expires_after(*config.cutAfter);
    cutTimer.async_wait([self = shared_from_this()](const error_code& cancelled) {
        if (!self->ended && !cancelled) {
            self->end("cut");
        }
    });
}

/// The owner hears of it later, from the executor, and not from within an operation of its own.
void TcpLink::end(const std::string& reason, bool reset)
{
    ended = true;
    error_code ignored;  // closing is all we can do
    cutTimer.cancel(ignored);
    up->close();
    down->close();
    for (const auto& socket : {client, server}) {
        if (reset) {
            socket->set_option(tcp::socket::linger(true, 0), ignored);
        }
        socket->close(ignored);
    }
    boost::asio::post(client->get_executor(), [self = shared_from_this(), reason] {
        if (self->onEnd) {
            self->onEnd(reason);
        }
    });
}

}  // namespace relay
