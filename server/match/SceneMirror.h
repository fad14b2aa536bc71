#pragma once

#include "scene/SceneGraphType.h"
#include "server/match/MatchObserver.h"

#include <set>

namespace practice {

/// Keeps the process's scene as full as a match: an object of the right type for each living ship and each
/// shot in flight, so that the measurement log counts them and a grid of starting points fits them.
///
/// The objects have no pose and no volume, and nothing draws them.
class SceneMirror : public MatchObserver
{
public:
    SceneMirror() = default;
    SceneMirror(const SceneMirror&) = delete;
    SceneMirror& operator=(const SceneMirror&) = delete;
    /// Takes what is left of the match out of the scene.
    ~SceneMirror() override;

    /// To be called after every step: what has vanished leaves the scene only now.
    static void apply();

    void shipAppeared(const Ship& ship) override;
    void shipVanished(const Ship& ship) override;
    void shipDataChanged(const Ship& /*ship*/) override {}
    void shotFired(const Shot& shot) override;
    void shotEnded(const Shot& shot) override;
    void shipExploded(const Ship& /*ship*/) override {}

private:
    std::set<ObjectId> shown;

    void show(ObjectId id, SceneGraphType type);
    void hide(ObjectId id);
};

}  // namespace practice
