#pragma once

#include <CLI/CLI.hpp>

#include <optional>

/// What the command lines of our programs have in common. Server, relay and load test use CLI11; the client
/// has its own.
namespace commandline {

/// Parses with whole option names only, `--version` added. Nothing where the program should go on; otherwise
/// the status to end with, after the text for the user: 0 for --help and --version on standard output (1
/// where that takes no text), 2 for a bad command line, with one line on standard error.
std::optional<int> parse(CLI::App& app, int argc, const char* const* argv);

/// For a whole number: nothing but digits, since the library would take 010 for eight and 0x10 for sixteen.
CLI::Validator wholeNumber();

/// For a number: digits, perhaps with a point; no sign, exponent, infinity or NaN.
CLI::Validator decimalNumber();

}  // namespace commandline
