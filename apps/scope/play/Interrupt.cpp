#include "play/Interrupt.h"

#include <csignal>

namespace scope {

namespace {
volatile std::sig_atomic_t interrupted = 0;
}

Interrupt::Interrupt() noexcept
{
    interrupted = 0;
    struct sigaction action {};
    action.sa_handler = [](int) { interrupted = 1; };
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
}

Interrupt::~Interrupt() { std::signal(SIGINT, SIG_DFL); }

bool Interrupt::came() const noexcept { return interrupted != 0; }

} // namespace scope
