#include "peer/Endpoints.h"

#include <array>
#include <utility>

namespace peer {

using boost::asio::buffer;
using boost::asio::ip::tcp;
using boost::asio::ip::udp;
using boost::system::error_code;

StreamEnd::StreamEnd(tcp::socket connected) : socket(std::move(connected))
{
    socket.non_blocking(true);
}

void StreamEnd::poll()
{
    std::array<char, 65536> bytes;
    error_code error = end;
    while (!error && !paused) {
        received.append(bytes.data(), socket.read_some(buffer(bytes), error));
    }
    end = error == boost::asio::error::would_block ? error_code() : error;

    error.clear();
    while (!unsent.empty() && !error) {
        unsent.erase(0, socket.write_some(buffer(unsent), error));
    }
    if (error && error != boost::asio::error::would_block) {
        unsent.clear();  // reading reports the reason
    }
    if (unsent.empty() && std::exchange(finishing, false)) {
        socket.shutdown(tcp::socket::shutdown_send, error);
    }
}

void StreamEnd::send(const std::string& bytes)
{
    unsent += bytes;
    poll();
}

void StreamEnd::finishSending()
{
    finishing = true;
    poll();
}

void StreamEnd::close()
{
    error_code ignored;
    socket.close(ignored);
    unsent.clear();
    end = boost::asio::error::operation_aborted;
}

void StreamEnd::reset()
{
    error_code ignored;
    socket.set_option(boost::asio::socket_base::linger(true, 0), ignored);
    close();
}

DatagramEnd::DatagramEnd(udp::socket bound) : socket(std::move(bound))
{
    socket.non_blocking(true);
}

void DatagramEnd::poll()
{
    std::array<char, 65536> bytes;
    Address sender;
    error_code error;
    const auto receive = [&] { return socket.receive_from(buffer(bytes), sender, 0, error); };
    for (std::size_t size = receive(); !error; size = receive()) {
        received.push_back({Clock::now(), sender, std::string(bytes.data(), size)});
    }
}

void DatagramEnd::send(const std::string& bytes, const Address& to)
{
    error_code ignored;
    socket.send_to(buffer(bytes), to, 0, ignored);
}

DatagramEnd::Address loopback(std::uint16_t port)
{
    return {boost::asio::ip::address_v4::loopback(), port};
}

tcp::socket connectTo(boost::asio::io_context& io, std::uint16_t port)
{
    tcp::socket socket(io);
    socket.connect({loopback(port).address(), port});
    return socket;
}

void Endpoints::poll()
{
    io.restart();  // it stops each time that it runs out of work
    io.poll();
    for (StreamEnd& stream : streams) {
        stream.poll();
    }
    for (DatagramEnd& end : datagrams) {
        end.poll();
    }
}

}  // namespace peer
