#include "peer/SwarmClient.h"

#include "network/Messages.h"

#include <chrono>

namespace peer {

namespace {

using boost::asio::ip::udp;
using boost::system::error_code;

constexpr std::chrono::milliseconds steeringPeriod{50};
constexpr float courseChanges = 0.05F;      ///< share of the steering; about once a second
constexpr int receiveBuffer = 1024 * 1024;  ///< bytes, as far as the system grants them

}  // namespace

SwarmClient::SwarmClient(boost::asio::io_context& io, const boost::asio::ip::tcp::endpoint& endpoint,
                         unsigned number)
    : tcp(io), udp(io, udp::v4()), server(endpoint.address(), endpoint.port()), timer(io), random(number)
{
    error_code ignored;  // a smaller buffer only loses more
    udp.set_option(boost::asio::socket_base::receive_buffer_size(receiveBuffer), ignored);
    udp.non_blocking(true);
    tcp.connect(endpoint);
    changeCourse();
    receiveStream();
    receiveDatagrams();
    timer.expires_after(steeringPeriod * (number % 16) / 16);  // so that not all steer at the same moment
    steerSoon();
}

void SwarmClient::receiveStream()
{
    tcp.async_receive(boost::asio::buffer(stream), [this](const error_code& error, std::size_t bytes) {
        if (error) {
            brokenOff = error.message();
            return;
        }
        witness.hearStream(stream.data(), bytes);
        receiveStream();
    });
}

/// Takes all that wait: one wake-up for many datagrams.
void SwarmClient::receiveDatagrams()
{
    udp.async_wait(udp::socket::wait_read, [this](const error_code& cancelled) {
        error_code error;
        while (!cancelled && !error) {
            const std::size_t bytes = udp.receive(boost::asio::buffer(datagram), 0, error);
            if (!error) {
                witness.hearDatagram(datagram.data(), bytes);
            }
        }
        if (!cancelled) {
            receiveDatagrams();
        }
    });
}

void SwarmClient::steerSoon()
{
    timer.async_wait([this](const error_code& cancelled) {
        if (cancelled || !brokenOff.empty()) {
            return;
        }
        steer();
        timer.expires_at(timer.expiry() + steeringPeriod);
        steerSoon();
    });
}

void SwarmClient::steer()
{
    if (witness.welcome().id() == 0) {
        return;
    }
    if (random.unit() < courseChanges) {
        changeCourse();
    }
    error_code ignored;  // a datagram that is not taken is lost like any other
    udp.send_to(
        boost::asio::buffer(messages::steeringFrame(static_cast<std::uint16_t>(witness.welcome().qport()),
                                                    {input.orientation, input.controls})),
        server, 0, ignored);
}

void SwarmClient::changeCourse()
{
    input.orientation = Quaternion(random.between(-1, 1), random.between(-1, 1), random.between(-1, 1),
                                   random.between(-1, 1));
    input.orientation.normalise();
    input.controls = random.unit() < 0.8F ? practice::control::forward : 0;
    input.controls |= random.unit() < 0.5F ? practice::control::fire : 0;
}

}  // namespace peer
