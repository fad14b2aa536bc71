#include "PracticeServer/ServerOptions.h"

#include <boost/program_options.hpp>

#include <charconv>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace practice {

namespace {

namespace po = boost::program_options;

constexpr unsigned mostBots = 64;

/// Digits only: the library's own conversion would take -1 for a large unsigned number.
std::uint32_t number(const po::variables_map& values, const char* option, std::uint32_t largest)
{
    const auto& text = values[option].as<std::string>();
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value > largest) {
        throw std::invalid_argument("--" + std::string(option) + " wants a whole number from 0 to " +
                                    std::to_string(largest) + ", not '" + text + "'");
    }
    return value;
}

po::options_description description()
{
    po::options_description options("vantor-server: hosts a practice match on 127.0.0.1");
    const auto text = [](const char* standard) {
        return po::value<std::string>()->default_value(standard)->value_name("N");
    };
    options.add_options()("help", "show this text");
    options.add_options()("port", text("21042"), "TCP and UDP port; 0 takes any free one");
    options.add_options()("bots", text("8"), "computer pilots, 0 to 64, evenly on both teams");
    options.add_options()("seed", text("1"), "of the match; the same seed gives the same bots");
    return options;
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
    ServerOptions result;
    result.port =
        static_cast<std::uint16_t>(number(values, "port", std::numeric_limits<std::uint16_t>::max()));
    result.bots = number(values, "bots", mostBots);
    result.seed = number(values, "seed", std::numeric_limits<std::uint32_t>::max());
    return result;
}

}  // namespace

std::variant<ServerOptions, OptionsEnd> readServerOptions(int argc, const char* const* argv)
{
    try {
        return parse(argc, argv);
    } catch (const std::exception& error) {
        return OptionsEnd{"vantor-server: " + std::string(error.what()) + "; see --help\n", 2};
    }
}

}  // namespace practice
