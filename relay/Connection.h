#pragma once

#include "service/LogOnce.h"

#include <memory>
#include <string>
#include <utility>

namespace relay {

/// A TCP connection or a flow of datagrams, which names itself in the log and ends once.
///
/// Needs a std::shared_ptr. For one thread, or the handlers of one executor.
class Connection : public std::enable_shared_from_this<Connection>
{
public:
    Connection(std::string name_, LogOnce::Log log) : name(std::move(name_)), sink(std::move(log)) {}
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    virtual ~Connection() = default;

    bool isOpen() const { return open; }

    /// Hangs up, and leaves the io_context without work of ours.
    void close()
    {
        if (std::exchange(open, false)) {
            hangUp();
        }
    }

protected:
    const std::string name;

    virtual void hangUp() = 0;

    void log(const std::string& event) const { sink(name + ": " + event); }

    void end(const std::string& reason)
    {
        close();
        log(reason);
    }

    /// A completion handler that keeps the object alive, and does nothing once the object is closed.
    template <class Handler>
    auto whileOpen(Handler handler)
    {
        return [self = shared_from_this(), handler = std::move(handler)](const auto&... results) {
            if (self->open) {
                handler(results...);
            }
        };
    }

private:
    LogOnce::Log sink;
    bool open = true;
};

}  // namespace relay
