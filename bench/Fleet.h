#pragma once

#include "scene/Player.h"
#include "scene/SceneGraph.h"

#include <cstddef>
#include <memory>
#include <vector>

/// A scene with `size` ships, which replaces the process's scene. Each ship has three server states; it turns
/// and gathers speed. The scene needs neither files nor a display. The ships stand in a grid in front of a
/// viewer at the origin who looks along -z.
class Fleet
{
public:
    explicit Fleet(std::size_t size);
    ~Fleet();
    Fleet(const Fleet&) = delete;
    Fleet& operator=(const Fleet&) = delete;

    /// Lets the ships' drawn poses catch up with their server states.
    void settle();

    std::unique_ptr<SceneGraph> scene;
    std::vector<Player*> ships;  ///< the scene's

private:
    SceneGraph* replaced;
};
