#include "server/net/ServerOptions.h"

#include "service/CommandLine.h"

#include <map>

namespace practice {

namespace {

const std::map<std::string, Difficulty> difficulties = {
    {"easy", Difficulty::easy}, {"normal", Difficulty::normal}, {"hard", Difficulty::hard}};
const std::map<std::string, General::Mode> spawns = {
    {"random", General::RANDOM}, {"grid", General::GRID}, {"fixed", General::FIXED}};

constexpr std::uint32_t mostBots = 64;
constexpr std::uint32_t highestScore = 10'000;  ///< kills; more than a day of fighting
constexpr std::uint32_t longestMatch = 86'400;  ///< seconds

boost::asio::ip::address_v4 toAddress(const std::string& text)
{
    boost::system::error_code error;
    auto address = boost::asio::ip::make_address_v4(text, error);
    if (error || address.is_multicast() || address == boost::asio::ip::address_v4::broadcast()) {
        throw CLI::ValidationError("--bind",
                                   "wants an IPv4 address of this machine like 127.0.0.1 (0.0.0.0: all of "
                                   "them), not '" +
                                       text + "'");
    }
    return address;
}

}  // namespace

std::optional<int> readServerOptions(int argc, const char* const* argv, ServerOptions& options)
{
    ServerConfig& config = options.server;
    CLI::App app("Hosts a practice match.", "vantor-server");
    const auto number = [&app](const char* name, auto& value, std::uint32_t largest, const char* text) {
        return app.add_option(name, value, text)
            ->transform(commandline::wholeNumber(largest))
            ->capture_default_str()
            ->type_name("N");
    };
    const auto choice = [&app](const char* name, auto& value, const auto& choices, const char* text) {
        const auto set = [&value, &choices](const std::string& key) { value = choices.at(key); };
        return app.add_option_function<std::string>(name, set, text)
            ->check(CLI::IsMember(&choices).description(""));
    };
    const auto setAddress = [&config](const std::string& text) { config.bind = toAddress(text); };
    MatchSettings& match = config.match;
    number("--port", config.port, 65535, "TCP and UDP port; 0 takes any free one");
    app.add_option_function<std::string>("--bind", setAddress,
                                         "IPv4 address to listen on; 0.0.0.0 lets other machines in")
        ->default_str(config.bind.to_string())
        ->type_name("ADDRESS");
    number("--per-address", config.placesPerAddress, static_cast<std::uint32_t>(config.mostClients),
           "places for players of one address; 0: all; this machine has no limit");
    number("--bots", config.bots, mostBots, "computer pilots, 0 to 64, evenly on both teams");
    choice("--difficulty", match.difficulty, difficulties, "of the bots: easy, normal or hard")
        ->default_str("normal")
        ->type_name("LEVEL");
    number("--seed", match.seed, 0xFFFFFFFF, "of the match; the same seed gives the same bots");
    choice("--spawn", match.spawn, spawns,
           "starting points: fixed, one for each team; random in a box of the team; or on a grid")
        ->default_str("fixed")
        ->type_name("MODE");
    number("--score-limit", match.scoreLimit, highestScore, "team kills that end a match; 0: none");
    number("--time-limit", match.timeLimit, longestMatch, "seconds after which a match ends; 0: never")
        ->type_name("S");
    app.add_flag("--friendly-fire", match.friendlyFire, "shots hit the shooter's own team as well")
        ->disable_flag_override();
    app.add_option("--log", options.measurements, "append a row of measurements to FILE once a second")
        ->check(commandline::fileName())
        ->type_name("FILE");
    return commandline::parse(app, argc, argv);
}

}  // namespace practice
