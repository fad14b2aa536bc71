#pragma once

#include <string>

/// The text with '?' for every byte of a control character: U+0000 to U+001F (line ends included), U+007F,
/// and U+0080 to U+009F in UTF-8.
///
/// For text that the user or another machine chose. Printed after this, it can neither fake a line nor
/// control the terminal. Any thread.
std::string printable(std::string text);
