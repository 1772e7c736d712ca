// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What every bar of a groove is offered, worked out once for settings, section and length; dice decide the rest.

#pragma once

#include "DrumPattern.h"
#include "GenerationSettings.h"

#include <algorithm>
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

    /** How many hits the groove usually has at most. */
    std::size_t usualHits() const noexcept;

    /** The hit that a played candidate becomes. @param timingDraw, velocityDraw  24 bits each */
    DrumHit hitOf (const OfferedStroke& stroke, std::int32_t bar, std::uint32_t timingDraw, std::uint32_t velocityDraw) const noexcept
    {
        constexpr double timingBeats      = 0.07; // widest offset at full timing humanisation
        constexpr double humaniseVelocity = 36.0;
        constexpr int ghostDrop = 27, ghostCeiling = 70;

        double beat = static_cast<double> (bar) * beatsPerBar + stroke.beat;
        beat += stroke.swing;
        beat += bipolar (timingDraw) * timing * timingBeats * stroke.looseness;

        const int humanised = stroke.velocity + velocityChange (bipolar (velocityDraw) * velocity * humaniseVelocity);
        const int ghostly   = std::min (humanised - ghostDrop, ghostCeiling);

        return { .start    = std::max (0.0, std::min (lastStart, beat)),
                 .length   = stroke.length,
                 .note     = stroke.note,
                 .velocity = static_cast<std::uint32_t> (std::clamp (stroke.isGhost ? ghostly : humanised, 20, 127)),
                 .lane     = stroke.lane };
    }

    /** Appends the groove's hits, nearly in the order of time: normalise() does the rest.
        @param draw  gives the next 32 random bits; called mostDraws() times at most, also for numbers that are not used
    */
    template <typename Draw>
    void play (std::vector<DrumHit>& hits, Draw&& draw) const
    {
        std::array<DrumHit, mostStrokesOfABar> slots;
        std::array<std::uint32_t, 3 * mostStrokesOfABar> numbers; // of 24 bits, drawn ahead
        std::size_t ahead = 0;

        for (std::int32_t bar = 0; bar < numBars; ++bar)
        {
            const auto offered   = strokesOf (bar);
            const auto* next     = numbers.data();
            std::uint64_t played = 0;

            for (; ahead < 3 * offered.size(); ++ahead)
                numbers[ahead] = draw() >> 8;

            // One number for a candidate that is dropped and three for one that is played. What is dropped is made as well
            // and left out: nobody can foretell which it will be, and the processor would wait at every wrong guess.
            for (const auto& stroke : offered)
            {
                const bool isPlayed = next[0] < stroke.limit;
                slots[stroke.rank]  = hitOf (stroke, bar, next[1], next[2]);
                played |= std::uint64_t { isPlayed } << stroke.rank;
                next += isPlayed ? 3 : 1;
            }

            ahead -= static_cast<std::size_t> (next - numbers.data());
            std::copy_n (next, ahead, numbers.begin());

            for (; played != 0; played &= played - 1)
                hits.push_back (slots[static_cast<std::size_t> (std::countr_zero (played))]);
        }
    }

    /** Seeds a groove's random stream. @param salt  of the take */
    static std::uint32_t mixedSeed (std::uint32_t seed, SectionType type, std::uint32_t salt) noexcept;

private:
    /** A draw of 24 bits as -1 to just below 1; exact in single precision. */
    static double bipolar (std::uint32_t draw) noexcept
    {
        return static_cast<double> (2.0f * (static_cast<float> (static_cast<std::int32_t> (draw)) * 0x1p-24f) - 1.0f);
    }

    /** The whole part of a change of velocity. Clamped to the widest possible range first, because larger values do not fit an int. */
    static int velocityChange (double change) noexcept
    {
        constexpr double widest = 256.0;
        return static_cast<int> (std::min (widest, std::max (-widest, change)));
    }

    const std::int32_t numBars;
    const double lastStart;
    const double timing, velocity; // depths of the humanisation
    const std::int32_t period;     // bars that are so far apart are offered the same
    bool hasLastBar = false;       // whether the last bar is offered something of its own

    std::vector<OfferedStroke> strokes;
    std::vector<std::size_t> ends; // of each different bar's strokes; the last bar's own come last
};

} // namespace pulsewright
