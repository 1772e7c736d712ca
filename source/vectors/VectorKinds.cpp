// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "VectorKinds.h"

#if PULSEWRIGHT_X86_KERNELS && defined(_MSC_VER) && ! defined(__clang__)
#include <immintrin.h>
#include <intrin.h>
#endif

namespace pulsewright
{

#if PULSEWRIGHT_X86_KERNELS

namespace
{
    // The processor itself is asked, and whether the system saves its wide registers: a virtual machine, a sandbox
    // or an instrumenting tool may have fewer instructions than the machine that it runs on.

#if defined(__GNUC__)

    bool hasAvx2() noexcept
    {
        return __builtin_cpu_supports ("avx2") && __builtin_cpu_supports ("fma");
    }

    bool hasAvx512() noexcept
    {
        return __builtin_cpu_supports ("avx512f") && __builtin_cpu_supports ("avx512bw") && __builtin_cpu_supports ("avx512cd")
            && __builtin_cpu_supports ("avx512dq");
    }

#else

    bool hasBits (unsigned value, unsigned bits) noexcept
    {
        return (value & bits) == bits;
    }

    /** One register of CPUID's answer. */
    unsigned cpuid (int leaf, int index) noexcept
    {
        int registers[4] {};
        __cpuidex (registers, leaf, 0);
        return static_cast<unsigned> (registers[index]);
    }

    bool savesRegisters (unsigned components) noexcept
    {
        constexpr unsigned osxsave = 1u << 27;
        return hasBits (cpuid (1, 2), osxsave) && hasBits (static_cast<unsigned> (_xgetbv (0)), components);
    }

    bool hasAvx2() noexcept
    {
        constexpr unsigned fma = 1u << 12, avx2 = 1u << 5, wideHalves = 0x06u;
        return hasBits (cpuid (1, 2), fma) && hasBits (cpuid (7, 1), avx2) && savesRegisters (wideHalves);
    }

    bool hasAvx512() noexcept
    {
        constexpr unsigned f = 1u << 16, dq = 1u << 17, cd = 1u << 28, bw = 1u << 30, widest = 0xE6u;
        return hasBits (cpuid (7, 1), f | dq | cd | bw) && savesRegisters (widest);
    }

#endif
} // namespace

std::size_t missingVectorKinds() noexcept
{
    static const bool avx2   = hasAvx2();
    static const bool avx512 = avx2 && hasAvx512();

    return avx512 ? 0 : avx2 ? 1 : 2;
}

#else

std::size_t missingVectorKinds() noexcept
{
    return 0;
}

#endif

} // namespace pulsewright
