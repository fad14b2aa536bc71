#include "server/match/Match.h"

#include "server/match/ShipView.h"
#include "server/match/StateHash.h"
#include "server/match/Steering.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace practice {

namespace {

constexpr std::array botNames = {"Altair", "Bellatrix", "Capella", "Deneb",  "Electra", "Fomalhaut",
                                 "Gemma",  "Hadar",     "Izar",    "Kochab", "Lesath",  "Mira",
                                 "Naos",   "Procyon",   "Rigel",   "Spica"};

std::string botName(std::size_t index)
{
    const std::string name = botNames[index % botNames.size()];
    const std::size_t round = index / botNames.size();
    return round == 0 ? name : name + ' ' + std::to_string(round + 1);
}

}  // namespace

Match::Match(const MatchSettings& settings_, const Rules& rules_)
    : settings(settings_), rules(rules_), random(settings_.seed), startPoints(settings_.spawn)
{
}

ObjectId Match::addHuman()
{
    ++humansSeen;
    return addShip(smallerTeam(), true, "Pilot " + std::to_string(humansSeen));
}

/// Raiders are away more often, on their way back from death; so there are more of them.
ObjectId Match::addBot()
{
    const std::size_t index = bots.size();
    const Team team = index % 2 == 0 ? Team::blue : Team::red;
    const auto role = index / 2 % 8 % 3 == 0 ? BotPilot::Role::guard : BotPilot::Role::raider;
    const ObjectId id = addShip(team, false, botName(index));
    bots.emplace_back(id, role, drawSkill(settings.difficulty, random));
    return id;
}

ObjectId Match::addShip(Team team, bool human, const std::string& name)
{
    Ship& ship = ships.emplace_back();
    ship.id = nextId++;
    ship.name = name;
    ship.team = team;
    ship.human = human;
    ship.respawnIn = restLeft;
    if (restLeft <= 0.0F) {
        enter(ship);
    }
    return ship.id;
}

Team Match::smallerTeam() const
{
    const auto blue =
        std::count_if(ships.begin(), ships.end(), [](const Ship& s) { return s.team == Team::blue; });
    return blue * 2 <= static_cast<std::ptrdiff_t>(ships.size()) ? Team::blue : Team::red;
}

/// Puts a ship that is not alive into the world, at rest and whole.
void Match::enter(Ship& ship)
{
    ship.position = clearPlace(startPoints.next(ship.team, random), ships);
    ship.velocity = Vector3();
    // A human's view does not follow the ship, so the ship starts where the human already looks.
    ship.orientation = ship.human ? ship.input.orientation : lookAlong(-ship.position);
    ship.health = rules.fullHealth;
    ship.reload = 0.0F;
    ship.shownFor = 0.0F;
    ship.fired = false;
    ship.alive = true;
    tell([&](MatchObserver& observer) { observer.shipAppeared(ship); });
}

void Match::removeShip(ObjectId id)
{
    const auto found = std::find_if(ships.begin(), ships.end(), [id](const Ship& s) { return s.id == id; });
    if (found == ships.end()) {
        return;
    }
    if (found->alive) {
        tell([&](MatchObserver& observer) { observer.shipVanished(*found); });
    }
    ships.erase(found);
    bots.erase(std::remove_if(bots.begin(), bots.end(), [id](const BotPilot& b) { return b.shipId() == id; }),
               bots.end());
}

const Ship* Match::findShip(ObjectId id) const
{
    const auto found = std::find_if(ships.begin(), ships.end(), [id](const Ship& s) { return s.id == id; });
    return found == ships.end() ? nullptr : &*found;
}

Ship* Match::editShip(ObjectId id)
{
    return const_cast<Ship*>(findShip(id));
}

void Match::setInput(ObjectId id, const ShipInput& input)
{
    if (Ship* ship = editShip(id)) {
        ship->input = input;
    }
}

void Match::releaseControls(ObjectId id)
{
    if (Ship* ship = editShip(id)) {
        ship->input.controls = 0;
    }
}

void Match::step()
{
    ++steps;  // first, so that what the observers hear carries the time of the state they see
    steerBots();
    flyShips();
    moveShots();
    fireShots();
    if (isOver()) {
        finish();
    }
    passTime();
}

void Match::steerBots()
{
    shipViews.clear();
    for (const Ship& ship : ships) {
        if (ship.alive) {
            shipViews.push_back(viewOf(ship));
        }
    }
    const BotView view{shipViews, rules, static_cast<float>(steps) * stepTime, stepTime};
    for (BotPilot& bot : bots) {
        Ship* ship = editShip(bot.shipId());
        if (ship != nullptr && ship->alive) {
            ship->input = bot.steer(*ship, view, random);
        }
    }
}

void Match::flyShips()
{
    for (Ship& ship : ships) {
        if (ship.alive) {
            flyShip(ship, rules, stepTime);
        }
    }
}

void Match::moveShots()
{
    std::vector<Shot> flying;
    flying.reserve(shots.size());
    for (Shot& shot : shots) {
        Ship* victim = firstHit(shot);
        if (victim != nullptr) {
            strike(shot, *victim);
            continue;
        }
        shot.position += shot.velocity * stepTime;
        shot.age += stepTime;
        if (shot.age < rules.shotRange / rules.shotSpeed) {
            flying.push_back(shot);
        } else {
            tell([&](MatchObserver& observer) { observer.shotEnded(shot); });
        }
    }
    shots = std::move(flying);
}

