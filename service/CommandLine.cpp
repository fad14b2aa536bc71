#include "service/CommandLine.h"

#include "Common/PrintableText.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

namespace commandline {

namespace {

template <typename Number>
std::string wanted(const char* kind, Number largest, const std::string& text)
{
    std::ostringstream message;
    message << "wants a " << kind << " from 0 to " << largest << ", not '" << text << "'";
    return message.str();
}

/// The library would take the argument behind "--name=" for the value.
void refuseEmptyValues(int argc, const char* const* argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.compare(0, 2, "--") == 0 && argument.find('=') == argument.size() - 1) {
            throw CLI::ArgumentMismatch(argument + " lacks a value");
        }
    }
}

int show(const std::string& text)
{
    std::cout << text << std::flush;
    if (!std::cout) {
        std::cerr << "cannot write the answer: " << std::strerror(errno) << '\n';
        return 1;
    }
    return 0;
}

}  // namespace

std::optional<int> parse(CLI::App& app, int argc, const char* const* argv)
{
    app.set_version_flag("--version", app.get_name() + " " VANTOR_VERSION, "show the version");
    app.set_help_flag("--help", "show this text");
    try {
        refuseEmptyValues(argc, argv);
        app.parse(argc, argv);
        return std::nullopt;
    } catch (const CLI::CallForHelp&) {
        return show(app.help());
    } catch (const CLI::CallForVersion& version) {
        return show(version.what() + std::string("\n"));
    } catch (const CLI::ParseError& error) {
        std::cerr << app.get_name() << ": " << printable(error.what()) << "; see --help\n";
        return 2;
    }
}

CLI::Validator wholeNumber(std::uint32_t largest)
{
    const auto check = [largest](std::string& text) {
        std::uint32_t value = 0;
        const char* const last = text.data() + text.size();
        const auto [end, error] = std::from_chars(text.data(), last, value);
        if (error != std::errc() || end != last || value > largest) {
            return wanted("whole number", largest, text);
        }
        text = std::to_string(value);
        return std::string();
    };
    return {check, ""};
}

CLI::Validator decimalNumber(double largest)
{
    const auto check = [largest](const std::string& text) {
        double value = 0;
        const bool isPlain = text.find_first_not_of("0123456789.") == std::string::npos;
        const bool fits = isPlain && CLI::detail::lexical_cast(text, value) && value <= largest;
        return fits ? std::string() : wanted("number", largest, text);
    };
    return {check, ""};
}

CLI::Validator fileName()
{
    return {[](const std::string& text) { return text.empty() ? "wants the name of a file" : ""; }, ""};
}

}  // namespace commandline
