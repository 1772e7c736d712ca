// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Compiled for processors with AVX-512.

#include "StrokeKernelsFor.h"

namespace pulsewright
{

extern const StrokeKernels strokeKernelsAvx512;
const StrokeKernels strokeKernelsAvx512 = StrokeKernelsFor<xsimd::avx512bw>::kernels ("AVX-512");

} // namespace pulsewright
