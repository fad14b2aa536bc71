#pragma once

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

/// One recorded OpenGL call: its name, then its values in order, arrays and all flattened: {"glVertex3f",
/// "1", "2", "0"}.
using GlCall = std::vector<std::string>;

/// Reads a file that `apitrace trace` wrote. GL calls only: what GLX did is left out, but for the buffer
/// swaps.
std::vector<GlCall> readTrace(const std::string& file);

/// The calls between the last two buffer swaps, the second swap included.
std::vector<GlCall> lastFrame(const std::vector<GlCall>& calls);

/// The first value of every call of this name.
std::set<std::string> firstValues(const std::vector<GlCall>& calls, const std::string& name);

/// Compares call by call. An expected call is a line of words: a number matches to within 0.002, `*` whatever
/// there is, and a word like $texture:sky one value that stays the same and that no other texture has.
testing::AssertionResult matches(const std::vector<GlCall>& actual, const std::vector<std::string>& expected);
