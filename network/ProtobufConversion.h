#pragma once

class Player;

namespace Vantor {
class PlayerData;
}

/// Copies message data into the scene.
class ProtobufConversion
{
public:
    /// Copies health, team, name and score, each only if present. Team totals belong to no player and are not
    /// copied. Main thread only.
    static void playerData(Player* player, const Vantor::PlayerData* data);
};
