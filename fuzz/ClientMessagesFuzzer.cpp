// Plays what two clients send into a server's match, beside an honest player.
//
// An input is a list of actions. An action is a byte, a size and bytes. The byte modulo 2 is the client;
// divided by 2, modulo 4, it is the kind; divided by 8 it is the number of steps afterwards. The clients'
// qports are 2 and 3.
#include "fuzz/FuzzInput.h"
#include "peer/HeadlessClient.h"
#include "server/net/PracticeServer.h"

#include <cmath>

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
    peer::HeadlessClient honest(io, server.port());
    const auto play = [&](unsigned steps) {
        for (unsigned i = 0; i < steps; ++i) {
            honest.steer({{}, practice::control::forward});
            io.poll();
            server.step();
            honest.poll();
        }
    };
    for (int i = 0; i < 1000 && honest.id() == 0; ++i) {
        play(1);
    }
    play(2);  // from here on the server knows the port of the honest player: a guessed qport is not enough
    peer::HeadlessClient first(io, server.port()), second(io, server.port());
    for (FuzzInput input(data, size); !input.isEmpty();) {
        const unsigned action = input.byte(), kind = action / 2 % 4;
        const std::string bytes = input.bytes();
        peer::HeadlessClient& client = action % 2 == 0 ? first : second;
        if (kind == 0) {
            client.stream.send(bytes);
        } else if (kind == 1) {
            client.stream.reset();
        } else {
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
            "an honest player is not heard");
    const auto faults =
        honest.checker.faults(std::chrono::hours(1));  // an announcement may still be under way
    require(faults.empty(),
            "the server breaks the protocol: " + (faults.empty() ? "" : faults.begin()->first));
    require(!honest.serverHungUp(), "the server hangs up on an honest player");
    for (peer::HeadlessClient* client : {&honest, &first, &second}) {
        client->stream.reset();  // a close would keep the port for a minute
    }
    return 0;
}
