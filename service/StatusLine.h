#pragma once

#include <string>

/// Writes one line to standard output, unless that would block: whoever started a server may have stopped
/// reading, and its clients must not be able to stall it by making it write.
void writeStatusLine(const std::string& line);
