#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <limits>
#include <optional>

/// What the command lines of server, relay and load test share. The client has its own.
namespace commandline {

/// Adds --help and --version, and parses with whole option names only.
///
/// Returns nothing if the program should go on, else the status to end with; the text is written by then.
/// 0: --help or --version wrote to standard output. 1: standard output takes no text. 2: the command line is
/// bad; standard error got one line.
std::optional<int> parse(CLI::App& app, int argc, const char* const* argv);

/// Accepts decimal digits up to `largest`. Use it with `transform`: it removes leading zeros, because the
/// library would read 010 as eight.
CLI::Validator wholeNumber(std::uint32_t largest = std::numeric_limits<std::uint32_t>::max());

/// Accepts digits with at most one point, up to `largest`; no sign, exponent, infinity or NaN.
CLI::Validator decimalNumber(double largest = std::numeric_limits<double>::max());

/// Accepts any text but the empty one.
CLI::Validator fileName();

}  // namespace commandline
