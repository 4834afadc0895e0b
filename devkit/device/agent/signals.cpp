#include "devkit/device/agent/signals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

Fd block_signals(std::initializer_list<int> signals)
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals) {
        sigaddset(&set, signal);
    }
    sigprocmask(SIG_BLOCK, &set, nullptr);
    Fd made(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    if (made.get() < 0) {
        throw_errno("signalfd");
    }
    return made;
}

int next_signal(const Fd& signals)
{
    signalfd_siginfo signal{};
    return read(signals.get(), &signal, sizeof signal) == sizeof signal
               ? static_cast<int>(signal.ssi_signo)
               : 0;
}

void default_signals()
{
    for (int number = 1; number < NSIG; ++number) {
        signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}
