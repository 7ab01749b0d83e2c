#pragma once

#include "buffers/Ports.h"

#include <tracery/TimeBuffer.h>

#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>

#include <atomic>
#include <type_traits>

namespace tracery {

/// The ports and their mutex. All that is done to them goes through here.
struct TimeBuffer::State {
    enum class LockWhen { ifThreadSafe, always };

    /// Returns use(all), with the mutex held when the buffer is thread safe, or in any case.
    template <class Use>
    auto onBuffer(Use&& use, LockWhen when = LockWhen::ifThreadSafe)
    {
        boost::unique_lock<boost::mutex> lock(mutex, boost::defer_lock);
        if (when == LockWhen::always || threadSafe)
            lock.lock();
        return use(all);
    }
    /// The same once the buffer is set up; nothing, or a value made from nothing, before.
    template <class Use>
    auto whenSetUp(Use&& use, LockWhen when = LockWhen::ifThreadSafe)
    {
        return onBuffer(
            [&use](Ports& ports) -> std::invoke_result_t<Use, Ports&> {
                if (!ports.initialized)
                    return std::invoke_result_t<Use, Ports&>();
                return use(ports);
            },
            when);
    }
    /// Returns use(all, one), once the buffer is set up. throws  InvalidPortID
    template <class Use>
    auto onPort(std::uint64_t port, Use&& use, LockWhen when = LockWhen::ifThreadSafe)
    {
        return whenSetUp(
            [port, &use](Ports& ports) {
                ports.requirePort(port);
                return use(ports, ports.ports[port]);
            },
            when);
    }

    boost::mutex mutex;
    std::atomic<bool> threadSafe{false};
    Ports all;
};

} // namespace tracery
