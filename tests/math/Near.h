#pragma once

#include "math/Quaternion.h"

#include <gtest/gtest.h>

#include <algorithm>

/// Fails unless the two are a few roundings apart.
template <class Value>
void expectNear(const Value& actual, const Value& expected)
{
    EXPECT_LT((actual - expected).length(), 1e-5F * std::max(1.0F, expected.length()))
        << actual.toString() << ", not " << expected.toString();
}
