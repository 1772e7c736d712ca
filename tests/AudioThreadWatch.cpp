// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "AudioThreadWatch.h"

#include <cerrno>
#include <cstddef>
#include <dlfcn.h>
#include <pthread.h>

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

} // namespace pulsewright

#if ! defined(__SANITIZE_ADDRESS__) && ! defined(__SANITIZE_THREAD__)

//==============================================================================
// The C library's own names for the functions that are replaced below.
extern "C"
{
    void* __libc_malloc (std::size_t);
    void* __libc_calloc (std::size_t, std::size_t);
    void* __libc_realloc (void*, std::size_t);
    void* __libc_memalign (std::size_t, std::size_t);
    void __libc_free (void*);

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
