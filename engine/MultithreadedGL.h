#pragma once

/// Asks the OpenGL implementation to do its work on a thread of its own, for the current context. False where
/// it refuses; the program runs without it. Which file implements this depends on the platform.
bool enableMultithreadedGL();
