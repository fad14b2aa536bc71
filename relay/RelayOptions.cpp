#include "relay/RelayOptions.h"

#include <boost/program_options/variables_map.hpp>

#include <algorithm>
#include <iterator>
#include <limits>
#include <sstream>
#include <stdexcept>

namespace relay {

namespace {

namespace po = boost::program_options;

constexpr const char* program = "vantor-relay";
constexpr double longestDelay = 10'000;  ///< ms
constexpr double longestLife = 86'400;   ///< s, a day
constexpr double slowest = 0.01;         ///< times the recorded speed
constexpr double fastest = 50;           ///< beyond, bursts overflow the client's receive buffer

/// One of the networks that --network knows.
struct Network
{
    const char* name;
    double latency, jitter;           ///< ms
    double loss, duplicate, reorder;  ///< percent
};

constexpr Network networks[] = {
    {"good", 15, 2, 0, 0, 0},
    {"dsl", 40, 8, 0.5, 0, 0},
    {"mobile", 80, 30, 5, 1, 2},
    {"awful", 200, 100, 15, 5, 10},
};

Duration milliseconds(double value)
{
    return std::chrono::duration_cast<Duration>(std::chrono::duration<double, std::milli>(value));
}

Conditions conditionsOf(const Network& network)
{
    return {milliseconds(network.latency), milliseconds(network.jitter), network.loss / 100,
            network.duplicate / 100, network.reorder / 100};
}

std::string networkList()
{
    std::string list = "a ready-made network; each number can still be set:";
    for (const Network& network : networks) {
        list += std::string("\n") + network.name + ": " + describe(conditionsOf(network));
    }
    return list;
}

po::options_description description()
{
    po::options_description options(
        "usage: vantor-relay --to HOST:PORT [faults] [--record FILE]\n"
        "       vantor-relay --replay FILE [--speed X]\n\n"
        "Stands between any client and any server and passes on TCP and UDP, both ways,\n"
        "as they are or spoilt; or plays a recorded server. Listens on 127.0.0.1, and\n"
        "prints \"ready HOST:PORT\" when it does. Ends on SIGINT or SIGTERM.\n\nOptions",
        82, 50);
    const auto value = [](const char* name) { return po::value<std::string>()->value_name(name); };
    commandline::addInformation(options);
    auto add = options.add_options();
    add("listen", value("PORT")->default_value("0"), "TCP and UDP port; 0 takes any free one");
    add("to", value("HOST:PORT"), "the server");
    const std::string list = networkList();
    add("network", value("NAME"), list.c_str());
    add("latency", value("MS"), "one-way delay of both TCP and UDP");
    add("jitter", value("MS"), "delays differ by up to so much; keeps the order");
    add("loss", value("PERCENT"), "of the datagrams never arrive");
    add("duplicate", value("PERCENT"), "of those that arrive arrive twice");
    add("reorder", value("PERCENT"), "of those that arrive arrive behind a later one;\nat most 50");
    add("seed", value("N"), "of the faults (1); the same one repeats them");
    add("cut-after", value("S"), "hang up each connection so many seconds old");
    add("record", value("FILE"), "write all that both sides say, before faults");
    add("replay", value("FILE"), "play the server of a recording, to one client at a time");
    add("speed", value("X"), "of the replay, 0.01 to 50; 2 takes half the time (1)");
    return options;
}

class Values
{
public:
    explicit Values(const po::variables_map& map_) : map(map_) {}

