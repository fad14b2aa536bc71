#pragma once

#include <string>

/// The text with '?' for every control character (0x00 to 0x1F, 0x7F), a line end included.
///
/// For text that a user or another machine chose, before it is printed: it can neither fake a line nor steer
/// the terminal.
std::string printable(std::string text);
