// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Compiled for processors with SSE2.

#include "StrokeKernelsFor.h"

namespace pulsewright
{

extern const StrokeKernels strokeKernelsSse2;
const StrokeKernels strokeKernelsSse2 = StrokeKernelsFor<xsimd::sse2>::kernels ("SSE2");

} // namespace pulsewright
