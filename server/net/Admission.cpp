#include "server/net/Admission.h"

#include "server/match/Match.h"

#include <algorithm>
#include <utility>

namespace practice {

namespace {

constexpr std::uint64_t second = Match::stepsPerSecond;
constexpr unsigned votesNeeded = 10;  ///< within a second, in which a game sends 20 datagrams

}  // namespace

std::string Admission::reasonToTurnAway(const Host& host) const
{
    if (clients.size() >= places) {
        return "all " + std::to_string(places) + " places are taken";
    }
    const auto isFromHost = [&host](const auto& client) { return client.second.host == host; };
    const auto taken = static_cast<std::size_t>(std::count_if(clients.begin(), clients.end(), isFromHost));
    const bool isFull = placesPerHost != 0 && !host.is_loopback() && taken >= placesPerHost;
    return isFull ? "one address gets " + std::to_string(placesPerHost) + " places" : "";
}

bool Admission::Client::isOpenTo(const Endpoint& sender, std::uint64_t step) const
{
    return sender.address() == host && (endpoint == Endpoint() || step - heardAt >= second);
}

/// A vote for another sender cancels a vote for the candidate. So single lucky guesses do not delay the
/// player.
bool Admission::Client::isConvincedBy(const Endpoint& sender, std::uint64_t step)
{
    if (ration.spend(1, step)) {
        return true;
    }
    if (votes == 0 || step - candidateSince >= second) {
        candidate = sender;
        candidateSince = step;
        votes = 0;
    }
    votes = sender == candidate ? votes + 1 : votes - 1;
    return votes == votesNeeded;
}

Admission::Verdict Admission::judge(std::uint16_t qport, const Endpoint& sender, std::uint64_t step)
{
    const auto meant = clients.find(qport);
    if (meant != clients.end()) {
        Client& client = meant->second;
        if (client.endpoint == sender ||
            (client.isOpenTo(sender, step) && client.isConvincedBy(sender, step))) {
            const Endpoint former = std::exchange(client.endpoint, sender);
            client.heardAt = step;
            return former == sender || former == Endpoint() ? Verdict::believed : Verdict::moved;
        }
    }
    bool isGuess = false;
    for (auto& [other, client] : clients) {
        if (client.isOpenTo(sender, step)) {
            client.ration.spend(1, step);
            isGuess = true;
        }
    }
    return isGuess ? Verdict::guess : Verdict::ignored;
}

}  // namespace practice
