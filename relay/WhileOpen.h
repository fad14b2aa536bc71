#pragma once

#include <memory>
#include <utility>

namespace relay {

/// Makes completion handlers: each keeps the object alive, and does nothing once the object is closed.
/// Derived has `bool isOpen() const`.
template <class Derived>
class WhileOpen : public std::enable_shared_from_this<Derived>
{
protected:
    template <class Handler>
    auto whileOpen(Handler handler)
    {
        return [self = this->shared_from_this(), handler = std::move(handler)](const auto&... results) {
            if (self->isOpen()) {
                handler(results...);
            }
        };
    }
};

}  // namespace relay
