#include "relay/RelayConfig.h"

#include "service/CommandLine.h"

#include <map>
#include <sstream>

namespace relay {

namespace {

constexpr double longestDelay = 10'000;  ///< ms
constexpr double longestLife = 86'400;   ///< s, a day
constexpr double slowest = 0.01;         ///< times the recorded speed
constexpr double fastest = 50;           ///< beyond, bursts overflow the client's receive buffer
constexpr double leastFault = 0.01;      ///< percent or kB/s; far below, waits and distances overflow

struct Network
{
    const char* name;
    Conditions conditions;
};

constexpr Network networks[] = {
    {"good", {15, 2, 0, 0, 0}},
    {"dsl", {40, 8, 0.5, 0, 0}},
    {"mobile", {80, 30, 5, 1, 2}},
    {"awful", {200, 100, 15, 5, 10}},
};

Cut cutCalled(const std::string& name)
{
    const std::map<std::string, Cut> cuts = {
        {"close", Cut::close}, {"reset", Cut::reset}, {"half", Cut::half}};
    const auto found = cuts.find(name);
    if (found == cuts.end()) {
        throw CLI::ValidationError("--cut-with wants close, reset or half, not '" + name + "'");
    }
    return found->second;
}

Conditions networkCalled(const std::string& name)
{
    for (const Network& network : networks) {
        if (network.name == name) {
            return network.conditions;
        }
    }
    throw CLI::ValidationError("no network is called '" + name + "'");
}

std::string networkList()
{
    std::string list = "a ready-made network; each number can still be set:";
    for (const Network& network : networks) {
        list += std::string("\n") + network.name + ": " + describe(network.conditions);
    }
    return list;
}

/// Accepts 0 and the numbers from leastFault on. For options whose text is a number already.
std::string checkLeastFault(const std::string& text)
{
    double value = 0;
    const bool isNumber = CLI::detail::lexical_cast(text, value);
    const bool fits = isNumber && (value == 0 || value >= leastFault);
    return fits ? "" : "wants 0 or at least 0.01, not '" + text + "'";
}

/// Reads HOST:PORT. An IPv6 address stands in brackets, as in a URL.
void setServer(RelayConfig& config, const std::string& to)
{
    const std::size_t colon = to.rfind(':');
    std::string host = to.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    std::string port = colon == std::string::npos ? "" : to.substr(colon + 1);
    const std::string error = commandline::wholeNumber(65535)(port);
    if (host.empty() || !error.empty() || port == "0") {
        throw CLI::ValidationError("--to wants HOST:PORT, not '" + to + "'");
    }
    config.serverHost = host;
    config.serverPort = port;
}

}  // namespace

Time RelayConfig::cutTime() const
{
    const std::chrono::duration<double> age(cutAfter.value_or(0));
    return cutAfter ? Clock::now() + std::chrono::duration_cast<Duration>(age) : Time::max();
}

std::optional<int> readCommandLine(int argc, const char* const* argv, RelayConfig& config)
{
    CLI::App app(
        "vantor-relay --to HOST:PORT [faults] [--record FILE]\n"
        "vantor-relay --replay FILE [--speed X]\n\n"
        "Stands between any client and any server and passes on TCP and UDP, both ways,\n"
        "as they are or impaired; or plays a recorded server. Listens on 127.0.0.1, and\n"
        "prints \"ready HOST:PORT\" when it does. Ends on SIGINT or SIGTERM.\n",
        "vantor-relay");
    const auto add = [&app](const char* name, const char* value, auto& field, const CLI::Validator& validator,
                            const char* text) {
        return app.add_option(name, field, text)->transform(validator)->option_text(value);
    };
    const auto setTo = [&config](const std::string& text) { setServer(config, text); };
    const auto setNetwork = [&config](const std::string& name) { config.conditions = networkCalled(name); };
    const auto setCut = [&config](const std::string& name) { config.cut = cutCalled(name); };
    Conditions& faults = config.conditions;
    const CLI::Validator file = commandline::fileName();
    const CLI::Validator percent = commandline::decimalNumber(100);
    const CLI::Validator delay = commandline::decimalNumber(longestDelay);

    add("--listen", "PORT (0)", config.port, commandline::wholeNumber(65535),
        "TCP and UDP port; 0 takes any free one");
    // Values are set in this order: first a network, then what changes it.
    CLI::Option* const withServer[] = {
        app.add_option_function<std::string>("--to", setTo, "the server")->option_text("HOST:PORT"),
        app.add_option_function<std::string>("--network", setNetwork, networkList())->option_text("NAME"),
        add("--latency", "MS", faults.latency, delay, "one-way delay of both TCP and UDP"),
        add("--jitter", "MS", faults.jitter, delay, "delays differ by up to so much; keeps the order"),
        add("--loss", "PERCENT", faults.loss, percent, "of the datagrams never arrive"),
        add("--duplicate", "PERCENT", faults.duplicate, percent, "of those that arrive arrive twice"),
        add("--reorder", "PERCENT", faults.reorder, commandline::decimalNumber(mostReorder),
            "of those that arrive arrive behind a later one;\nat most 50"),
        add("--corrupt", "PERCENT", faults.corrupt, percent,
            "of the kilobytes of UDP and TCP get a wrong byte;\n0, or 0.01 to 100")
            ->check(checkLeastFault),
        add("--bandwidth", "KB", faults.bandwidth, commandline::decimalNumber(),
            "a second, of each connection and each flow of datagrams,\neach way; 0: no limit; else from 0.01")
            ->check(checkLeastFault),
        add("--pieces", "BYTES", faults.pieces, commandline::wholeNumber(),
            "cut TCP into pieces of 1 to so many bytes"),
        add("--seed", "N (1)", config.seed, commandline::wholeNumber(),
            "of the faults; the same one repeats them"),
        add("--cut-after", "S", config.cutAfter, commandline::decimalNumber(longestLife),
            "hang up each connection so many seconds old"),
        app.add_option_function<std::string>(
               "--cut-with", setCut, "close, reset, or half: half of the next piece of TCP,\nthen close")
            ->option_text("HOW (close)"),
        add("--record", "FILE", config.recordPath, file, "write all that both sides say, before faults")};
    CLI::Option* const replay = add("--replay", "FILE", config.replayPath, file,
                                    "play the server of a recording, to one client at a time");
    add("--speed", "X (1)", config.replaySpeed, commandline::decimalNumber(fastest),
        "of the replay, 0.01 to 50; 2 takes half the time")
        ->check(CLI::Range(slowest, fastest))
        ->needs(replay);
    for (CLI::Option* const option : withServer) {
        replay->excludes(option);
    }
    app.callback([&] {
        if (config.serverPort.empty() && config.replayPath.empty()) {
            throw CLI::RequiredError("one of --to and --replay");
        }
    });
    return commandline::parse(app, argc, argv);
}

std::string describe(const Conditions& conditions)
{
    std::ostringstream text;
    text << conditions.latency << "±" << conditions.jitter << " ms";
    const auto share = [&text](const char* name, double value) {
        if (value > 0) {
            text << ", " << name << ' ' << value << "%";
        }
    };
    share("loss", conditions.loss);
    share("duplicate", conditions.duplicate);
    share("reorder", conditions.reorder);
    share("corrupt", conditions.corrupt);
    if (conditions.bandwidth > 0) {
        text << ", " << conditions.bandwidth << " kB/s";
    }
    if (conditions.pieces > 0) {
        text << ", pieces of at most " << conditions.pieces << " bytes";
    }
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
        text << ", cut after " << *config.cutAfter << " s";
        text << (config.cut == Cut::reset ? " by a reset" : config.cut == Cut::half ? " within a piece" : "");
    }
    return text.str();
}

}  // namespace relay
