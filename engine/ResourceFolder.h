#pragma once

#include <string>

/// The folder of the application, in which "Contents/Resources" holds what it loads; without a slash at its
/// end. Which file implements this depends on the platform.
std::string applicationFolder();
