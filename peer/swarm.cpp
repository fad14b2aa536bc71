// Plays many clients against a server and measures what they receive.
#include "Common/PrintableText.h"
#include "peer/HeadlessClient.h"
#include "service/CommandLine.h"

#include <poll.h>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <limits>
#include <random>
#include <stdexcept>

namespace {

using namespace std::chrono_literals;
using peer::Clock;
using Faults = std::map<std::string, std::uint64_t>;

constexpr Clock::duration warmUp = 3s;
constexpr Clock::duration steeringPeriod = 50ms;
constexpr float courseChanges = 0.05F;  ///< share of the steering; about one a second
constexpr double leastSnapshotRate =
    19.5;                             ///< a second; 20 less those that the ends of the measured time cut off
constexpr std::uint32_t forward = 1;  ///< control bits
constexpr std::uint32_t fire = 0x40000000;

/// Steers by chance twenty times a second and fires about half of the time.
class Pilot
{
public:
    Pilot(boost::asio::io_context& io, std::uint16_t port, unsigned number)
        : client(io, port, peer::HeadlessClient::History::newest),
          nextSteering(Clock::now() + steeringPeriod * (number % 16) / 16),  // not all at the same moment
          random(number)
    {
        changeCourse();
    }

    peer::HeadlessClient client;
    Clock::time_point nextSteering;

    void steer()
    {
        nextSteering += steeringPeriod;
        if (client.id() == 0 || client.serverHungUp()) {
            return;
        }
        if (between(0, 1) < courseChanges) {
            changeCourse();
        }
        client.steer(steering);
    }

private:
    std::mt19937 random;
    messages::Steering steering;

    float between(float low, float high) { return std::uniform_real_distribution<float>(low, high)(random); }
    void changeCourse()
    {
        steering.orientation = Quaternion(between(-1, 1), between(-1, 1), between(-1, 1), between(-1, 1));
        steering.orientation.normalise();
        steering.controls = between(0, 1) < 0.8F ? forward : 0;
        steering.controls |= between(0, 1) < 0.5F ? fire : 0;
    }
};

using Pilots = std::vector<std::unique_ptr<Pilot>>;

void play(const Pilots& pilots, Clock::duration time)
{
    std::vector<pollfd> sockets;
    for (const auto& pilot : pilots) {
        sockets.push_back({pilot->client.stream.socket.native_handle(), POLLIN, 0});
        sockets.push_back({pilot->client.datagrams.socket.native_handle(), POLLIN, 0});
    }
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
        poll(sockets.data(), sockets.size(), 1);  // milliseconds
        for (std::size_t i = 0; i < pilots.size(); ++i) {
            if (pilots[i]->nextSteering <= Clock::now()) {
                pilots[i]->steer();
            }
            if (sockets[2 * i].revents != 0 || sockets[2 * i + 1].revents != 0) {
                pilots[i]->client.poll();
            }
            if (pilots[i]->client.serverHungUp()) {
                sockets[2 * i].fd = -1;  // its end would wake us for ever
            }
        }
    }
}

/// Snapshots a second of each client, in ascending order.
std::vector<double> snapshotRates(const Pilots& pilots, double seconds)
{
    std::vector<double> rates;
    for (const auto& pilot : pilots) {
        rates.push_back(static_cast<double>(pilot->client.checker.snapshots.size()) / seconds);
    }
    std::sort(rates.begin(), rates.end());
    return rates;
}

/// The longest time between two snapshots of one client, in milliseconds.
double longestGap(const Pilots& pilots)
{
    double longest = 0.0;
    for (const auto& pilot : pilots) {
        const auto& snapshots = pilot->client.checker.snapshots;
        for (auto next = snapshots.begin(), last = next; next != snapshots.end(); last = next++) {
            const std::chrono::duration<double, std::milli> gap = next->second.arrival - last->second.arrival;
            longest = std::max(longest, gap.count());
        }
    }
    return longest;
}

