#pragma once

/// Asks OpenGL to work on a thread of its own for the current context. Returns false if it refuses; the
/// program then runs without. The implementation depends on the platform.
bool enableMultithreadedGL();
