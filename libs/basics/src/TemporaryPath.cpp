#include <tracery/basics/TemporaryPath.h>

#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <utility>

namespace tracery::basics {

namespace {

/// What a signal handler can read.
struct Slot {
    std::atomic<bool> taken = false;
    std::atomic<bool> filled = false;
    std::array<char, 4096> path{};
};
std::array<Slot, 8> slots; // more than are in use at once; without one a path is safe from all but signals

void endBySignal(int signal)
{
    for (int (*const remove)(const char*) : {unlink, rmdir}) // files first, and then their folders
        for (const Slot& slot : slots)
            if (slot.filled)
                remove(slot.path.data());
    std::signal(signal, SIG_DFL);
    raise(signal);
}

void handleSignals()
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction current {};
        if (sigaction(signal, nullptr, &current) == 0 && current.sa_handler == SIG_DFL)
            std::signal(signal, endBySignal);
    }
}

std::size_t fillSlot(const std::string& path)
{
    std::size_t k = 0;
    if (path.size() >= slots[0].path.size())
        return slots.size();
    while (k < slots.size() && slots[k].taken.exchange(true))
        ++k;
    if (k < slots.size()) {
        path.copy(slots[k].path.data(), path.size());
        slots[k].path[path.size()] = '\0';
        slots[k].filled = true;
    }
    return k;
}

} // namespace

TemporaryPath::TemporaryPath(std::string path) : path_(std::move(path)), slot_(fillSlot(path_)) { handleSignals(); }

TemporaryPath::~TemporaryPath()
{
    if (!path_.empty())
        std::remove(path_.c_str());
    forget();
}

void TemporaryPath::forget() noexcept
{
    path_.clear();
    if (slot_ < slots.size()) {
        slots[slot_].filled = false;
        slots[slot_].taken = false;
    }
    slot_ = slots.size();
}

} // namespace tracery::basics
