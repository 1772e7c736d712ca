// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The small steps that a mutation moves the style macros by.

#pragma once

#include <algorithm>
#include <cstdint>

namespace pulsewright
{

/** Draws one step after another, the same ones for a seed everywhere. Thread: any, one at a time. */
class MacroNudges
{
public:
    explicit MacroNudges (std::uint32_t seed) noexcept : state (seed) {}

    /** The value that the next macro moves to: 0.05 to 0.2 up or down. A step over the edge is taken the other way:
        clipping would pile the values up at the ends.
        @param value  0 to 1; so is what is returned
    */
    float nudged (float value) noexcept
    {
        const float amount = nextFraction() * 0.15f + 0.05f;
        const float step   = (nextBits() & 0x40000000u) != 0 ? amount : -amount;

        const float candidate = value + step;
        const bool overshoots = candidate < 0.0f || candidate > 1.0f;
        return std::clamp (overshoots ? value - step : candidate, 0.0f, 1.0f);
    }

private:
    /** The 48-bit congruential generator of POSIX's drand48, started with the seed as it is. */
    std::uint32_t nextBits() noexcept
    {
        state = (state * 0x5DEECE66Du + 0xBu) & 0xFFFFFFFFFFFFu;
        return static_cast<std::uint32_t> (state >> 16);
    }

    float nextFraction() noexcept { return std::min (static_cast<float> (nextBits()) * 0x1p-32f, 1.0f - 0x1p-23f); }

    std::uint64_t state;
};

} // namespace pulsewright
