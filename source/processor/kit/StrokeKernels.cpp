// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#if PULSEWRIGHT_X86_KERNELS
#include "StrokeKernels.h"
#else
#include "StrokeKernelsFor.h"
#endif

#include "vectors/VectorKinds.h"

#include <array>

namespace pulsewright
{

#if PULSEWRIGHT_X86_KERNELS
extern const StrokeKernels strokeKernelsSse2, strokeKernelsAvx2, strokeKernelsAvx512;
#endif

std::span<const StrokeKernels* const> StrokeKernels::all() noexcept
{
#if PULSEWRIGHT_X86_KERNELS
    static constexpr std::array<const StrokeKernels*, 3> widestFirst { &strokeKernelsAvx512, &strokeKernelsAvx2, &strokeKernelsSse2 };
#else
    static constexpr auto ofThisProcessor = StrokeKernelsFor<xsimd::default_arch>::kernels ("default");
    static constexpr std::array<const StrokeKernels*, 1> widestFirst { &ofThisProcessor };
#endif

    return thatRunHere (std::span<const StrokeKernels* const> (widestFirst));
}

const StrokeKernels& StrokeKernels::best() noexcept
{
    return *all().front();
}

} // namespace pulsewright
