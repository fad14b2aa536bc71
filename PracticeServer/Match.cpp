#include "PracticeServer/Match.h"

#include "PracticeServer/SpawnPlan.h"
#include "PracticeServer/StateHash.h"
#include "PracticeServer/Steering.h"

#include <algorithm>
#include <array>
#include <cstddef>

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

Match::Match(std::uint32_t seed, MatchObserver* observer_, const Rules& rules_)
    : rules(rules_), random(seed), observer(observer_)
{
}

ObjectId Match::addHuman()
{
    ++humansSeen;
    return addShip(smallerTeam(), true, "Pilot " + std::to_string(humansSeen));
}

ObjectId Match::addBot()
{
    const Team team = bots.size() % 2 == 0 ? Team::blue : Team::red;
    const ObjectId id = addShip(team, false, botName(bots.size()));
    bots.emplace_back(id);
    return id;
}

ObjectId Match::addShip(Team team, bool human, const std::string& name)
{
    Ship& ship = ships.emplace_back();
    ship.id = nextId++;
    ship.name = name;
    ship.team = team;
    ship.human = human;
    enter(ship);
    ship.grace = human ? rules.joinGrace : 0.0F;
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
    ship.position = spawnPoint(ship, ships, random);
    ship.velocity = Vector3();
    // A human's view does not follow the ship, so the ship starts where the human already looks.
    ship.orientation = ship.human ? ship.input.orientation : lookAlong(-ship.position);
    ship.health = rules.fullHealth;
    ship.reload = 0.0F;
    ship.grace = rules.respawnGrace;
    ship.alive = true;
    if (observer != nullptr) {
        observer->shipAppeared(ship);
    }
}

void Match::removeShip(ObjectId id)
{
    const auto found = std::find_if(ships.begin(), ships.end(), [id](const Ship& s) { return s.id == id; });
    if (found == ships.end()) {
        return;
    }
    if (found->alive && observer != nullptr) {
        observer->shipVanished(*found);
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
    const auto found = std::find_if(ships.begin(), ships.end(), [id](const Ship& s) { return s.id == id; });
    return found == ships.end() ? nullptr : &*found;
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
    ++steps;  // first, so that what the observer hears carries the time of the state it sees
    steerBots();
    flyShips();
    moveShots();
    fireShots();
    passTime();
}

void Match::steerBots()
{
    const BotView view{ships, bots, rules, stepTime};
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
        } else if (observer != nullptr) {
            observer->shotEnded(shot);
        }
    }
    shots = std::move(flying);
}

/// The living enemy whom the shot meets first in this step; ships have already moved, the shot has not.
Ship* Match::firstHit(const Shot& shot)
{
    Ship* hit = nullptr;
    float earliest = 2.0F;  // later than any contact
    for (Ship& ship : ships) {
        if (!ship.alive || ship.team == shot.team || ship.id == shot.shooter) {
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

void Match::strike(const Shot& shot, Ship& victim)
{
    if (observer != nullptr) {
        observer->shotEnded(shot);
    }
    victim.health -= rules.shotDamage;
    if (victim.health <= 0.0F) {
        kill(victim, shot.shooter);
    } else if (observer != nullptr) {
        observer->shipDataChanged(victim);
    }
}

void Match::kill(Ship& victim, ObjectId killer)
{
    victim.health = 0.0F;
    victim.alive = false;
    victim.respawnIn = rules.respawnTime;
    int& score = victim.team == Team::blue ? redScore : blueScore;
    ++score;
    if (observer != nullptr) {
        observer->shipExploded(victim);
        observer->shipVanished(victim);
    }
    credit(killer);
}

/// Gives the kill to its shooter. The new team score travels with any ship that is shown; the shooter, who
/// may be dead or gone by now, is only the first choice.
void Match::credit(ObjectId killer)
{
    Ship* shown = editShip(killer);
    if (shown != nullptr) {
        ++shown->score;
    }
    if (shown == nullptr || !shown->alive) {
        const auto alive = std::find_if(ships.begin(), ships.end(), [](const Ship& s) { return s.alive; });
        shown = alive == ships.end() ? nullptr : &*alive;
    }
    if (shown != nullptr && observer != nullptr) {
        observer->shipDataChanged(*shown);
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
    ship.grace = 0.0F;  // who fights is fair game
    if (observer != nullptr) {
        observer->shotFired(shots.back());
    }
}

void Match::passTime()
{
    for (Ship& ship : ships) {
        ship.grace = std::max(0.0F, ship.grace - stepTime);
        if (ship.alive) {
            continue;
        }
        ship.respawnIn -= stepTime;
        if (ship.respawnIn <= 0.0F) {
            enter(ship);
        }
    }
}

std::uint64_t Match::stateHash() const
{
    StateHash hash;
    hash.add(steps);
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
