#pragma once

#include "support/containerErrors.h"

#include <tracery/host/Error.h>

#include <new>

namespace tracery::binding {

/// The error of no memory, made beforehand: throwing it takes none.
const Error& outOfMemory() noexcept;
/// Whether the failure is that of memory itself and not of a class that somebody derived from it.
bool isPlain(const std::bad_alloc& error) noexcept;

/// Gives the library's own container errors an identifier.
template <class Body>
auto identified(Body&& body) -> decltype(body())
{
    try {
        return body();
    } catch (const InvalidSubscript& error) {
        throw Error(errors::InvalidSubscript, error.what());
    } catch (const TooLong& error) {
        throw Error(errors::TooLong, error.what());
    }
}

/// Runs what a host asked for. Failures of the library leave as an Error, which hosts show with its identifier, also
/// when there was no memory to word it. What host code throws that the library calls in between passes as it is, all
/// but a plain std::bad_alloc: want of memory is the same whoever had it.
template <class Body>
auto guarded(Body&& body) -> decltype(body())
{
    try {
        return identified(body);
    } catch (const std::bad_alloc& error) {
        if (!isPlain(error))
            throw;
        throw outOfMemory();
    }
}

} // namespace tracery::binding
