// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Compiled for processors with AVX2.

#include "StrokeKernelsFor.h"

namespace pulsewright
{

extern const StrokeKernels strokeKernelsAvx2;
const StrokeKernels strokeKernelsAvx2 = StrokeKernelsFor<xsimd::fma3<xsimd::avx2>>::kernels ("AVX2");

} // namespace pulsewright
