#include "Common/Protobuf/Object/Object.pb.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// One line a message: "name: label type field = number; ...".
std::vector<std::string> lines(const google::protobuf::FileDescriptor& file)
{
    using Field = google::protobuf::FieldDescriptor;
    std::vector<std::string> result;
    for (int m = 0; m < file.message_type_count(); ++m) {
        std::string line = file.message_type(m)->full_name() + ":";
        for (int f = 0; f < file.message_type(m)->field_count(); ++f) {
            const Field& field = *file.message_type(m)->field(f);
            const std::string type =
                field.message_type() != nullptr ? field.message_type()->name() : field.type_name();
            line += (field.is_required()   ? " "
                     : field.is_optional() ? " ["
                                           : " repeated ") +
                    type + " " + field.name();
            line += "=" + std::to_string(field.number()) + (field.is_required() ? "" : "]");
        }
        result.push_back(line);
    }
    return result;
}

}  // namespace

TEST(Schema, IsTheOneThatServersSpeak)
{
    const std::vector<std::string> expected = {
        "Vantor.Position: float x=1 float y=2 float z=3",
        "Vantor.Orientation: float x=1 float y=2 float z=3 float w=4",
        "Vantor.ObjectInfo: uint64 id=1 uint32 objectType=2 uint32 timestamp=3 Position position=4"
        " Orientation orientation=5 [PlayerData playerdata=6] [ProjectileData projectiledata=7]",
        "Vantor.PlayerData: float health=1 [bool blueTeam=2] [string name=3] [int32 score=4] [int32 "
        "redTeamScore=5]"
        " [int32 blueTeamScore=6]",
        "Vantor.ProjectileData: Position velocity=1 bool blueTeam=2",
        "Vantor.ObjectUpdate: uint64 id=1 uint32 timestamp=2 [Position position=3] [Orientation "
        "orientation=4]",
        "Vantor.ObjectDestroy: uint64 id=1",
        "Vantor.Welcome: uint64 id=1 uint32 qport=2 PlayerData playerdata=3",
        "Vantor.ClientUpdate: Orientation orientation=1 uint32 boostersOn=2"};
    EXPECT_EQ(lines(*Vantor::ObjectInfo::descriptor()->file()), expected);
}
