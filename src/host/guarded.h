#pragma once

#include <tracery/host/Error.h>

#include <cxxabi.h>

#include <exception>
#include <new>
#include <stdexcept>

namespace tracery::binding {

/// The error of no memory, made beforehand: throwing it takes none.
const Error& outOfMemory() noexcept;

/// Gives failures an identifier, all but those for want of memory.
template <class Body>
auto identified(Body&& body) -> decltype(body())
{
    try {
        return body();
    } catch (const Error&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::out_of_range& error) {
        throw Error(errors::InvalidSubscript, error.what());
    } catch (const std::length_error& error) {
        throw Error(errors::TooLong, error.what());
    } catch (const std::exception& error) {
        throw Error(errors::InternalError, error.what());
    } catch (abi::__forced_unwind&) { // the end of a thread, which must go on
        throw;
    } catch (...) {
        throw Error(errors::InternalError);
    }
}

/// Runs what a host asked for; every failure leaves as an Error, which hosts show with its identifier. That goes for
/// what host code throws that the library calls in between, too, and for an Error that there was no memory to make.
template <class Body>
auto guarded(Body&& body) -> decltype(body())
{
    try {
        return identified(body);
    } catch (const std::bad_alloc&) {
        throw outOfMemory();
    }
}

} // namespace tracery::binding
