#pragma once

#include "network/PacketReceiver.h"

#include <boost/asio/io_service.hpp>

#include <string>

/// A client without window and network: bytes go in where its TCP connection would deliver them, and frames
/// run by hand. The scene is the process's one, with both carriers in it, as the game places them; one Arena
/// at a time.
class Arena
{
public:
    Arena();
    ~Arena();
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    /// Cuts what came before and `bytes` into messages and queues them for the next frame.
    void receive(const std::string& bytes);
    /// Applies what was received, moves everything, removes what is to be removed; `count` times, 60 a
    /// second.
    void runFrames(int count);
    /// Puts everything back to the start: only the two carriers, no incomplete frame, an unsynchronised
    /// clock.
    void reset();

    /// Whether all that the registries of the scene know is in its tree, once, and the other way round.
    static bool isConsistent();

private:
    void placeCarriers();

    boost::asio::io_service service;
    std::string leftover;

public:
    PacketReceiver receiver;
};
