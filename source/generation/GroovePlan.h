// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What every bar of a groove is offered, worked out once for settings, section and length; dice decide the rest.

#pragma once

#include "DrumPattern.h"
#include "GenerationSettings.h"

#include <array>
#include <bit>
#include <cstdint>
#include <span>
#include <vector>

namespace pulsewright
{

/** A candidate, with all that the settings and the section make of it. */
struct OfferedStroke
{
    std::uint32_t limit; ///< 0 to 2^24; it is played when the 24 bits of its draw lie below
    std::uint32_t note;
    DrumLane lane;
    int velocity;      ///< before it is humanised
    bool isGhost;      ///< quieter in the end
    std::uint8_t rank; ///< its place among its bar's strokes in the order of time
    double beat;       ///< from the start of the bar, without swing
    double swing;      ///< its delay in beats
    double looseness;  ///< how much of the timing humanisation its lane follows
    double length;     ///< of the hit, in beats
};

/** Pure: no state but what the constructor makes. Nothing fails; what lies out of range is clamped. */
class GroovePlan
{
public:
    /** More than any bar is offered: a bar's strokes fit into the bits of a word. */
    static constexpr std::size_t mostStrokesOfABar = 64;

    /** @param bars  clamped to 1..192 */
    GroovePlan (const GenerationSettings& settings, SectionType type, std::int32_t bars);

    std::int32_t bars() const noexcept { return numBars; }

    /** A bar's candidates in the order in which they draw. @param bar  0 to bars() - 1 */
    std::span<const OfferedStroke> strokesOf (std::int32_t bar) const noexcept;

    /** How many numbers the whole groove draws at most: three for each candidate. */
    std::size_t mostDraws() const noexcept;

    /** The hit that a played candidate becomes. @param timingDraw, velocityDraw  24 bits each */
    DrumHit hitOf (const OfferedStroke& stroke, std::int32_t bar, std::uint32_t timingDraw, std::uint32_t velocityDraw) const noexcept;

    /** Appends the groove's hits, nearly in the order of time: normalise() does the rest.
        @param draw  gives the next 32 random bits
    */
    template <typename Draw>
    void play (std::vector<DrumHit>& hits, Draw&& draw) const
    {
        std::array<DrumHit, mostStrokesOfABar> slots;

        for (std::int32_t bar = 0; bar < numBars; ++bar)
        {
            std::uint64_t played = 0;

            // One number for a candidate that is dropped and three for one that is played.
            for (const auto& stroke : strokesOf (bar))
                if (const std::uint32_t dropDecision = draw() >> 8; dropDecision < stroke.limit)
                {
                    const std::uint32_t timingDraw   = draw() >> 8;
                    const std::uint32_t velocityDraw = draw() >> 8;
                    slots[stroke.rank]               = hitOf (stroke, bar, timingDraw, velocityDraw);
                    played |= std::uint64_t { 1 } << stroke.rank;
                }

            for (; played != 0; played &= played - 1)
                hits.push_back (slots[static_cast<std::size_t> (std::countr_zero (played))]);
        }
    }

    /** Seeds a groove's random stream. @param salt  of the take */
    static std::uint32_t mixedSeed (std::uint32_t seed, SectionType type, std::uint32_t salt) noexcept;

private:
    const std::int32_t numBars;
    const double lastStart;
    const double timing, velocity; // depths of the humanisation
    const std::int32_t period;     // bars that are so far apart are offered the same
    bool hasLastBar = false;       // whether the last bar is offered something of its own

    std::vector<OfferedStroke> strokes;
    std::vector<std::size_t> ends; // of each different bar's strokes; the last bar's own come last
};

} // namespace pulsewright
