#pragma once

#include "Common/Protobuf/Object/Object.pb.h"

/// What a client sends, looking along the quaternion (1, 2, 3, 4).
inline Vantor::ClientUpdate steering(unsigned int boosters)
{
    Vantor::ClientUpdate message;
    message.set_boosterson(boosters);
    message.mutable_orientation()->set_w(1);
    message.mutable_orientation()->set_x(2);
    message.mutable_orientation()->set_y(3);
    message.mutable_orientation()->set_z(4);
    return message;
}
