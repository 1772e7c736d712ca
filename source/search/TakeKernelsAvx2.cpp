// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Compiled for processors with AVX2.

#include "TakeKernelsFor.h"

namespace pulsewright
{

extern const TakeKernels takeKernelsAvx2;
const TakeKernels takeKernelsAvx2 = TakeKernelsFor<xsimd::fma3<xsimd::avx2>>::kernels ("AVX2");

} // namespace pulsewright
