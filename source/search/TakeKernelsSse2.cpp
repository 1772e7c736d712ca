// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Compiled for processors with SSE2.

#include "TakeKernelsFor.h"

namespace pulsewright
{

extern const TakeKernels takeKernelsSse2;
const TakeKernels takeKernelsSse2 = TakeKernelsFor<xsimd::sse2>::kernels ("SSE2");

} // namespace pulsewright
