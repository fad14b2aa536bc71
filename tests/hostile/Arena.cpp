#include "tests/hostile/Arena.h"

#include "network/MessageSerializer.h"
#include "network/Timer.h"
#include "scene/General.h"
#include "scene/SceneGraph.h"
#include "scene/SceneObjectFactory.h"
#include "scene/TestCube.h"

#include <algorithm>
#include <set>

namespace {

constexpr unsigned int anHour = 3600;  // seconds: no watchdog in here
constexpr float frameTime = 1.0F / 60.0F;

void clearScene()
{
    SceneGraph& graph = *SceneGraph::getInstance();
    for (Transform* object : graph.children) {
        graph.addToRemoveList(object);
    }
    graph.applyRemoveList();
}

}  // namespace

Arena::Arena() : receiver(&service, nullptr, SceneGraph::getInstance(), anHour)
{
    reset();
}

Arena::~Arena()
{
    clearScene();
}

void Arena::receive(const std::string& bytes)
{
    for (const auto& event :
         MessageSerializer::deserializeMessageArray(bytes.data(), bytes.size(), &leftover)) {
        receiver.addTCPNetworkEvent(event);
    }
}

void Arena::runFrames(int count)
{
    for (int n = 0; n < count; ++n) {
        receiver.dispatchPackets();
        SceneGraph::getInstance()->update(frameTime);
        SceneGraph::getInstance()->applyRemoveList();
    }
}

void Arena::reset()
{
    clearScene();
    leftover.clear();
    Timer::isSynced = false;
    SceneObjectFactory::getInstance()->init(0);
    placeCarriers();
}

void Arena::placeCarriers()
{
    for (const bool blueTeam : {false, true}) {
        auto* carrier = new TestCube(0, true, blueTeam);
        carrier->translate(blueTeam ? General::getInstance()->blueStart()
                                    : General::getInstance()->redStart());
        SceneGraph::getInstance()->attach(carrier);
    }
}

bool Arena::isConsistent()
{
    const SceneGraph& graph = *SceneGraph::getInstance();
    const std::set<const Transform*> tree(graph.children.begin(), graph.children.end());
    const auto isInTree = [&](const Transform* object) { return tree.count(object) == 1; };
    std::size_t listed = 0;
    for (const auto& [type, objects] : graph.typeLists) {
        listed += objects.size();
        const auto belongs = [&, wanted = type](const Transform* t) {
            return isInTree(t) && t->type == wanted;
        };
        if (!std::all_of(objects.begin(), objects.end(), belongs)) {
            return false;
        }
    }
    const auto isKnown = [&](const auto& entry) { return isInTree(entry.second); };
    return tree.size() == graph.children.size() && listed == tree.size() && graph.removeList.empty() &&
           std::all_of(graph.idTable.begin(), graph.idTable.end(), isKnown) &&
           std::all_of(graph.udpTable.begin(), graph.udpTable.end(), isKnown) &&
           std::all_of(graph.tcpTable.begin(), graph.tcpTable.end(), isKnown);
}
