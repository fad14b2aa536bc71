// Plays many clients against a server and measures what they receive.
#include "Common/PrintableText.h"
#include "peer/HeadlessClient.h"
#include "service/CommandLine.h"

#include <algorithm>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <list>
#include <random>
#include <stdexcept>

namespace {

using namespace std::chrono_literals;
using peer::Clock;

constexpr std::chrono::seconds warmUp = 3s;
constexpr std::chrono::milliseconds steeringPeriod = 50ms;
constexpr unsigned steeringsPerCourse = 20;
constexpr double leastSnapshotRate = 19.5;  ///< a second; both ends of the measured time may cut one off
constexpr std::uint32_t forward = 1;        ///< control bits
constexpr std::uint32_t fire = 0x40000000;

// Of clients that come and go.
constexpr std::chrono::milliseconds joinSpacing = 100ms;
constexpr std::chrono::seconds fullSpacing = 1s;      ///< where all places are taken
constexpr std::chrono::seconds silenceKept = 35s;     ///< the server drops a silent client after 30
constexpr std::chrono::seconds longestTransit = 10s;  ///< of an announcement over a bad network

/// Chooses a random course once a second. Fires on about half of the courses.
struct Pilot
{
    Pilot(boost::asio::io_context& io, std::uint16_t port, unsigned number) : client(io, port), random(number)
    {
        nextSteering += steeringPeriod * (number % 16) / 16;  // so that not all steer at the same moment
    }

    void steer()
    {
        nextSteering += steeringPeriod;
        const auto chance = [this] { return std::uniform_real_distribution<float>(-1, 1)(random); };
        if (steerings++ % steeringsPerCourse == 0) {
            course.orientation = Quaternion(chance(), chance(), chance(), chance());
            course.orientation.normalise();
            course.controls = (chance() < 0.6F ? forward : 0) | (chance() < 0 ? fire : 0);
        }
        if (client.id() != 0 && !client.serverHungUp()) {
            client.steer(course);
        }
    }

