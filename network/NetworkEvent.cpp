#include "network/NetworkEvent.h"

#include <google/protobuf/message.h>

NetworkEvent::~NetworkEvent()
{
    delete message;
    delete endpoint;
}
