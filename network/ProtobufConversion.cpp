#include "network/ProtobufConversion.h"

#include "Common/Protobuf/Object/Object.pb.h"
#include "scene/Player.h"

void ProtobufConversion::playerData(Player* player, const Vantor::PlayerData* data)
{
    if (data->has_health()) {
        player->health = data->health();
    }
    if (data->has_blueteam()) {
        player->blueTeam = data->blueteam();
    }
    if (data->has_name()) {
        player->name = data->name();
    }
    if (data->has_score()) {
        player->score = data->score();
    }
}
