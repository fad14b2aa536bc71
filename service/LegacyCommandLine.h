#pragma once

#include <boost/program_options/options_description.hpp>
#include <boost/program_options/variables_map.hpp>

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <variant>

/// What our tools' command lines have in common: every value is checked, and nothing is guessed.
namespace commandline {

/// Why there are no options: a text to show and the status to end with.
struct End
{
    std::string text;
    int status;  ///< 0 for help, 2 for a bad command line
};

/// Adds --help and --version.
void addInformation(boost::program_options::options_description& options);

/// What --help or --version shows, if either was given.
std::optional<End> information(const std::string& program,
                               const boost::program_options::options_description& options,
                               const boost::program_options::variables_map& values);

/// The end of a program that was called wrongly: one line, whatever the values hold.
End refusal(const std::string& program, const std::exception& error);

/// Takes only whole option names, and no stray words. Throws boost::program_options::error.
boost::program_options::variables_map parse(int argc, const char* const* argv,
                                            const boost::program_options::options_description& options);

/// Digits only: the library's own conversion would take -1 for a large unsigned number. Throws
/// std::invalid_argument with a text for the user.
std::uint32_t wholeNumber(const std::string& option, const std::string& text, std::uint32_t largest);

/// Digits, perhaps with a point; never negative, infinite or NaN. Throws like wholeNumber.
double decimal(const std::string& option, const std::string& text, double largest);

/// The options that `convert` makes of a command line's values, or why there are none; throws nothing that
/// `convert` throws.
template <class Options, class Convert>
std::variant<Options, End> read(const char* program, int argc, const char* const* argv,
                                const boost::program_options::options_description& options, Convert convert)
{
    try {
        const boost::program_options::variables_map values = parse(argc, argv, options);
        if (auto asked = information(program, options, values)) {
            return *asked;
        }
        return convert(values);
    } catch (const std::exception& error) {
        return refusal(program, error);
    }
}

/// Shows the text, on standard output or, after a bad command line, on standard error. Returns the status: 1,
/// after a message, where standard output does not take it.
int show(const End& end);

}  // namespace commandline
