// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#if PULSEWRIGHT_X86_KERNELS
#include "TakeKernels.h"
#else
#include "TakeKernelsFor.h"
#endif

#include "vectors/VectorKinds.h"

#include <array>

namespace pulsewright
{

#if PULSEWRIGHT_X86_KERNELS
extern const TakeKernels takeKernelsSse2, takeKernelsAvx2, takeKernelsAvx512;
#endif

std::span<const TakeKernels* const> TakeKernels::all() noexcept
{
#if PULSEWRIGHT_X86_KERNELS
    static constexpr std::array<const TakeKernels*, 3> widestFirst { &takeKernelsAvx512, &takeKernelsAvx2, &takeKernelsSse2 };
#else
    static constexpr auto ofThisProcessor = TakeKernelsFor<xsimd::default_arch>::kernels ("default");
    static constexpr std::array<const TakeKernels*, 1> widestFirst { &ofThisProcessor };
#endif

    return thatRunHere (std::span<const TakeKernels* const> (widestFirst));
}

} // namespace pulsewright
