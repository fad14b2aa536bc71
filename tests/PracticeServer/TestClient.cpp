#include "tests/PracticeServer/TestClient.h"

#include "network/Framing.h"

#include <gtest/gtest.h>
#include <boost/asio/write.hpp>

#include <array>

static const boost::asio::ip::address_v4 loopback = boost::asio::ip::address_v4::loopback();

void Heard::take(std::string& stream)
{
    while (const std::size_t length = framing::wholeFrameLength(stream.data(), stream.size())) {
        const std::string body = stream.substr(3, length - 1);
        types.push_back(static_cast<MessageTypes::MessageType>(stream[2]));
        stream.erase(0, 2 + length);
        switch (types.back()) {
            case MessageTypes::WELCOME:
                welcome.ParseFromString(body);
                break;
            case MessageTypes::OBJECT_INFO:
                infos.emplace_back().ParseFromString(body);
                break;
            case MessageTypes::OBJECT_UPDATE:
                updates.emplace_back().ParseFromString(body);
                break;
            default:
                destroys.emplace_back().ParseFromString(body);
        }
    }
}

Vector3 Heard::positionOf(std::uint64_t id) const
{
    const Vantor::Position* newest = nullptr;
    for (const Vantor::ObjectInfo& info : infos) {
        newest = info.id() == id && newest == nullptr ? &info.position() : newest;
    }
    for (const Vantor::ObjectUpdate& update : updates) {
        newest = update.id() == id ? &update.position() : newest;
    }
    EXPECT_NE(newest, nullptr) << "nothing is known of that ship";
    return newest == nullptr ? Vector3() : Vector3(newest->x(), newest->y(), newest->z());
}

TestClient::TestClient(std::uint16_t serverPort)
    : tcp(io), udp(io, {loopback, 0}), server(loopback, serverPort)
{
    tcp.connect({loopback, serverPort});
    ownAddress = "127.0.0.1:" + std::to_string(tcp.local_endpoint().port());
}

void TestClient::poll()
{
    std::array<char, 65536> buffer;
    boost::system::error_code error;
    while (udp.available() > 0) {
        datagrams.emplace_back(buffer.data(), udp.receive_from(boost::asio::buffer(buffer), server));
        std::string frames = datagrams.back();
        heard.take(frames);
        EXPECT_EQ(frames, "") << "half a frame at a datagram's end";
    }
    if (!reads) {
        return;
    }
    tcp.non_blocking(true, error);
    while (!error) {
        stream.append(buffer.data(), tcp.read_some(boost::asio::buffer(buffer), error));
    }
    serverHungUp =
        serverHungUp || error == boost::asio::error::eof || error == boost::asio::error::connection_reset;
    heard.take(stream);
}

void TestClient::stopReading()
{
    reads = false;
    tcp.set_option(boost::asio::socket_base::receive_buffer_size(1));
}

void TestClient::sendDatagram(const std::string& bytes)
{
    udp.send_to(boost::asio::buffer(bytes), server);
}

void TestClient::sendStream(const std::string& bytes)
{
    boost::system::error_code error;  // the server may have hung up
    tcp.non_blocking(false, error);
    boost::asio::write(tcp, boost::asio::buffer(bytes), error);
}
