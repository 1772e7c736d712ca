// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Which kinds of vectors this machine can run, for inner loops that are compiled once for each.

#pragma once

#include <cstddef>
#include <span>

namespace pulsewright
{

/** How many of AVX-512, AVX2 and SSE2, in this order, this machine lacks: 0 to 2. Found once, at the first call. */
std::size_t missingVectorKinds() noexcept;

/** Of loops for these three kinds, those that this machine can run. On processors of other families there is one kind,
    which the compiler knows.
*/
template <typename Kernels>
std::span<const Kernels* const> thatRunHere (std::span<const Kernels* const> widestFirst) noexcept
{
    return widestFirst.size() == 1 ? widestFirst : widestFirst.subspan (missingVectorKinds());
}

} // namespace pulsewright
