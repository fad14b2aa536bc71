#pragma once

#include <functional>
#include <string>
#include <utility>

/// Tells a log once of a trouble that lasts, and not each time that it is met.
///
/// For one thread, or the handlers of one executor. What is silenced costs a comparison of two lines; what
/// the log throws is passed on.
class LogOnce
{
public:
    using Log = std::function<void(const std::string& line)>;

    explicit LogOnce(Log log_) : log(std::move(log_)) {}

    /// Silent where this is what it said last and the trouble has not been over since.
    void say(const std::string& line)
    {
        if (std::exchange(last, line) != line) {
            log(line);
        }
    }
    void over() { last.clear(); }

private:
    Log log;
    std::string last;  ///< none where there is no trouble
};
