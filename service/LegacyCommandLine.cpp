#include "service/LegacyCommandLine.h"

#include "Common/PrintableText.h"

#include <boost/program_options/parsers.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <iostream>
#include <locale>
#include <sstream>
#include <stdexcept>

namespace commandline {

namespace po = boost::program_options;

namespace {

bool convert(const std::string& text, std::uint32_t& value)
{
    const char* const last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, value);
    return error == std::errc() && end == last;
}

// Not every standard library has from_chars for this; a stream alone would take signs and exponents.
bool convert(const std::string& text, double& value)
{
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    const bool isPlain = text.find_first_not_of("0123456789.") == std::string::npos;
    return isPlain && stream >> value && stream.eof();
}

template <class Number>
std::invalid_argument complaint(const std::string& option, const char* kind, Number largest,
                                const std::string& text)
{
    std::ostringstream message;
    message << "--" << option << " wants a " << kind << " from 0 to " << largest << ", not '" << text << "'";
    return std::invalid_argument(message.str());
}

}  // namespace

void addInformation(po::options_description& options)
{
    options.add_options()("help", "show this text")("version", "show the version");
}

std::optional<End> information(const std::string& program, const po::options_description& options,
                               const po::variables_map& values)
{
    std::ostringstream text;
    if (values.count("help") != 0) {
        text << options;
        return End{text.str(), 0};
    }
    if (values.count("version") != 0) {
        return End{program + " " VANTOR_VERSION "\n", 0};
    }
    return std::nullopt;
}

End refusal(const std::string& program, const std::exception& error)
{
    return {program + ": " + printable(error.what()) + "; see --help\n", 2};
}

po::variables_map parse(int argc, const char* const* argv, const po::options_description& options)
{
    const int style = po::command_line_style::default_style & ~po::command_line_style::allow_guessing;
    po::variables_map values;
    po::store(po::command_line_parser(argc, argv)
                  .options(options)
                  .positional(po::positional_options_description())
                  .style(style)
                  .run(),
              values);
    return values;
}

std::uint32_t wholeNumber(const std::string& option, const std::string& text, std::uint32_t largest)
{
    std::uint32_t value = 0;
    if (!convert(text, value) || value > largest) {
        throw complaint(option, "whole number", largest, text);
    }
    return value;
}

double decimal(const std::string& option, const std::string& text, double largest)
{
    double value = 0;
    if (!convert(text, value) || value > largest) {
        throw complaint(option, "number", largest, text);
    }
    return value;
}

int show(const End& end)
{
    if (end.status != 0) {
        std::cerr << end.text;
        return end.status;
    }
    std::cout << end.text << std::flush;
    if (!std::cout) {
        std::cerr << "cannot write the answer: " << std::strerror(errno) << '\n';
        return 1;
    }
    return 0;
}

}  // namespace commandline
