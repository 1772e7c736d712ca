// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Turns settings and a seed into a drum pattern, bit for bit the same everywhere.

#pragma once

#include "DrumPattern.h"
#include "GenerationSettings.h"

#include <array>
#include <cstdint>

namespace pulsewright
{

/** One flag a lane, in the order of DrumLane: true keeps the lane through a mutation. */
using LaneLocks = std::array<bool, laneCount>;

/** Plays a genre's recipe with seeded dice.

    Pure functions: no state, any thread. Nothing fails; what lies out of range is clamped.
    The dice are the standard MT19937, so a seed plays the same on every compiler and processor.
*/
struct GrooveGenerator
{
    /** A new, normalised pattern named "<genre> <section type>".

        @param bars  clamped to 1..192
        @param seed  mixed with the section type and the settings' salt
    */
    static DrumPattern generate (const GenerationSettings& settings, SectionType type, std::int32_t bars, std::uint32_t seed);

    /** A new pattern of the previous one's type and length that keeps the hits of its locked lanes.
        " Mutated" is appended to the name, again at each call.
    */
    static DrumPattern mutate (const GenerationSettings& settings, const DrumPattern& previous, const LaneLocks& locks, std::uint32_t seed);
};

} // namespace pulsewright
