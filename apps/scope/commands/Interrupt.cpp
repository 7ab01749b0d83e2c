#include "commands/Interrupt.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>

namespace scope {

namespace {
volatile std::sig_atomic_t interrupted = 0;
volatile std::sig_atomic_t event = -1;
struct sigaction before {};

void note(int)
{
    const int error = errno;
    interrupted = 1;
    const std::uint64_t once = 1;
    [[maybe_unused]] const ssize_t written = write(event, &once, sizeof once);
    errno = error;
}
} // namespace

Interrupt::Interrupt() noexcept
{
    interrupted = 0;
    event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, &before);
}

Interrupt::~Interrupt()
{
    sigaction(SIGINT, &before, nullptr);
    if (event >= 0)
        close(event);
}

bool Interrupt::came() const noexcept { return interrupted != 0; }
int Interrupt::descriptor() const noexcept { return event; }

} // namespace scope
