#pragma once

class Player;

namespace Vantor {
class PlayerData;
}

/// Copies what messages carry into the scene.
class ProtobufConversion
{
public:
    /// Copies health, team, name and score where present; what is absent leaves the player's values alone.
    /// Main thread only. Team totals belong to no player and are not copied.
    static void playerData(Player* player, const Vantor::PlayerData* data);
};
