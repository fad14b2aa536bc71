// Plays what two clients send into a server's match, beside an honest player.
//
// An input is a list of actions. Each has a byte for its client (modulo 2), its kind (divided by 2, modulo 4)
// and the steps of the match behind it (divided by 8), a byte for a size, and bytes. The clients' qports are
// 2 and 3.
#include "fuzz/FuzzInput.h"
#include "peer/HeadlessClient.h"
#include "server/net/PracticeServer.h"

#include <cmath>
#include <list>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    boost::asio::io_context io;
    practice::ServerConfig config;
    config.port = 0;
    config.bots = 2;
    config.log = [](const std::string&) {};
    config.random = [qport = 0U]() mutable { return ++qport; };
    practice::PracticeServer server(io, config);
    server.start();
    std::list<peer::HeadlessClient> clients;
    for (int i = 0; i < 3; ++i) {
        clients.emplace_back(io, server.port());
    }
    peer::HeadlessClient &honest = clients.front(), &first = *std::next(clients.begin()),
                         &second = clients.back();
    first.stream.paused = true;
    const auto play = [&](unsigned steps) {
        for (unsigned i = 0; i < steps; ++i) {
            honest.steer({{}, practice::control::forward});
            io.poll();
            server.step();
            honest.poll();
        }
    };
    play(1);
    for (FuzzInput input(data, size); !input.isEmpty();) {
        const unsigned action = input.byte();
        const std::string bytes = input.bytes();
        peer::HeadlessClient& client = action % 2 == 0 ? first : second;
        switch (action / 2 % 4) {
            case 0:
                client.stream.send(bytes);
                break;
            case 1:
                client.stream.reset();
                break;
            default:
                client.sendDatagram(bytes);
        }
        io.poll();
        play(action / 8);
    }
    play(3);
    for (const practice::Ship& ship : server.currentMatch().allShips()) {
        require(std::isfinite(ship.position.length() + ship.orientation.length()), "a ship is nowhere");
    }
    const practice::Ship* const ship = server.currentMatch().findShip(honest.id());
    require(ship != nullptr && ship->input.controls == practice::control::forward,
            "the honest player has no ship");
    require(honest.checker.faults().empty() && !honest.serverHungUp(), "the server breaks the protocol");
    for (peer::HeadlessClient& client : clients) {
        client.stream.reset();  // a close would keep the port for a minute
    }
    return 0;
}
