#pragma once

#include "network/Framing.h"

#include <gtest/gtest.h>

/// A server's frame of any type and body; its length field is right.
inline std::string rawFrame(std::uint8_t type, const std::string& body)
{
    std::string frame;
    framing::appendFrame(frame, type, body);
    return frame;
}

/// What an action prints to standard output.
template <class Action>
std::string printedBy(Action action)
{
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}
