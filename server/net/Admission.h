#pragma once

#include "server/net/Limits.h"

#include <boost/asio/ip/udp.hpp>

#include <cstdint>
#include <map>
#include <string>

namespace practice {

/// Decides which client a datagram is from, and whether an address may take another place.
///
/// The qport names the client, and the sender's address confirms it. Datagrams of other senders do a player
/// no harm. Knows neither sockets nor a clock: time is counted in steps of the match.
///
/// A client's port is open until its first datagram. It is open again after a second without one: its network
/// may have given it another port. Then the next datagram from its host with its qport is accepted. Another
/// program on that host could guess the qport, so guesses are rationed. Beyond the ration, a sender must
/// repeat the right qport at a player's pace. To do that by guessing takes 655,360 datagrams a second.
class Admission
{
public:
    using Host = boost::asio::ip::address;
    using Endpoint = boost::asio::ip::udp::endpoint;

    /// A guess is ignored as well: with another qport it might have been accepted. A moved client is accepted
    /// at its new port from now on.
    enum class Verdict : std::uint8_t
    {
        ignored,
        guess,
        believed,
        moved
    };

    /// 0 places for each host: any number.
    Admission(std::size_t places_, std::size_t placesPerHost_)
        : places(places_), placesPerHost(placesPerHost_)
    {
    }

    /// Empty if there is a place for the host. This machine may take all of them.
    std::string reasonToTurnAway(const Host& host) const;
    bool isTaken(std::uint16_t qport) const { return clients.count(qport) != 0; }
    /// The host is that of the client's connection. The qport must be free.
    void add(std::uint16_t qport, const Host& host, std::uint64_t step)
    {
        clients.insert({qport, {host, {guessesPerSecond, guessesAtOnce, step}}});
    }
    void remove(std::uint16_t qport) { clients.erase(qport); }

    /// Judges a datagram that starts with this qport. The cost grows with the number of clients.
    Verdict judge(std::uint16_t qport, const Endpoint& sender, std::uint64_t step);
    /// Where the client's datagrams come from; unspecified before the first. The qport must be taken.
    const Endpoint& endpointOf(std::uint16_t qport) const { return clients.at(qport).endpoint; }

private:
    static constexpr std::uint32_t guessesPerSecond = 1;  ///< of 65,535 qports
    static constexpr std::uint32_t guessesAtOnce = 8;

    struct Client
    {
        Host host;
        RateLimit ration;  ///< of datagrams from other ports of the host while the port is open
        Endpoint endpoint = {};
        std::uint64_t heardAt = 0;         ///< step of the last datagram from there
        Endpoint candidate = {};           ///< repeats the qport, though the ration is spent
        std::uint64_t candidateSince = 0;  ///< step
        unsigned votes = 0;                ///< for the candidate

        bool isOpenTo(const Endpoint& sender, std::uint64_t step) const;
        bool isConvincedBy(const Endpoint& sender, std::uint64_t step);
    };

    std::size_t places;
    std::size_t placesPerHost;
    std::map<std::uint16_t, Client> clients;  ///< by qport
};

}  // namespace practice
