#pragma once

#include <cstddef>

/// How many times the calling thread has called operator new. Linking this replaces the global operator.
std::size_t allocationCount();
