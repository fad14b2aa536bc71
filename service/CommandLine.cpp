#include "service/CommandLine.h"

#include "Common/PrintableText.h"

#include <cerrno>
#include <cstring>
#include <iostream>

namespace commandline {

namespace {

CLI::Validator only(const std::string& characters, const std::string& kind)
{
    const auto check = [=](const std::string& text) {
        const bool fits = !text.empty() && text.find_first_not_of(characters) == std::string::npos;
        return fits ? std::string() : "'" + text + "' is no " + kind;
    };
    return {check, ""};
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

CLI::Validator wholeNumber()
{
    return only("0123456789", "whole number");
}

CLI::Validator decimalNumber()
{
    return only("0123456789.", "number");
}

std::optional<int> parse(CLI::App& app, int argc, const char* const* argv)
{
    app.set_version_flag("--version", app.get_name() + " " VANTOR_VERSION, "show the version");
    app.set_help_flag("--help", "show this text");
    try {
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

}  // namespace commandline
