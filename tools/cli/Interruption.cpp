// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Interruption.h"

#include <csignal>

namespace pulsewright::cli
{

namespace
{
    std::atomic<bool> isInterrupted { false };
    static_assert (std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

#if defined(_WIN32)
    using Handling = void (*) (int);

    extern "C" void interrupt (int)
    {
        isInterrupted = true; // Windows takes the handler away by itself
    }

    Handling install() noexcept
    {
        return std::signal (SIGINT, interrupt);
    }

    void restore (Handling old) noexcept
    {
        std::signal (SIGINT, old);
    }
#else
    using Handling = struct sigaction;

    extern "C" void interrupt (int)
    {
        isInterrupted = true;
    }

    void restore (const Handling& old) noexcept
    {
        ::sigaction (SIGINT, &old, nullptr);
    }

    Handling install() noexcept
    {
        Handling action = {}, old = {};
        action.sa_handler = interrupt;
        action.sa_flags   = SA_RESTART;
        ::sigaction (SIGINT, &action, &old);

        if (old.sa_handler == SIG_IGN) // by nohup, say
            restore (old);

        return old;
    }
#endif

    Handling before {};
} // namespace

Interruption::Interruption() noexcept
{
    before = install();
}

Interruption::~Interruption()
{
    restore (before);
}

const std::atomic<bool>& Interruption::flag() noexcept
{
    return isInterrupted;
}

} // namespace pulsewright::cli
