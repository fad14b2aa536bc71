#include "relay/ReplaySession.h"

#include <boost/asio/post.hpp>
#include <boost/asio/write.hpp>

#include <utility>

namespace relay {

using boost::system::error_code;

ReplaySession::ReplaySession(boost::asio::ip::tcp::socket client_, boost::asio::ip::udp::socket& udp_,
                             const ServerTrack& script_, double speed_)
    : client(std::move(client_)), udp(udp_), script(script_), speed(speed_), timer(client.get_executor())
{
    error_code ignored;  // a peer that is gone already shows at the first receive
    peer = client.remote_endpoint(ignored);
    client.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
}

void ReplaySession::start(End onEnd_)
{
    onEnd = std::move(onEnd_);
    receive();
    awaitLine();
}

void ReplaySession::close()
{
    end({});
    onEnd = nullptr;
}

void ReplaySession::takeAddress(const Endpoint& sender, const std::string& datagram)
{
    if (ended || address || sender.address() != peer.address() || qportOf(datagram) != script.qport) {
        return;
    }
    address = sender;
    if (waitingSince) {
        began += Clock::now() - *waitingSince;
        say();
    }
}

/// What the client says over TCP goes nowhere; that it hangs up counts.
void ReplaySession::receive()
{
    client.async_receive(boost::asio::buffer(received),
                         [self = shared_from_this()](const error_code& error, std::size_t) {
                             if (self->ended) {
                                 return;
                             }
                             if (error) {
                                 self->end("left");
                             } else {
                                 self->receive();
                             }
                         });
}

void ReplaySession::awaitLine()
{
    if (next == script.lines.size()) {
        end("played to the end");
        return;
    }
    const std::chrono::duration<double> at = script.lines[next].at / speed;
    timer.expires_at(began + std::chrono::duration_cast<Clock::duration>(at));
    timer.async_wait([self = shared_from_this()](const error_code& cancelled) {
        if (!self->ended && !cancelled) {
            self->say();
        }
    });
}

void ReplaySession::say()
{
    const ServerTrack::Line& line = script.lines[next];
    if (line.transport == Transport::stream) {
        boost::asio::async_write(
            client, boost::asio::buffer(line.bytes),
            [self = shared_from_this()](const error_code& error, std::size_t) { self->lineSaid(error); });
    } else if (address) {
        error_code ignored;  // lost, like any datagram
        udp.send_to(boost::asio::buffer(line.bytes), *address, 0, ignored);
        lineSaid({});
    } else {
        waitingSince = Clock::now();
    }
}

void ReplaySession::lineSaid(const error_code& error)
{
    if (ended) {
        return;
    }
    if (error) {
        end("left");
        return;
    }
    ++next;
    awaitLine();
}

/// The owner hears of it later, from the executor, and not from within an operation of its own.
void ReplaySession::end(const std::string& reason)
{
    ended = true;
    error_code ignored;  // closing is all we can do
    timer.cancel(ignored);
    client.close(ignored);
    boost::asio::post(client.get_executor(), [self = shared_from_this(), reason] {
        if (self->onEnd) {
            self->onEnd(reason);
        }
    });
}

}  // namespace relay
