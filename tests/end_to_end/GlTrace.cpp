#include "tests/end_to_end/GlTrace.h"

#include "tests/support/Process.h"

#include <sys/mman.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

namespace {

constexpr double tolerance = 0.002;

std::vector<std::string> wordsOf(const std::string& text)
{
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// "a = 1, b = {2, 3}, c = X | Y" is "1 2 3 X|Y": names end in " = ".
std::string valuesOf(std::string text)
{
    for (std::size_t at = 0; (at = text.find(" | ")) != std::string::npos;) {
        text.replace(at, 3, "|");
    }
    std::string values;
    std::istringstream parts(text);
    for (std::string part; std::getline(parts, part, ',');) {
        const std::size_t name = part.find(" = ");
        std::string value = name == std::string::npos ? part : part.substr(name + 3);
        value.erase(std::remove_if(value.begin(), value.end(),
                                   [](char c) { return c == '{' || c == '}' || c == '&'; }),
                    value.end());
        values += value + " ";
    }
    return values;
}

// A line of the dump: "<number> <name>(<values>)", perhaps with a result or a remark behind.
std::optional<GlCall> parseCall(const std::string& line)
{
    const std::size_t blank = line.find(' ');
    const std::size_t open = line.find('(');
    const std::size_t close = line.rfind(')');
    if (line.empty() || std::isdigit(static_cast<unsigned char>(line[0])) == 0 || open == std::string::npos ||
        close == std::string::npos || line.find("// fake") != std::string::npos) {
        return std::nullopt;
    }
    const std::string name = line.substr(blank + 1, open - blank - 1);
    if (name.rfind("glX", 0) == 0 && name != "glXSwapBuffers") {
        return std::nullopt;
    }
    return wordsOf(name + " " +
                   (name == "glXSwapBuffers" ? "" : valuesOf(line.substr(open + 1, close - open - 1))));
}

bool isNumber(const std::string& word, double& value)
{
    char* end = nullptr;
    value = std::strtod(word.c_str(), &end);
    return !word.empty() && *end == '\0';
}

class Matcher
{
public:
    bool matches(const std::string& actual, const std::string& expected)
    {
        double a = 0;
        double b = 0;
        if (expected == "*") {
            return true;
        }
        if (expected[0] == '$') {
            return isOnly(expected, actual);
        }
        return isNumber(actual, a) && isNumber(expected, b) ? std::abs(a - b) <= tolerance
                                                            : actual == expected;
    }

    bool matches(const GlCall& actual, const GlCall& expected)
    {
        return actual.size() == expected.size() &&
               std::equal(actual.begin(), actual.end(), expected.begin(),
                          [this](const auto& a, const auto& e) { return matches(a, e); });
    }

private:
    bool isOnly(const std::string& variable, const std::string& value)
    {
        const auto known = variables.find(variable);
        if (known != variables.end()) {
            return known->second == value;
        }
        const std::string kind = variable.substr(0, variable.find(':') + 1);
        const bool taken = std::any_of(variables.begin(), variables.end(), [&](const auto& other) {
            return other.second == value && other.first.rfind(kind, 0) == 0;
        });
        variables[variable] = value;
        return !taken;
    }

    std::map<std::string, std::string> variables;
};

std::string textOf(const GlCall& call)
{
    std::string text;
    for (const std::string& word : call) {
        text += word + " ";
    }
    return text;
}

bool isSwap(const GlCall& call)
{
    return call.front() == "glXSwapBuffers";
}

}  // namespace

std::vector<GlCall> readTrace(const std::string& file)
{
    const support::Descriptor dump(memfd_create("trace dump", MFD_CLOEXEC));
    support::run({{"apitrace", "dump", "--color=never", file}, {}, dump.get()});
    std::ifstream lines("/proc/self/fd/" + std::to_string(dump.get()));
    std::vector<GlCall> calls;
    for (std::string line; std::getline(lines, line);) {
        if (const std::optional<GlCall> call = parseCall(line)) {
            calls.push_back(*call);
        }
    }
    return calls;
}

std::vector<GlCall> lastFrame(const std::vector<GlCall>& calls)
{
    const auto last = std::find_if(calls.rbegin(), calls.rend(), isSwap);
    const auto before = last == calls.rend() ? last : std::find_if(last + 1, calls.rend(), isSwap);
    return {before.base(), last.base()};
}

std::set<std::string> firstValues(const std::vector<GlCall>& calls, const std::string& name)
{
    std::set<std::string> values;
    for (const GlCall& call : calls) {
        if (call.front() == name && call.size() > 1) {
            values.insert(call[1]);
        }
    }
    return values;
}

testing::AssertionResult matches(const std::vector<GlCall>& actual, const std::vector<std::string>& expected)
{
    Matcher matcher;
    for (std::size_t i = 0; i < std::max(actual.size(), expected.size()); ++i) {
        const std::string is = i < actual.size() ? textOf(actual[i]) : "nothing";
        const std::string wanted = i < expected.size() ? expected[i] : "nothing";
        if (i >= actual.size() || i >= expected.size() || !matcher.matches(actual[i], wordsOf(wanted))) {
            return testing::AssertionFailure() << "call " << i << " is " << is << ", not " << wanted;
        }
    }
    return testing::AssertionSuccess();
}
