#pragma once

#include "math/Quaternion.h"

#include <gtest/gtest.h>

/// Fails unless the two are a few roundings of numbers around 1 apart.
template <class Value>
void expectNear(const Value& actual, const Value& expected)
{
    EXPECT_LT((actual - expected).length(), 1e-5F) << actual.toString() << ", not " << expected.toString();
}

template <class Value>
Value normalised(Value value)
{
    value.normalise();
    return value;
}
