#pragma once

#include "network/Timer.h"

extern Timer timer;  ///< measures the frame time

/// One frame: input, messages, simulation, camera, removals, 3D pass, display, swap. Main thread only, with
/// the window open.
void drawGL();