/// Every client is sent the same datagrams, so the most that one of them received of a snapshot were sent.
/// The first and the last snapshot are left out: the ends of the measured time may cut them.
std::string describeLoss(const Pilots& pilots)
{
    std::map<std::uint32_t, unsigned> sent;
    std::uint32_t first = 0;
    std::uint32_t last = std::numeric_limits<std::uint32_t>::max();
    for (const auto& pilot : pilots) {
        const auto& snapshots = pilot->client.checker.snapshots;
        for (const auto& [timestamp, snapshot] : snapshots) {
            sent[timestamp] = std::max(sent[timestamp], snapshot.datagrams);
        }
        first = std::max(first, snapshots.empty() ? last : snapshots.begin()->first);
        last = std::min(last, snapshots.empty() ? 0 : snapshots.rbegin()->first);
    }
    std::uint64_t all = 0;
    std::uint64_t lost = 0;
    for (auto it = sent.upper_bound(first); it != sent.end() && it->first < last; ++it) {
        for (const auto& pilot : pilots) {
            const auto& snapshots = pilot->client.checker.snapshots;
            const auto found = snapshots.find(it->first);
            all += it->second;
            lost += it->second - (found == snapshots.end() ? 0 : found->second.datagrams);
        }
    }
    return std::to_string(lost) + " of " + std::to_string(all);
}

Faults faultsOf(const Pilots& pilots)
{
    Faults faults;
    for (const auto& pilot : pilots) {
        const peer::HeadlessClient& client = pilot->client;
        for (const auto& [fault, count] : client.checker.faults()) {
            faults[fault] += count;
        }
        if (client.id() == 0) {
            ++faults["no welcome"];
        }
        if (client.serverHungUp()) {
            ++faults["connection broken off: " + client.stream.end.message()];
        }
    }
    return faults;
}

/// False if the server broke its promise: 20 snapshots a second for everyone, and no fault.
bool report(const Pilots& pilots, double seconds)
{
    std::uint64_t udp = 0;
    std::uint64_t tcp = 0;
    for (const auto& pilot : pilots) {
        udp += pilot->client.checker.datagramBytes;
        tcp += pilot->client.checker.streamBytes;
    }
    const double perClient = 1.0 / (seconds * 1000.0 * static_cast<double>(pilots.size()));
    const std::vector<double> rates = snapshotRates(pilots, seconds);
    const auto row = [](const char* name) -> std::ostream& {
        return std::cout << std::left << std::setw(44) << name << std::right;
    };
    std::cout << std::fixed << std::setprecision(1);
    row("clients, seconds measured") << pilots.size() << ", " << seconds << '\n';
    row("snapshots a second: least, median") << rates.front() << ", " << rates[rates.size() / 2] << '\n';
    row("longest wait for a snapshot") << longestGap(pilots) << " ms\n";
    row("to one client: datagrams, TCP")
        << static_cast<double>(udp) * perClient << ", " << static_cast<double>(tcp) * perClient << " kB/s\n";
    row("lost datagrams") << describeLoss(pilots) << '\n';
    bool isGood = rates.front() >= leastSnapshotRate;
    for (const auto& [fault, count] : faultsOf(pilots)) {
        std::cout << "FAULT: " << fault << " (" << count << " times)\n";
        isGood = false;
    }
    return isGood;
}

bool run(std::uint16_t port, unsigned clients, std::chrono::seconds measured)
{
    boost::asio::io_context io{1};
    Pilots pilots;
    for (unsigned i = 0; i < clients; ++i) {
        pilots.push_back(std::make_unique<Pilot>(io, port, i));
    }
    play(pilots, warmUp);
    for (const auto& pilot : pilots) {
        pilot->client.checker.startMeasuring();
    }
    const Clock::time_point start = Clock::now();
    play(pilots, measured);
    const bool isGood = report(pilots, std::chrono::duration<double>(Clock::now() - start).count());
    if (!std::cout.flush()) {
        throw std::runtime_error("cannot write the report");
    }
    return isGood;
}

}  // namespace

int main(int argc, char** argv)
{
    CLI::App app("plays many clients against a server on 127.0.0.1", "vantor-swarm");
    unsigned port = 21042;
    unsigned clients = 64;
    unsigned seconds = 60;
    const auto add = [&app](const char* name, unsigned& value, unsigned largest, const char* description) {
        app.add_option(name, value, description)
            ->capture_default_str()
            ->check(commandline::wholeNumber() & CLI::Range(1U, largest));
    };
    add("--port", port, std::numeric_limits<std::uint16_t>::max(), "of the server");
    add("--clients", clients, 1000, "how many");
    add("--seconds", seconds, 86'400, "to measure, after 3 to warm up");
    if (const auto status = commandline::parse(app, argc, argv)) {
        return *status;
    }
    try {
        return run(static_cast<std::uint16_t>(port), clients, std::chrono::seconds(seconds)) ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "vantor-swarm: " << printable(error.what()) << '\n';
        return 1;
    }
}
