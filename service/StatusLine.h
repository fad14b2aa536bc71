#pragma once

#include <string>

/// Writes one line to standard output, or nothing if writing would block: a reader that stopped must not
/// stall a server.
void writeStatusLine(const std::string& line);
