// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "AudioThreadWatch.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace pulsewright
{

namespace
{
    thread_local bool isWatched = false;
    thread_local AudioThreadWatch::Counts watchedCounts;

    [[maybe_unused]] void count (long AudioThreadWatch::Counts::*what) noexcept
    {
        if (isWatched)
            ++(watchedCounts.*what);
    }
} // namespace

AudioThreadWatch::AudioThreadWatch()
{
    isWatched = true;
}
AudioThreadWatch::~AudioThreadWatch()
{
    isWatched = false;
}
AudioThreadWatch::Counts AudioThreadWatch::counts() noexcept
{
    return watchedCounts;
}

bool AudioThreadWatch::refuseSystemCalls()
{
    void* volatile first = std::malloc (1); // sets up the thread's own heap, which it needs to end
    std::free (first);

    struct sigaction action
    {};
    action.sa_handler = [] (int) { count (&Counts::systemCalls); };
    sigaction (SIGSYS, &action, nullptr);

    // What a thread needs to end, and to come back from the signal, is let through.
    constexpr std::array allowed { SYS_rt_sigreturn, SYS_rt_sigprocmask, SYS_madvise, SYS_munmap, SYS_exit };
    std::array<sock_filter, 2 * allowed.size() + 2> program {};
    auto instruction = program.begin();
    *instruction++   = BPF_STMT (BPF_LD | BPF_W | BPF_ABS, offsetof (seccomp_data, nr));

    for (const auto number : allowed)
    {
        *instruction++ = BPF_JUMP (BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t> (number), 0, 1);
        *instruction++ = BPF_STMT (BPF_RET | BPF_K, SECCOMP_RET_ALLOW);
    }

    *instruction = BPF_STMT (BPF_RET | BPF_K, SECCOMP_RET_TRAP);

    const sock_fprog filter { static_cast<unsigned short> (program.size()), program.data() };
    return prctl (PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl (PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

} // namespace pulsewright

#if ! defined(__SANITIZE_ADDRESS__) && ! defined(__SANITIZE_THREAD__)

//==============================================================================
// The C library's own names for the functions that are replaced below.
extern "C"
{
    // NOLINTBEGIN(bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp, readability-identifier-naming)
    void* __libc_malloc (std::size_t);
    void* __libc_calloc (std::size_t, std::size_t);
    void* __libc_realloc (void*, std::size_t);
    void* __libc_memalign (std::size_t, std::size_t);
    void __libc_free (void*);
    // NOLINTEND(bugprone-reserved-identifier, cert-dcl37-c, cert-dcl51-cpp, readability-identifier-naming)

    using pulsewright::AudioThreadWatch;

    __attribute__ ((visibility ("default"))) void* malloc (std::size_t size)
    {
        pulsewright::count (&AudioThreadWatch::Counts::allocations);
        return __libc_malloc (size);
    }

    __attribute__ ((visibility ("default"))) void* calloc (std::size_t number, std::size_t size)
    {
        pulsewright::count (&AudioThreadWatch::Counts::allocations);
        return __libc_calloc (number, size);
    }

    __attribute__ ((visibility ("default"))) void* realloc (void* memory, std::size_t size)
    {
        pulsewright::count (&AudioThreadWatch::Counts::allocations);
        return __libc_realloc (memory, size);
    }

    __attribute__ ((visibility ("default"))) void* aligned_alloc (std::size_t alignment, std::size_t size)
    {
        pulsewright::count (&AudioThreadWatch::Counts::allocations);
        return __libc_memalign (alignment, size);
    }

    __attribute__ ((visibility ("default"))) int posix_memalign (void** memory, std::size_t alignment, std::size_t size)
    {
        *memory = aligned_alloc (alignment, size);
        return *memory != nullptr ? 0 : ENOMEM;
    }

    __attribute__ ((visibility ("default"))) void free (void* memory)
    {
        if (memory != nullptr)
            pulsewright::count (&AudioThreadWatch::Counts::frees);

        __libc_free (memory);
    }

    __attribute__ ((visibility ("default"))) int pthread_mutex_lock (pthread_mutex_t* mutex) noexcept
    {
        using Lock             = int (*) (pthread_mutex_t*);
        static const auto real = reinterpret_cast<Lock> (dlsym (RTLD_NEXT, "pthread_mutex_lock"));

        pulsewright::count (&AudioThreadWatch::Counts::locks);
        return real (mutex);
    }
}

#endif
