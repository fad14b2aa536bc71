#pragma once

#include <string>

/// Writes one line to standard output, or nothing if writing would block. So a reader that stopped does not
/// stall a server.
void writeStatusLine(const std::string& line);
