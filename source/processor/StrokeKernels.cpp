// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#if PULSEWRIGHT_X86_KERNELS
#include "StrokeKernels.h"
#else
#include "StrokeKernelsFor.h"
#endif

#include <juce_core/juce_core.h>

#include <array>

namespace pulsewright
{

#if PULSEWRIGHT_X86_KERNELS

extern const StrokeKernels strokeKernelsSse2, strokeKernelsAvx2, strokeKernelsAvx512;

std::span<const StrokeKernels* const> StrokeKernels::all() noexcept
{
    static constexpr std::array<const StrokeKernels*, 3> widestFirst { &strokeKernelsAvx512, &strokeKernelsAvx2, &strokeKernelsSse2 };

    using Cpu                   = juce::SystemStats;
    static const bool hasAvx2   = Cpu::hasAVX2() && Cpu::hasFMA3();
    static const bool hasAvx512 = hasAvx2 && Cpu::hasAVX512F() && Cpu::hasAVX512BW() && Cpu::hasAVX512CD() && Cpu::hasAVX512DQ();

    return std::span (widestFirst).subspan (hasAvx512 ? 0 : hasAvx2 ? 1 : 2);
}

#else

std::span<const StrokeKernels* const> StrokeKernels::all() noexcept
{
    static constexpr auto ofThisProcessor = StrokeKernelsFor<xsimd::default_arch>::kernels ("default");
    static constexpr std::array<const StrokeKernels*, 1> one { &ofThisProcessor };
    return one;
}

#endif

const StrokeKernels& StrokeKernels::best() noexcept
{
    return *all().front();
}

} // namespace pulsewright