    bool has(const char* option) const { return map.count(option) != 0; }
    std::string text(const char* option) const { return map[option].as<std::string>(); }
    /// "" where it is not given.
    std::string path(const char* option) const
    {
        if (has(option) && text(option).empty()) {
            throw std::invalid_argument(std::string("--") + option + " wants a file");
        }
        return has(option) ? text(option) : "";
    }
    std::uint32_t whole(const char* option, std::uint32_t largest) const
    {
        return commandline::wholeNumber(option, text(option), largest);
    }
    double decimal(const char* option, double largest) const
    {
        return commandline::decimal(option, text(option), largest);
    }

private:
    const po::variables_map& map;
};

Conditions networkOf(const Values& values)
{
    if (!values.has("network")) {
        return {};
    }
    const auto* const found = std::find_if(std::begin(networks), std::end(networks), [&](const Network& n) {
        return n.name == values.text("network");
    });
    if (found == std::end(networks)) {
        throw std::invalid_argument("no network is called '" + values.text("network") + "'");
    }
    return conditionsOf(*found);
}

Conditions conditionsOf(const Values& values)
{
    Conditions conditions = networkOf(values);
    const auto delay = [&values](const char* option, Duration& field) {
        field = values.has(option) ? milliseconds(values.decimal(option, longestDelay)) : field;
    };
    const auto share = [&values](const char* option, double& field, double most = 1) {
        field = values.has(option) ? values.decimal(option, 100 * most) / 100 : field;
    };
    delay("latency", conditions.latency);
    delay("jitter", conditions.jitter);
    share("loss", conditions.loss);
    share("duplicate", conditions.duplicate);
    share("reorder", conditions.reorder, mostReorder);
    return conditions;
}

/// An IPv6 address stands in brackets, as in a URL.
void setServer(RelayConfig& config, const std::string& to)
{
    const std::size_t colon = to.rfind(':');
    std::string host = to.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    const std::string port = colon == std::string::npos ? "" : to.substr(colon + 1);
    if (host.empty() || port.empty()) {
        throw std::invalid_argument("--to wants HOST:PORT, not '" + to + "'");
    }
    const std::uint32_t number =
        commandline::wholeNumber("to", port, std::numeric_limits<std::uint16_t>::max());
    if (number == 0) {
        throw std::invalid_argument("--to wants the server's own port, not 0");
    }
    config.serverHost = host;
    config.serverPort = std::to_string(number);
}

double speedOf(const Values& values)
{
    const double speed = values.has("speed") ? values.decimal("speed", fastest) : 1;
    if (speed < slowest) {
        throw std::invalid_argument("--speed wants at least 0.01");
    }
    return speed;
}

/// A replay has neither a server nor a network between it and the client.
void checkMode(const Values& values)
{
    if (values.has("to") == values.has("replay")) {
        throw std::invalid_argument("one of --to and --replay is needed");
    }
    const auto refuse = [&values](const char* mode, std::initializer_list<const char*> options) {
        for (const char* option : options) {
            if (values.has(option)) {
                throw std::invalid_argument(std::string("--") + option + " does not go with --" + mode);
            }
        }
    };
    if (values.has("replay")) {
        refuse("replay", {"network", "latency", "jitter", "loss", "duplicate", "reorder", "seed", "cut-after",
                          "record"});
    } else {
        refuse("to", {"speed"});
    }
}

RelayOptions optionsOf(const Values& values)
{
    checkMode(values);
    RelayOptions result;
    RelayConfig& config = result.config;
    config.port =
        static_cast<std::uint16_t>(values.whole("listen", std::numeric_limits<std::uint16_t>::max()));
    config.conditions = conditionsOf(values);
    if (values.has("seed")) {
        config.seed = values.whole("seed", std::numeric_limits<std::uint32_t>::max());
    }
    if (values.has("to")) {
        setServer(config, values.text("to"));
    }
    if (values.has("cut-after")) {
        config.cutAfter = milliseconds(1000 * values.decimal("cut-after", longestLife));
    }
    result.recordPath = values.path("record");
    result.replayPath = values.path("replay");
    result.replaySpeed = speedOf(values);
    return result;
}

}  // namespace

std::variant<RelayOptions, commandline::End> readRelayOptions(int argc, const char* const* argv)
{
    return commandline::read<RelayOptions>(
        program, argc, argv, description(),
        [](const po::variables_map& map) { return optionsOf(Values(map)); });
}

std::string describe(const Conditions& conditions)
{
    using Milliseconds = std::chrono::duration<double, std::milli>;
    std::ostringstream text;
    text << Milliseconds(conditions.latency).count() << "±" << Milliseconds(conditions.jitter).count()
         << " ms";
    const auto share = [&text](const char* name, double value) {
        if (value > 0) {
            text << ", " << name << ' ' << 100 * value << "%";
        }
    };
    share("loss", conditions.loss);
    share("duplicate", conditions.duplicate);
    share("reorder", conditions.reorder);
    return text.str() == "0±0 ms" ? "no faults" : text.str();
}

std::string describe(const RelayConfig& config)
{
    std::ostringstream text;
    text << describe(config.conditions);
    if (text.str() != "no faults") {
        text << ", seed " << config.seed;
    }
    if (config.cutAfter) {
        text << ", cut after " << std::chrono::duration<double>(*config.cutAfter).count() << " s";
    }
    return text.str();
}

}  // namespace relay
