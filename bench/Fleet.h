#pragma once

#include "scene/Player.h"
#include "scene/SceneGraph.h"

#include <cstddef>
#include <memory>
#include <vector>

/// A scene of its own, in the place of the process's one, with `size` ships that have three server states
/// each and are turning and gathering speed. It needs neither files nor a display; the ships stand in a grid
/// before a viewer at the origin who looks along -z.
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