/// The ship that the shot meets first in this step; ships have already moved, the shot has not.
Ship* Match::firstHit(const Shot& shot)
{
    Ship* hit = nullptr;
    float earliest = 2.0F;  // later than any contact
    for (Ship& ship : ships) {
        if (!mayHit(shot, ship)) {
            continue;
        }
        const Vector3 shipBefore = ship.position - ship.velocity * stepTime;
        const auto contact = contactTime(shot.position - shipBefore,
                                         (shot.velocity - ship.velocity) * stepTime, rules.hitRadius);
        if (contact && *contact < earliest) {
            earliest = *contact;
            hit = &ship;
        }
    }
    return hit;
}

bool Match::mayHit(const Shot& shot, const Ship& ship) const
{
    return ship.alive && ship.id != shot.shooter && (ship.team != shot.team || settings.friendlyFire);
}

void Match::strike(const Shot& shot, Ship& victim)
{
    tell([&](MatchObserver& observer) { observer.shotEnded(shot); });
    victim.health -= rules.shotDamage;
    if (victim.health <= 0.0F) {
        kill(victim, shot);
    } else {
        tell([&](MatchObserver& observer) { observer.shipDataChanged(victim); });
    }
}

/// The kill counts for the shooter, who may be dead or gone by now, and for the shot's team; against both if
/// the victim was a friend.
void Match::kill(Ship& victim, const Shot& shot)
{
    victim.health = 0.0F;
    victim.alive = false;
    victim.newcomer = false;
    victim.respawnIn = rules.respawnTime;
    ++victim.deaths;
    const int credit = victim.team == shot.team ? -1 : 1;
    scoreOf(shot.team) += credit;
    if (Ship* shooter = editShip(shot.shooter)) {
        shooter->score += credit;
    }
    tell([&](MatchObserver& observer) { observer.shipExploded(victim); });
    tell([&](MatchObserver& observer) { observer.shipVanished(victim); });
    showScores(shot.shooter);
}

/// A team's score travels with any ship that is shown; best with the one whose own score has changed too.
void Match::showScores(ObjectId preferred)
{
    const Ship* shown = findShip(preferred);
    if (shown == nullptr || !shown->alive) {
        const auto alive = std::find_if(ships.begin(), ships.end(), [](const Ship& s) { return s.alive; });
        shown = alive == ships.end() ? nullptr : &*alive;
    }
    if (shown != nullptr) {
        tell([&](MatchObserver& observer) { observer.shipDataChanged(*shown); });
    }
}

void Match::fireShots()
{
    for (Ship& ship : ships) {
        ship.reload = std::max(0.0F, ship.reload - stepTime);
        if (ship.alive && ship.reload <= 0.0F && (ship.input.controls & control::fire) != 0) {
            fireFrom(ship);
        }
    }
}

void Match::fireFrom(Ship& ship)
{
    shots.push_back(shotFrom(ship, nextId++, rules));
    ship.reload = rules.reloadTime;
    ship.fired = true;
    tell([&](MatchObserver& observer) { observer.shotFired(shots.back()); });
}

void Match::passTime()
{
    if (restLeft > 0.0F) {
        restLeft -= stepTime;
        if (restLeft <= 0.0F) {
            beginAnew();
        }
        return;
    }
    for (Ship& ship : ships) {
        ship.shownFor += stepTime;
        if (ship.alive) {
            continue;
        }
        ship.respawnIn -= stepTime;
        if (ship.respawnIn <= 0.0F) {
            enter(ship);
        }
    }
}

// One match after another.

bool Match::isOver() const
{
    if (restLeft > 0.0F) {
        return false;
    }
    const bool scored = settings.scoreLimit > 0 && std::max(redScore, blueScore) >= settings.scoreLimit;
    const std::uint64_t timeLimit = static_cast<std::uint64_t>(settings.timeLimit) * stepsPerSecond;
    return scored || (timeLimit > 0 && steps - beganAt >= timeLimit);
}

/// Takes everything off the field; the scores stay until the next match begins.
void Match::finish()
{
    result = summary();
    for (const Shot& shot : shots) {
        tell([&](MatchObserver& observer) { observer.shotEnded(shot); });
    }
    shots.clear();
    for (Ship& ship : ships) {
        if (ship.alive) {
            ship.alive = false;
            tell([&](MatchObserver& observer) { observer.shipVanished(ship); });
        }
    }
    restLeft = rules.intermission;
}

MatchResult Match::summary() const
{
    MatchResult end{
        matchNumber, static_cast<unsigned>((steps - beganAt) / stepsPerSecond), redScore, blueScore, {}};
    for (const Ship& ship : ships) {
        end.standings.push_back({ship.name, ship.team, ship.score, ship.deaths});
    }
    std::stable_sort(end.standings.begin(), end.standings.end(), [](const auto& a, const auto& b) {
        return a.kills != b.kills ? a.kills > b.kills : a.deaths < b.deaths;
    });
    return end;
}

void Match::beginAnew()
{
    ++matchNumber;
    beganAt = steps;
    redScore = 0;
    blueScore = 0;
    for (Ship& ship : ships) {  // before anyone enters: who does tells everyone all the scores
        ship.score = 0;
        ship.deaths = 0;
        ship.newcomer = false;
    }
    for (Ship& ship : ships) {
        enter(ship);
    }
}

std::optional<MatchResult> Match::takeResult()
{
    return std::exchange(result, std::nullopt);
}

std::uint64_t Match::stateHash() const
{
    StateHash hash;
    hash.add(steps);
    hash.add(matchNumber);
    hash.add(restLeft);
    hash.add(redScore);
    hash.add(blueScore);
    for (const Ship& ship : ships) {
        hash.add(ship);
    }
    for (const Shot& shot : shots) {
        hash.add(shot);
    }
    return hash.value();
}

}  // namespace practice
