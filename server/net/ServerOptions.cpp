#include "server/net/ServerOptions.h"

#include <boost/program_options.hpp>

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>
#include <utility>

namespace practice {

namespace {

namespace po = boost::program_options;

constexpr const char* program = "vantor-server";
constexpr std::uint32_t mostBots = 64;
constexpr std::uint32_t highestScore = 10'000;  ///< kills; more than a day of fighting
constexpr std::uint32_t longestMatch = 86'400;  ///< seconds

template <typename Value>
using Choice = std::pair<const char*, Value>;

constexpr std::array difficulties = {Choice<Difficulty>{"easy", Difficulty::easy},
                                     Choice<Difficulty>{"normal", Difficulty::normal},
                                     Choice<Difficulty>{"hard", Difficulty::hard}};
constexpr std::array spawns = {Choice<General::Mode>{"random", General::RANDOM},
                               Choice<General::Mode>{"grid", General::GRID},
                               Choice<General::Mode>{"fixed", General::FIXED}};

[[noreturn]] void refuse(const char* option, const std::string& wanted, const std::string& given)
{
    throw std::invalid_argument("--" + std::string(option) + " wants " + wanted + ", not '" + given + "'");
}

std::uint32_t number(const po::variables_map& values, const char* option, std::uint32_t largest)
{
    return commandline::wholeNumber(option, values[option].as<std::string>(), largest);
}

template <typename Choices>
std::string names(const Choices& choices)
{
    std::string result;
    for (const auto& choice : choices) {
        result += (result.empty() ? "" : ", ") + std::string(choice.first);
    }
    return result;
}

template <typename Choices>
auto chosen(const po::variables_map& values, const char* option, const Choices& choices)
{
    const auto& text = values[option].as<std::string>();
    const auto found = std::find_if(choices.begin(), choices.end(),
                                    [&text](const auto& choice) { return text == choice.first; });
    if (found == choices.end()) {
        refuse(option, "one of " + names(choices), text);
    }
    return found->second;
}

boost::asio::ip::address_v4 address(const po::variables_map& values, const char* option)
{
    const auto& text = values[option].as<std::string>();
    boost::system::error_code error;
    auto result = boost::asio::ip::make_address_v4(text, error);
    if (error || result.is_multicast() || result == boost::asio::ip::address_v4::broadcast()) {
        refuse(option, "an IPv4 address of this machine like 127.0.0.1 (0.0.0.0: all of them)", text);
    }
    return result;
}

po::options_description description()
{
    po::options_description options("vantor-server: hosts a practice match");
    const auto text = [](const char* name, const char* standard) {
        return po::value<std::string>()->default_value(standard)->value_name(name);
    };
    commandline::addInformation(options);
    options.add_options()("port", text("N", "21042"), "TCP and UDP port; 0 takes any free one");
    options.add_options()("bind", text("ADDRESS", "127.0.0.1"),
                          "IPv4 address to listen on; 0.0.0.0 lets other machines in");
    options.add_options()("bots", text("N", "16"), "computer pilots, 0 to 64, evenly on both teams");
    options.add_options()("difficulty", text("LEVEL", "normal"), "of the bots: easy, normal or hard");
    options.add_options()("seed", text("N", "1"), "of the match; the same seed gives the same bots");
    options.add_options()(
        "spawn", text("MODE", "fixed"),
        "starting points: fixed, one for each team; random in a box of the team; or on a grid");
    options.add_options()("score-limit", text("N", "50"), "team kills that end a match; 0: none");
    options.add_options()("time-limit", text("S", "600"), "seconds after which a match ends; 0: never");
    options.add_options()("friendly-fire", po::bool_switch(), "shots hit the shooter's own team as well");
    options.add_options()("log", po::value<std::string>()->default_value("")->value_name("FILE"),
                          "append a row of measurements to FILE once a second");
    return options;
}

ServerOptions readValues(const po::variables_map& values)
{
    ServerOptions result;
    result.bind = address(values, "bind");
    result.port =
        static_cast<std::uint16_t>(number(values, "port", std::numeric_limits<std::uint16_t>::max()));
    result.bots = number(values, "bots", mostBots);
    result.match.difficulty = chosen(values, "difficulty", difficulties);
    result.match.seed = number(values, "seed", std::numeric_limits<std::uint32_t>::max());
    result.match.spawn = chosen(values, "spawn", spawns);
    result.match.scoreLimit = static_cast<int>(number(values, "score-limit", highestScore));
    result.match.timeLimit = static_cast<int>(number(values, "time-limit", longestMatch));
    result.match.friendlyFire = values["friendly-fire"].as<bool>();
    result.measurements = values["log"].as<std::string>();
    if (result.measurements.empty() && !values["log"].defaulted()) {
        refuse("log", "the name of a file", "");
    }
    return result;
}

}  // namespace

std::variant<ServerOptions, commandline::End> readServerOptions(int argc, const char* const* argv)
{
    return commandline::read<ServerOptions>(program, argc, argv, description(), readValues);
}

}  // namespace practice
