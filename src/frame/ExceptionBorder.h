// The border of an operation that lets out only one family of exceptions.
//
// letOutOnly<Allowed>(body) runs body and passes on what it returns or what
// it throws of type Allowed. Thread cancellation unwinds as an exception
// too, and must go on unwinding, so it passes as well. Anything else would
// leave the operation against its contract: the process ends through
// std::terminate.
#ifndef VSUPT_EXCEPTIONBORDER_H
#define VSUPT_EXCEPTIONBORDER_H

#include <cxxabi.h>

#include <exception>
#include <utility>

// Marks a function with a handler for abi::__forced_unwind. Cancellation
// throws no object, so the handler's reference is bound to null, which the
// undefined-behaviour sanitizer would report as an error. g++ keeps the
// check at -O2 when only its "null" part is turned off.
#define VSUPT_CATCHES_FORCED_UNWIND __attribute__((no_sanitize("undefined")))

namespace VornSupport {

template <class Allowed, class Body>
VSUPT_CATCHES_FORCED_UNWIND auto letOutOnly(Body&& body) -> decltype(std::forward<Body>(body)())
{
    try {
        return std::forward<Body>(body)();
    } catch (abi::__forced_unwind&) {
        throw;
    } catch (Allowed&) {
        throw;
    } catch (...) {
        std::terminate();
    }
}

}  // namespace VornSupport

#endif
