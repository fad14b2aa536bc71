#pragma once

#include <gtest/gtest.h>

#include <string>

/// What an action prints to standard output.
template <class Action>
std::string printedBy(Action action)
{
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}
