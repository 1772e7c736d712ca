// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The one assertion of the fuzzers, and the numbers that they try more often than chance would.

#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace pulsewright::fuzz
{

/** Ends the program when something does not hold; libFuzzer then keeps the input. */
inline void check (bool holds, const char* what, const char* file = __builtin_FILE(), int line = __builtin_LINE())
{
    if (holds)
        return;

    std::fprintf (stderr, "%s:%d: does not hold: %s\n", file, line, what);
    std::abort();
}

/** Any bit pattern, or, three times of four, one of the given numbers or of those where code goes wrong. */
template <typename Real, std::size_t size>
Real anyReal (FuzzedDataProvider& input, const std::array<Real, size>& usual)
{
    using Limits = std::numeric_limits<Real>;
    using Bits   = std::conditional_t<sizeof (Real) == 4, std::uint32_t, std::uint64_t>;

    static constexpr Real odd[] { Limits::quiet_NaN(),  Limits::infinity(), -Limits::infinity(), Limits::max(), Limits::lowest(),
                                  Limits::denorm_min(), Real (0),           Real (-0.0),         Real (1),      Real (-1),
                                  Real (0x1p31),        Real (0x1p63) };

    switch (input.ConsumeIntegralInRange (0, 3))
    {
        case 0: return std::bit_cast<Real> (input.ConsumeIntegral<Bits>());
        case 1: return input.PickValueInArray (odd);
        default: return usual[input.ConsumeIntegralInRange<std::size_t> (0, size - 1)];
    }
}

} // namespace pulsewright::fuzz
