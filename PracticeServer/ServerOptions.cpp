#include "PracticeServer/ServerOptions.h"

#include <boost/program_options.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace practice {

namespace {

namespace po = boost::program_options;

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

/// Digits only: the library's own conversion would take -1 for a large unsigned number.
std::uint32_t number(const po::variables_map& values, const char* option, std::uint32_t largest)
{
    const auto& text = values[option].as<std::string>();
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value > largest) {
        refuse(option, "a whole number from 0 to " + std::to_string(largest), text);
    }
    return value;
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
    if (error) {
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
    options.add_options()("help", "show this text");
    options.add_options()("port", text("N", "21042"), "TCP and UDP port; 0 takes any free one");
    options.add_options()("bind", text("ADDRESS", "127.0.0.1"),
                          "IPv4 address to listen on; 0.0.0.0 lets other machines in");
    options.add_options()("bots", text("N", "8"), "computer pilots, 0 to 64, evenly on both teams");
    options.add_options()("difficulty", text("LEVEL", "normal"), "of the bots: easy, normal or hard");
    options.add_options()("seed", text("N", "1"), "of the match; the same seed gives the same bots");
    options.add_options()(
        "spawn", text("MODE", "fixed"),
        "starting points: fixed, one for each team; random in a box of the team; or on a grid");
    options.add_options()("score-limit", text("N", "50"), "team kills that end a match; 0: none");
    options.add_options()("time-limit", text("S", "600"), "seconds after which a match ends; 0: never");
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
    result.measurements = values["log"].as<std::string>();
    if (result.measurements.empty() && !values["log"].defaulted()) {
        refuse("log", "the name of a file", "");
    }
    return result;
}

std::variant<ServerOptions, OptionsEnd> parse(int argc, const char* const* argv)
{
    const po::options_description options = description();
    const int style = po::command_line_style::default_style & ~po::command_line_style::allow_guessing;
    po::variables_map values;
    po::store(po::command_line_parser(argc, argv)
                  .options(options)
                  .positional(po::positional_options_description())
                  .style(style)
                  .run(),
              values);
    if (values.count("help") != 0) {
        std::ostringstream help;
        help << options;
        return OptionsEnd{help.str(), 0};
    }
    return readValues(values);
}

/// A value may hold anything; what we say of it stays on one line.
std::string onOneLine(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' '; }, '?');
    return text;
}

}  // namespace

std::variant<ServerOptions, OptionsEnd> readServerOptions(int argc, const char* const* argv)
{
    try {
        return parse(argc, argv);
    } catch (const std::exception& error) {
        return OptionsEnd{"vantor-server: " + onOneLine(error.what()) + "; see --help\n", 2};
    }
}

}  // namespace practice
