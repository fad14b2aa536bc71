#pragma once

#include <string>

/// The application's folder, without a slash at its end. Its "Contents/Resources" holds textures, models and
/// fonts. The implementation depends on the platform; on failure it prints a line and returns ".".
std::string applicationFolder();