    peer::HeadlessClient client;
    const peer::ProtocolChecker::Traffic& traffic = client.checker.traffic;
    std::mt19937 random;
    messages::Steering course;
    unsigned steerings = 0;
    Clock::time_point nextSteering = Clock::now();
    Clock::time_point leaves = Clock::time_point::max();
};

using Pilots = std::list<Pilot>;

/// Serves every pilot about once a millisecond.
void play(Pilots& pilots, Clock::duration time)
{
    for (const auto end = Clock::now() + time; Clock::now() < end; std::this_thread::sleep_for(1ms)) {
        for (Pilot& pilot : pilots) {
            pilot.client.poll();
            pilot.client.checker.received = {};  // or they would pile up
            if (pilot.nextSteering <= Clock::now()) {
                pilot.steer();
            }
        }
    }
}

/// The longest time between two snapshots of one client, in milliseconds.
double longestGap(const Pilots& pilots)
{
    double longest = 0.0;
    for (const Pilot& pilot : pilots) {
        const auto& snapshots = pilot.traffic.snapshots;
        for (auto next = snapshots.begin(), last = next; next != snapshots.end(); last = next++) {
            const std::chrono::duration<double, std::milli> gap = next->second.arrival - last->second.arrival;
            longest = std::max(longest, gap.count());
        }
    }
    return longest;
}

/// The server sends every client the same datagrams. So the largest number that a client received of a
/// snapshot is the number sent. The first and the last snapshot do not count: the ends of the measured time
/// may cut them.
std::string describeLoss(const Pilots& pilots)
{
    std::map<std::uint32_t, unsigned> sent;
    for (const Pilot& pilot : pilots) {
        for (const auto& [timestamp, snapshot] : pilot.traffic.snapshots) {
            sent[timestamp] = std::max(sent[timestamp], snapshot.datagrams);
        }
    }
    std::uint64_t all = 0;
    std::uint64_t lost = 0;
    for (const auto& [timestamp, datagrams] : sent) {
        if (timestamp == sent.begin()->first || timestamp == sent.rbegin()->first) {
            continue;
        }
        for (const Pilot& pilot : pilots) {
            const auto found = pilot.traffic.snapshots.find(timestamp);
            all += datagrams;
            lost += datagrams - (found == pilot.traffic.snapshots.end() ? 0 : found->second.datagrams);
        }
    }
    return std::to_string(lost) + " of " + std::to_string(all);
}

/// False if there is a fault.
bool reportFaults(const Pilots& pilots)
{
    std::map<std::string, std::uint64_t> faults;
    for (const Pilot& pilot : pilots) {
        for (const auto& [fault, count] : pilot.client.checker.faults()) {
            faults[fault] += count;
        }
        if (pilot.client.id() == 0) {
            ++faults["no welcome"];
        }
        if (pilot.client.serverHungUp()) {
            ++faults["connection broken off: " + pilot.client.stream.end.message()];
        }
    }
    for (const auto& [fault, count] : faults) {
        std::cout << "FAULT: " << fault << " (" << count << " times)\n";
    }
    return faults.empty();
}

/// False if the server broke its promise: 20 snapshots a second for everyone, and no fault.
bool report(const Pilots& pilots, double seconds)
{
    double udp = 0;
    double tcp = 0;
    std::vector<double> rates;
    for (const Pilot& pilot : pilots) {
        udp += static_cast<double>(pilot.traffic.datagramBytes);
        tcp += static_cast<double>(pilot.traffic.streamBytes);
        rates.push_back(static_cast<double>(pilot.traffic.snapshots.size()) / seconds);
    }
    std::sort(rates.begin(), rates.end());
    const double divisor = 1000.0 * seconds * static_cast<double>(pilots.size());
    const auto row = [](const char* name) -> std::ostream& {
        return std::cout << std::left << std::setw(44) << name << std::right;
    };
    std::cout << std::fixed << std::setprecision(1);
    row("clients, seconds measured") << pilots.size() << ", " << seconds << '\n';
    row("snapshots a second: least, median") << rates.front() << ", " << rates[rates.size() / 2] << '\n';
    row("longest wait for a snapshot") << longestGap(pilots) << " ms\n";
    row("to one client: datagrams, TCP") << udp / divisor << ", " << tcp / divisor << " kB/s\n";
    row("lost datagrams") << describeLoss(pilots) << '\n';
    return reportFaults(pilots) && rates.front() >= leastSnapshotRate;
}

/// Clients that stay for a while, leave in one of several ways, and are replaced. The seed decides how long
/// and which way.
class ComersAndGoers
{
public:
    /// A client stays for half to one and a half times `stay_`.
    ComersAndGoers(std::uint16_t port_, unsigned places_, std::chrono::seconds stay_, unsigned seed)
        : port(port_), places(places_), stay(stay_), random(seed)
    {
    }

    void run(std::chrono::seconds time)
    {
        for (const auto end = Clock::now() + time; Clock::now() < end;) {
            if (present.size() < places && nextJoin <= Clock::now()) {
                join();
            }
            play(present, 1ms);
            removeLeavers();
        }
        for (const Pilot& pilot : present) {
            count(pilot, "still there");
        }
    }

    /// False if the server broke the protocol or welcomed nobody.
    bool report() const
    {
        for (const auto& [event, number] : counted) {
            std::cout << std::left << std::setw(44) << "clients " + event << number << '\n';
        }
        for (const auto& [fault, number] : faults) {
            std::cout << "FAULT: " << fault << " (" << number << " times)\n";
        }
        return faults.empty() && counted.at("welcomed") > 0;
    }

private:
    boost::asio::io_context io;
    std::uint16_t port;
    std::size_t places;
    std::chrono::duration<double> stay;
    std::mt19937 random;
    Pilots present;
    Pilots silent;  ///< connections that nobody serves any more
    Clock::time_point nextJoin = Clock::now();
    std::map<std::string, std::uint64_t> counted{{"welcomed", 0}};
    std::map<std::string, std::uint64_t> faults;

