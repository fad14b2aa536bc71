#include "server/net/PendingConnections.h"

#include <boost/asio/buffer.hpp>

#include <algorithm>

namespace practice {

namespace {

using boost::asio::ip::tcp;
using boost::system::error_code;

constexpr unsigned pauseAfterFailure = 12;  ///< steps, a fifth of a second

bool hasHungUp(tcp::socket& socket)
{
    char first = 0;
    error_code error;
    socket.remote_endpoint(error);
    if (error) {
        return true;  // reset; what it said before could still be read
    }
    socket.non_blocking(true, error);
    socket.receive(boost::asio::buffer(&first, 1), tcp::socket::message_peek, error);
    return error && error != boost::asio::error::would_block;
}

}  // namespace

void PendingConnections::close()
{
    closed = true;       // a handler that is already on its way must not start anything anew
    error_code ignored;  // closing is all we can do
    acceptor.close(ignored);
    waiting.clear();
}

void PendingConnections::tidy()
{
    waiting.erase(std::remove_if(waiting.begin(), waiting.end(), hasHungUp), waiting.end());
    if (pause > 0) {
        --pause;
    } else if (!accepting) {
        accept();
    }
}

std::optional<tcp::socket> PendingConnections::next()
{
    if (waiting.empty()) {
        return std::nullopt;
    }
    tcp::socket socket = std::move(waiting.front());
    waiting.pop_front();
    return socket;
}

void PendingConnections::accept()
{
    accepting = waiting.size() < room;
    if (!accepting) {
        return;
    }
    acceptor.async_accept([this](const error_code& error, tcp::socket socket) {
        if (!closed) {
            handleAccept(error, std::move(socket));
        }
    });
}

void PendingConnections::handleAccept(const error_code& error, tcp::socket socket)
{
    if (error) {
        accepting = false;
        pause = pauseAfterFailure;
        shortage.log("cannot accept a connection: " + error.message());
        return;
    }
    shortage.clear();
    waiting.push_back(std::move(socket));
    accept();
}

}  // namespace practice
