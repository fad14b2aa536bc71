#pragma once

#include <functional>
#include <string>
#include <utility>

/// Logs a lasting error once instead of each time it occurs.
///
/// For one thread, or the handlers of one executor. A repeated line costs one comparison of strings. What the
/// log throws is passed on.
class LogOnce
{
public:
    using Log = std::function<void(const std::string& line)>;

    explicit LogOnce(Log sink_) : sink(std::move(sink_)) {}

    /// Logs the line, unless it is the last one logged and nothing cleared it since.
    void log(const std::string& line)
    {
        if (std::exchange(last, line) != line) {
            sink(line);
        }
    }
    /// The error is over: the next line is logged in any case.
    void clear() { last.clear(); }

private:
    Log sink;
    std::string last;  ///< empty while there is no error
};
