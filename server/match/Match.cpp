#include "server/match/Match.h"

#include "server/match/Hull.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cstddef>
#include <iterator>
#include <utility>

namespace practice {

namespace {

static_assert(FLT_EVAL_METHOD == 0, "floats are not computed as floats: build with -msse2 -mfpmath=sse");

constexpr std::size_t mostDeparted = 64;  ///< ships in a result that have left

MatchResult::Standing standingOf(const Ship& ship)
{
    return {ship.name, ship.team, ship.score, ship.deaths};
}

constexpr std::array botNames = {"Altair", "Bellatrix", "Capella", "Deneb",  "Electra", "Fomalhaut",
                                 "Gemma",  "Hadar",     "Izar",    "Kochab", "Lesath",  "Mira",
                                 "Naos",   "Procyon",   "Rigel",   "Spica"};

std::string botName(std::size_t index)
{
    const std::string name = botNames[index % botNames.size()];
    const std::size_t round = index / botNames.size();
    return round == 0 ? name : name + ' ' + std::to_string(round + 1);
}

ShipView viewOf(const Ship& ship)
{
    return {ship.id,          ship.team,       ship.human,     ship.position,   ship.velocity,
            ship.orientation, ship.sinceSpawn, ship.firstLife, ship.firedInLife};
}

}  // namespace

Match::Match(const MatchSettings& settings_, const Rules& rules_)
    : settings(settings_), rules(rules_), random(settings_.seed), startPoints(settings_.spawn)
{
}

ObjectId Match::addHuman()
{
    ++humansJoined;
    const Team team = smallerTeam();
    return addShip(team, true, "Pilot " + std::to_string(humansJoined), team);
}

/// Three of eight bots defend their own carrier. More attack: they die more often and have a long way back.
ObjectId Match::addBot()
{
    const std::size_t index = bots.size();
    const Team team = index % 2 == 0 ? Team::blue : Team::red;
    const bool isDefender = index / 2 % 8 % 3 == 0;
    const Team carrier = isDefender == (team == Team::blue) ? Team::blue : Team::red;
    const ObjectId id = addShip(team, false, botName(index), carrier);
    bots.emplace_back(id, drawSkill(settings.difficulty, random));
    return id;
}

ObjectId Match::addShip(Team team, bool human, const std::string& name, Team fightsAt)
{
    Ship& ship = ships.emplace_back();
    ship.id = nextId++;
    ship.name = name;
    ship.team = team;
    ship.human = human;
    ship.fightsAt = fightsAt;
    if (intermissionLeft <= 0.0F) {
        spawn(ship);
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
void Match::spawn(Ship& ship)
{
    ship.position = startPoints.next(ship, ships, random);
    ship.velocity = Vector3();
    ship.borderGrip = 0.0F;
    // A human's view does not follow the ship, so the ship starts where the human already looks.
    ship.orientation = ship.human ? ship.input.orientation : lookAlong(-ship.position);
    ship.health = rules.fullHealth;
    ship.sinceSpawn = 0.0F;
    ship.firedInLife = false;
    ship.alive = true;
    notify(&MatchObserver::shipAppeared, ship);
}

void Match::removeShip(ObjectId id)
{
    const auto found = std::find_if(ships.begin(), ships.end(), [id](const Ship& s) { return s.id == id; });
    if (found == ships.end()) {
        return;
    }
    if (found->alive) {
        notify(&MatchObserver::shipVanished, *found);
    }
    departed.push_back(standingOf(*found));
    if (departed.size() > mostDeparted) {
        departed.pop_front();
    }
    ships.erase(found);
    bots.erase(std::remove_if(bots.begin(), bots.end(), [id](const Bot& b) { return b.shipId() == id; }),
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
    ++steps;  // first, so that events carry the time of the state after the step
    steerBots();
    flyShips();
    moveShots();
    fireShots();
    if (isOver()) {
        endMatch();
    }
    updateTimers();
}

void Match::steerBots()
{
    std::vector<ShipView> views;
    views.reserve(ships.size());
    for (const Ship& ship : ships) {
        if (ship.alive) {
            views.push_back(viewOf(ship));
        }
    }
    const BotView view{views, rules, static_cast<float>(steps) * stepTime, stepTime};
    for (Bot& bot : bots) {
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
        const auto hull = hullContact(shot.position, shot.velocity * stepTime);
        if (Ship* victim = firstHit(shot, ships, rules, settings.friendlyFire, stepTime, hull)) {
            applyHit(shot, *victim);
            continue;
        }
        shot.position += shot.velocity * stepTime;
        shot.age += stepTime;
        if (!hull && shot.age < rules.shotRange / rules.shotSpeed) {
            flying.push_back(shot);
        } else {
            notify(&MatchObserver::shotEnded, shot);
        }
    }
    shots = std::move(flying);
}

void Match::applyHit(const Shot& shot, Ship& victim)
{
    notify(&MatchObserver::shotEnded, shot);
    victim.health -= rules.shotDamage;
    if (victim.health <= 0.0F) {
        kill(victim, shot);
    } else {
        notify(&MatchObserver::shipDataChanged, victim);
    }
}

/// Credits the kill to the shooter, who may be dead or gone, and to the shot's team. Killing a friend costs
/// both a point.
void Match::kill(Ship& victim, const Shot& shot)
{
    victim.health = 0.0F;
    victim.alive = false;
    victim.firstLife = false;
    victim.respawnIn = rules.respawnTime;
    ++victim.deaths;
    const int credit = victim.team == shot.team ? -1 : 1;
    (shot.team == Team::blue ? blueScore : redScore) += credit;
    if (Ship* shooter = editShip(shot.shooter)) {
        shooter->score += credit;
    }
    notify(&MatchObserver::shipExploded, victim);
    notify(&MatchObserver::shipVanished, victim);
    announceScores(shot.shooter);
}

/// The data of any living ship carries the teams' scores. The preferred ship's own score has changed too.
void Match::announceScores(ObjectId preferred)
{
    const Ship* announced = findShip(preferred);
    if (announced == nullptr || !announced->alive) {
        const auto alive = std::find_if(ships.begin(), ships.end(), [](const Ship& s) { return s.alive; });
        announced = alive == ships.end() ? nullptr : &*alive;
    }
    if (announced != nullptr) {
        notify(&MatchObserver::shipDataChanged, *announced);
    }
}

void Match::fireShots()
{
    for (Ship& ship : ships) {
        ship.reload = std::max(0.0F, ship.reload - stepTime);
        if (ship.alive && ship.reload <= 0.0F && (ship.input.controls & control::fire) != 0) {
            ship.reload = rules.reloadTime;
            ship.firedInLife = true;
            shots.push_back(shotFrom(ship, nextId++, rules));
            notify(&MatchObserver::shotFired, shots.back());
        }
    }
}

void Match::updateTimers()
{
    if (intermissionLeft > 0.0F) {
        intermissionLeft -= stepTime;
        if (intermissionLeft <= 0.0F) {
            startNextMatch();
        }
        return;
    }
    for (Ship& ship : ships) {
        ship.sinceSpawn += stepTime;
        if (ship.alive) {
            continue;
        }
        ship.respawnIn -= stepTime;
        if (ship.respawnIn <= 0.0F) {
            spawn(ship);
        }
    }
}

bool Match::isOver() const
{
    if (intermissionLeft > 0.0F) {
        return false;
    }
    const bool scored = settings.scoreLimit > 0 && std::max(redScore, blueScore) >= settings.scoreLimit;
    const std::uint64_t timeLimit = static_cast<std::uint64_t>(settings.timeLimit) * stepsPerSecond;
    return scored || (timeLimit > 0 && steps - startStep >= timeLimit);
}

/// Removes all ships and shots from the world. The scores stay until the next match.
void Match::endMatch()
{
    if (intermissionLeft > 0.0F || steps == startStep) {
        return;
    }
    result = makeResult();
    for (const Shot& shot : shots) {
        notify(&MatchObserver::shotEnded, shot);
    }
    shots.clear();
    for (Ship& ship : ships) {
        if (ship.alive) {
            ship.alive = false;
            notify(&MatchObserver::shipVanished, ship);
        }
    }
    intermissionLeft = rules.intermission;
}

MatchResult Match::makeResult() const
{
    MatchResult end{matchNumber, isOver(),  static_cast<unsigned>((steps - startStep) / stepsPerSecond),
                    redScore,    blueScore, {}};
    std::transform(ships.begin(), ships.end(), std::back_inserter(end.standings), standingOf);
    end.standings.insert(end.standings.end(), departed.begin(), departed.end());
    std::stable_sort(end.standings.begin(), end.standings.end(), [](const auto& a, const auto& b) {
        return a.kills != b.kills ? a.kills > b.kills : a.deaths < b.deaths;
    });
    return end;
}

void Match::startNextMatch()
{
    ++matchNumber;
    startStep = steps;
    redScore = 0;
    blueScore = 0;
    departed.clear();
    for (Ship& ship : ships) {  // all of them before the first spawns, because its data carries all scores
        ship.score = 0;
        ship.deaths = 0;
        ship.firstLife = ship.firstLife && ship.sinceSpawn == 0.0F;  // it joined in the intermission
    }
    for (Ship& ship : ships) {
        spawn(ship);
    }
}

std::optional<MatchResult> Match::takeResult()
{
    return std::exchange(result, std::nullopt);
}

}  // namespace practice
