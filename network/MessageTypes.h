#pragma once

/// The type byte of a frame.
class MessageTypes
{
public:
    /// Fits the byte on the wire. Values that name no message (0, 6 to 255) can be held but are never sent.
    enum MessageType : unsigned char
    {
        OBJECT_INFO = 1,
        OBJECT_UPDATE = 2,
        OBJECT_DESTROY = 3,
        CLIENT_UPDATE = 4,
        WELCOME = 5,
    };
};
