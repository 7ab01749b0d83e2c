#pragma once

#include <tracery/host/Error.h>

#include <exception>
#include <new>

namespace tracery::binding {

/// Runs what a host asked for; every failure leaves as an Error, which hosts show with its identifier.
template <class Body>
auto guarded(Body&& body) -> decltype(body())
{
    try {
        return body();
    } catch (const Error&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw Error(errors::OutOfMemory);
    } catch (const std::exception& error) {
        throw Error(errors::InternalError, error.what());
    }
}

} // namespace tracery::binding
