#pragma once

#include <cstdint>
#include <string>

/// Joins the server at the port of 127.0.0.1 with the client's own receiver, sender and scene, without a
/// window, and stays until the server hangs up: a line for each ship and shot that the scene then holds, with
/// all that the server has said of it, and one for the scores.
///
/// The scene is the process's one, so one at a time. Throws where the server has not hung up within 30 s.
std::string finalScene(std::uint16_t port);
