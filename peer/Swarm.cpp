#include "peer/Swarm.h"

#include <algorithm>
#include <iomanip>
#include <limits>
#include <numeric>
#include <ostream>

namespace peer {

namespace {

/// A second; 20 but for the snapshots that the ends of the measured time cut off.
constexpr double leastSnapshotRate = 19.5;

std::ostream& row(std::ostream& out, const char* name)
{
    return out << std::left << std::setw(44) << name << std::right;
}

}  // namespace

Swarm::Swarm(const boost::asio::ip::tcp::endpoint& server, unsigned number)
{
    for (unsigned i = 0; i < number; ++i) {
        clients.push_back(std::make_unique<SwarmClient>(io, server, i));
    }
}

void Swarm::play(std::chrono::seconds warmUp, std::chrono::seconds measured)
{
    io.run_for(warmUp);
    for (const auto& client : clients) {
        client->witness.beginMeasuring();
    }
    const Clock::time_point begin = Clock::now();
    io.run_for(measured);
    seconds = std::chrono::duration<double>(Clock::now() - begin).count();
}

/// Snapshots a second of each client, in ascending order.
std::vector<double> Swarm::snapshotRates() const
{
    std::vector<double> rates;
    for (const auto& client : clients) {
        rates.push_back(static_cast<double>(client->witness.snapshots().size()) / seconds);
    }
    std::sort(rates.begin(), rates.end());
    return rates;
}

/// Milliseconds that any client waited from one snapshot to the next.
double Swarm::longestGap() const
{
    double longest = 0.0;
    for (const auto& client : clients) {
        const auto& snapshots = client->witness.snapshots();
        for (auto next = snapshots.begin(), last = next; next != snapshots.end(); last = next++) {
            const std::chrono::duration<double, std::milli> gap = next->second.at - last->second.at;
            longest = std::max(longest, gap.count());
        }
    }
    return longest;
}

/// All clients are sent the same datagrams, so what one has heard and another has not was lost. The first and
/// the last snapshots may be cut by the ends of the measured time.
void Swarm::reportLoss(std::ostream& out) const
{
    std::map<std::uint32_t, unsigned> sent;
    std::uint32_t first = 0;
    std::uint32_t last = std::numeric_limits<std::uint32_t>::max();
    for (const auto& client : clients) {
        const auto& snapshots = client->witness.snapshots();
        for (const auto& [timestamp, snapshot] : snapshots) {
            sent[timestamp] = std::max(sent[timestamp], snapshot.datagrams);
        }
        first = std::max(first, snapshots.empty() ? last : snapshots.begin()->first);
        last = std::min(last, snapshots.empty() ? 0 : snapshots.rbegin()->first);
    }
    std::uint64_t heard = 0;
    std::uint64_t all = 0;
    for (auto it = sent.upper_bound(first); it != sent.end() && it->first < last; ++it) {
        all += it->second * clients.size();
        for (const auto& client : clients) {
            const auto found = client->witness.snapshots().find(it->first);
            heard += found == client->witness.snapshots().end() ? 0 : found->second.datagrams;
        }
    }
    row(out, "lost datagrams") << all - heard << " of " << all << '\n';
}

bool Swarm::reportFaults(std::ostream& out) const
{
    std::map<std::string, std::uint64_t> faults;
    for (const auto& client : clients) {
        for (const auto& [fault, count] : client->witness.faults()) {
            faults[fault] += count;
        }
        if (!client->brokenOff.empty()) {
            ++faults["connection broken off: " + client->brokenOff];
        }
    }
    for (const auto& [fault, count] : faults) {
        out << "FAULT: " << fault << " (" << count << " times)\n";
    }
    return faults.empty();
}

bool Swarm::report(std::ostream& out) const
{
    std::uint64_t udp = 0;
    std::uint64_t tcp = 0;
    for (const auto& client : clients) {
        udp += client->witness.datagramBytes();
        tcp += client->witness.streamBytes();
    }
    const double perClient = 1.0 / (seconds * 1000.0 * static_cast<double>(clients.size()));
    const std::vector<double> rates = snapshotRates();
    out << std::fixed << std::setprecision(1);
    row(out, "clients, seconds measured") << clients.size() << ", " << seconds << '\n';
    row(out, "snapshots a second: least, median") << rates.front() << ", " << rates[rates.size() / 2] << '\n';
    row(out, "longest wait for a snapshot") << longestGap() << " ms\n";
    row(out, "to one client: datagrams, TCP")
        << static_cast<double>(udp) * perClient << ", " << static_cast<double>(tcp) * perClient << " kB/s\n";
    reportLoss(out);
    return reportFaults(out) && rates.front() >= leastSnapshotRate;
}

}  // namespace peer
