#pragma once

#include "network/MessageSerializer.h"
#include "network/Messages.h"
#include "network/PacketReceiver.h"
#include "network/Timer.h"
#include "scene/Player.h"
#include "scene/SceneGraph.h"
#include "scene/SceneObjectFactory.h"
#include "scene/TestCube.h"

#include <algorithm>
#include <set>

/// A client without a window and a network. The test delivers the bytes of its TCP connection and runs its
/// frames. It uses the process's only scene, so one Arena at a time.
class Arena
{
public:
    Arena() { reset(); }

    /// Starts again with the two carriers. Receives the pieces of a stream, each followed by so many frames.
    /// Then an honest ship comes, on a new connection, and leaves. Returns what went wrong, or "".
    std::string play(const std::vector<std::string>& pieces, int framesBetween = 1)
    {
        reset();
        for (const std::string& piece : pieces) {
            receive(piece, framesBetween);
            if (!isConsistent()) {
                return "the scene is out of order";
            }
        }
        leftover.clear();
        return faultOfScene();
    }

    /// Lets an honest ship come and leave, with room for a frame of the game. Returns what went wrong, or "".
    std::string faultOfScene()
    {
        messages::ShipState ship;
        ship.position = {1, 2, 3};
        for (ship.id = 424242; find(ship.id) != nullptr; ++ship.id) {
        }
        receive(messages::infoFrame(ship), 2);
        const auto* shown = dynamic_cast<Player*>(find(ship.id));
        if (shown == nullptr || !(shown->position == ship.position)) {
            return "an honest ship is not shown";
        }
        receive(messages::destroyFrame(ship.id));
        return find(ship.id) == nullptr && isConsistent() ? "" : "an honest ship does not leave";
    }

    void reset()
    {
        delete SceneGraph::instance;
        SceneGraph::instance = receiver.sceneGraph = new SceneGraph;
        for (const bool blueTeam : {false, true}) {
            SceneGraph::instance->attach(new TestCube(0, true, blueTeam));
        }
        SceneObjectFactory::getInstance()->init(0);
        Timer::isSynced = false;
        leftover.clear();
    }

    /// Each frame takes 1/60 second.
    void receive(const std::string& bytes, int frames = 1)
    {
        for (const auto& event :
             MessageSerializer::deserializeMessageArray(bytes.data(), bytes.size(), &leftover)) {
            receiver.addTCPNetworkEvent(event);
        }
        for (int n = 0; n < frames; ++n) {
            receiver.dispatchPackets();
            SceneGraph::instance->update(1.0F / 60.0F);
            SceneGraph::instance->applyRemoveList();
        }
    }

    boost::asio::io_service service;
    PacketReceiver receiver{&service, nullptr, SceneGraph::getInstance(), 3600};  // the watchdog never runs

private:
    static Transform* find(std::uint64_t id)
    {
        return SceneGraph::instance->getOBjectById(static_cast<long long>(id));
    }
    // Whether the type lists hold each object of the scene's tree once, and the tables hold no other object.
    static bool isConsistent()
    {
        const SceneGraph& graph = *SceneGraph::instance;
        std::multiset<const Transform*> listed;
        for (const auto& [type, objects] : graph.typeLists) {
            listed.insert(objects.begin(), objects.end());
        }
        const std::multiset<const Transform*> tree(graph.children.begin(), graph.children.end());
        const auto isInTree = [&](const auto& entry) { return tree.count(entry.second) == 1; };
        const auto areInTree = [&](const auto& t) { return std::all_of(t.begin(), t.end(), isInTree); };
        return listed == tree && graph.removeList.empty() && areInTree(graph.idTable) &&
               areInTree(graph.udpTable) && areInTree(graph.tcpTable);
    }

    std::string leftover;
};
