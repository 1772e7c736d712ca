// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Compiled for processors with AVX-512.

#include "TakeKernelsFor.h"

namespace pulsewright
{

extern const TakeKernels takeKernelsAvx512;
const TakeKernels takeKernelsAvx512 = TakeKernelsFor<xsimd::avx512bw>::kernels ("AVX-512");

} // namespace pulsewright
