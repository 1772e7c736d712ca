// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Counts what the audio thread must never do: allocate, free, lock and call the system.

#pragma once

namespace pulsewright
{

/** While one lives, every malloc, free and mutex lock of its own thread is counted.

    The functions themselves are replaced, for the whole test program: nothing that the code under
    test calls can get past them, neither containers nor the C library's own users of them.
*/
class AudioThreadWatch
{
public:
    /** The sanitizers put their own functions in the same place; there nothing is counted. */
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    static constexpr bool isAvailable = false;
#else
    static constexpr bool isAvailable = true;
#endif

    AudioThreadWatch();
    ~AudioThreadWatch();

    AudioThreadWatch (const AudioThreadWatch&)            = delete;
    AudioThreadWatch& operator= (const AudioThreadWatch&) = delete;

    struct Counts
    {
        long allocations = 0, frees = 0, locks = 0, systemCalls = 0;
        bool operator== (const Counts&) const = default;
    };

    /** From here on this thread's system calls are refused and, while watched, counted. After that the thread can only end.
        @returns false where the kernel does not offer that
    */
    static bool refuseSystemCalls();

    /** What this thread has done while watched, ever. */
    static Counts counts() noexcept;
};

} // namespace pulsewright