    void join()
    {
        nextJoin = Clock::now() + joinSpacing;
        const double share = std::uniform_real_distribution(0.5, 1.5)(random);
        const auto number = static_cast<unsigned>(random());
        try {
            Pilot& pilot = present.emplace_back(io, port, number);
            pilot.leaves = Clock::now() + std::chrono::duration_cast<Clock::duration>(stay * share);
        } catch (const boost::system::system_error& error) {
            ++counted["not connected: " + error.code().message()];
        }
    }

    void removeLeavers()
    {
        for (auto next = present.begin(); next != present.end();) {
            const auto pilot = next++;
            if (pilot->client.serverHungUp()) {
                const bool isFull = pilot->client.id() == 0;
                count(*pilot, isFull ? "turned away" : "cut off");
                nextJoin = isFull ? Clock::now() + fullSpacing : nextJoin;
                present.erase(pilot);
            } else if (pilot->leaves <= Clock::now()) {
                leave(pilot);
            }
        }
        silent.remove_if([](const Pilot& pilot) { return pilot.leaves <= Clock::now(); });
    }

    void leave(Pilots::iterator pilot)
    {
        peer::StreamEnd& stream = pilot->client.stream;
        const std::string frame = messages::steeringFrame(pilot->client.qport(), pilot->course);
        switch (random() % 4) {
            case 0:
                count(*pilot, "that fell silent");
                pilot->leaves = Clock::now() + silenceKept;
                silent.splice(silent.end(), present, pilot);
                return;
            case 1:
                count(*pilot, "that left by a reset");
                stream.reset();
                break;
            case 2:
                count(*pilot, "that left within a frame");
                stream.send(frame.substr(0, frame.size() / 2));
                break;
            default:
                count(*pilot, "that left between frames");
        }
        present.erase(pilot);  // closes
    }

    void count(const Pilot& pilot, const std::string& end)
    {
        ++counted[end];
        counted["welcomed"] += pilot.client.id() == 0 ? 0U : 1U;
        for (const auto& [fault, number] : pilot.client.checker.faults(longestTransit)) {
            faults[fault] += number;
        }
    }
};

bool run(std::uint16_t port, unsigned clients, std::chrono::seconds measured)
{
    boost::asio::io_context io;
    Pilots pilots;
    while (pilots.size() < clients) {
        pilots.emplace_back(io, port, static_cast<unsigned>(pilots.size()));
    }
    play(pilots, warmUp);
    for (Pilot& pilot : pilots) {
        pilot.client.checker.traffic = {};
    }
    const Clock::time_point start = Clock::now();
    play(pilots, measured);
    return report(pilots, std::chrono::duration<double>(Clock::now() - start).count());
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        CLI::App app("plays many clients against a server on 127.0.0.1", "vantor-swarm");
        std::uint16_t port = 21042;
        unsigned clients = 64;
        unsigned seconds = 60;
        unsigned stay = 0;
        unsigned seed = 1;
        const auto add = [&app](const char* name, auto& value, unsigned largest, const char* text) {
            app.add_option(name, value, text)
                ->capture_default_str()
                ->transform(commandline::wholeNumber())
                ->check(CLI::Range(1U, largest));
        };
        add("--port", port, 65535, "of the server");
        add("--clients", clients, 1000, "how many");
        add("--seconds", seconds, 86'400, "to measure, after 3 to warm up");
        add("--come-and-go", stay, 86'400,
            "mean seconds after which each leaves and another joins; 0: all stay");
        add("--seed", seed, std::numeric_limits<unsigned>::max(), "of those that come and go");
        if (const auto status = commandline::parse(app, argc, argv)) {
            return *status;
        }
        bool isGood = false;
        if (stay == 0) {
            isGood = run(port, clients, std::chrono::seconds(seconds));
        } else {
            ComersAndGoers crowd(port, clients, std::chrono::seconds(stay), seed);
            crowd.run(std::chrono::seconds(seconds));
            isGood = crowd.report();
        }
        if (!std::cout.flush()) {
            throw std::runtime_error("cannot write the report");
        }
        return isGood ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vantor-swarm: %s\n", printable(error.what()).c_str());
        return 1;
    }
}
