#include "peer/HeadlessClient.h"

#include <algorithm>

namespace peer {

namespace {

constexpr int receiveBuffer = 1024 * 1024;  ///< bytes, as far as the system grants them

boost::asio::ip::tcp::socket connected(boost::asio::io_context& io, std::uint16_t port)
{
    boost::asio::ip::tcp::socket socket(io);
    socket.connect({loopback(port).address(), port});
    return socket;
}

}  // namespace

HeadlessClient::HeadlessClient(boost::asio::io_context& io, std::uint16_t serverPort, History history_)
    : stream(connected(io, serverPort)),
      datagrams(boost::asio::ip::udp::socket(io, loopback(0))),
      checker(history_),
      address("127.0.0.1:" + std::to_string(stream.socket.local_endpoint().port())),
      server(loopback(serverPort)),
      history(history_)
{
    boost::system::error_code ignored;  // a smaller buffer only loses more
    datagrams.socket.set_option(boost::asio::socket_base::receive_buffer_size(receiveBuffer), ignored);
}

void HeadlessClient::poll()
{
    const bool wasOpen = !stream.end;
    datagrams.poll();
    stream.poll();
    for (; checked < datagrams.received.size(); ++checked) {
        if (wasOpen) {  // a server may not know yet that its client has gone
            checker.receiveDatagram(datagrams.received[checked]);
        }
    }
    checker.receiveStream(stream.received);
    if (history == History::newest) {
        datagrams.received.clear();
        checked = 0;
    }
}

void HeadlessClient::steer(const messages::Steering& steering)
{
    sendDatagram(messages::steeringFrame(qport(), steering));
}

bool HeadlessClient::hasLost(std::uint64_t ship) const
{
    return std::count(checker.destroyed.begin(), checker.destroyed.end(), ship) != 0;
}

}  // namespace peer
