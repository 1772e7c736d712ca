// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What a search looks for, lane by lane, and how far a groove is from it.

#pragma once

#include "generation/DrumPattern.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pulsewright
{

/** A distance in the smallest step that two grooves can differ by; whole, so that it is the same on every machine. */
using Distance = std::int64_t;

/** A stroke of an example as the measure sees it. */
struct TargetStroke
{
    std::int32_t tick; ///< of 960 a beat; a stroke just before the end of the pattern is an early one of its first beat
    std::int32_t mass; ///< how much it counts, by its loudness: 127 to 254
};

/** One lane of what is looked for. */
struct TargetLane
{
    enum class Kind
    {
        any,     ///< whatever is played there
        example, ///< these strokes
        shape    ///< a sign for each sixteenth
    };

    Kind kind = Kind::any;
    std::vector<TargetStroke> strokes;
    std::string signs;
};

/** The measure. Between two grooves it is what it costs to turn one into the other, as Victor and Purpura's distance
    between spike trains (J. Neurophysiology 76, 1996) with loudness beside time: strokes are taken away, added, moved and
    struck harder or softer, in the order of time. docs/manual.md describes it.
*/
class GrooveTarget
{
public:
    static constexpr std::int32_t ticksPerBeat = 960;

    /** A move by a sixteenth costs as much as taking a stroke away and adding another. */
    static constexpr std::int32_t reach = ticksPerBeat / 4;

    /** The distance of one extra kick of velocity 127, in smallest steps. */
    static constexpr double unit = 254.0 * reach * 2.0;

    /** The weight of a hit: 254 at velocity 127, 127 at velocity 0, linear between. @param velocity  0 to 127 */
    static constexpr std::int32_t massOf (std::uint32_t velocity) noexcept
    {
        return 127 + static_cast<std::int32_t> (velocity < 127 ? velocity : 127);
    }

    /** How much a lane counts. */
    static constexpr Distance weightOf (std::size_t lane) noexcept { return lane < 2 ? 2 : 1; }

    /** Of this many bars. @param bars  1 to 192 */
    explicit GrooveTarget (std::int32_t bars) : numBars (bars) {}

    std::int32_t bars() const noexcept { return numBars; }
    const TargetLane& lane (std::size_t index) const noexcept { return lanes[index]; }

    /** Asks for the lanes of an example: repeated when it is shorter, folded when it is longer.
        @param exampleBars  its length, from 1
    */
    void setExample (const std::vector<DrumHit>& hits, std::int32_t exampleBars);

    /** Asks for a shape in one lane, repeated to the length.
        @param signs  of shapeSigns, whole bars of sixteenths
    */
    void setShape (DrumLane lane, std::string_view signs);

    /** A stroke must be there; must not; may be; a soft one; an accent. */
    static constexpr std::string_view shapeSigns = "x.-o#";
    static constexpr std::uint32_t loudestSoft = 79, softestAccent = 105;

    /** The column of the grid in which a hit is shown, a sixteenth each. */
    static std::size_t columnOf (double start, std::int32_t bars) noexcept;

    /** What a sign costs when nothing is played. */
    static Distance missing (char sign) noexcept;

    /** What a sign costs when this is the loudest hit; nothing for one that must not be. */
    static Distance misplayed (char sign, std::uint32_t loudest) noexcept;

    /** The cheapest way of making one stroke of another. */
    static Distance between (const TargetStroke& a, const TargetStroke& b) noexcept;

    /** Memory for distanceTo(), so that it allocates nothing once it is warm. */
    struct Scratch
    {
        std::array<std::vector<TargetStroke>, laneCount> strokes;
        std::vector<Distance> row;
        std::vector<std::uint32_t> loudest;
    };

    /** @param pattern  normalised, as long as the target */
    Distance distanceTo (const DrumPattern& pattern, Scratch& scratch) const;

    /** Where a time lies. */
    static std::int32_t tickOf (double start, std::int32_t bars) noexcept;

private:
    Distance distanceOfShape (const TargetLane& wanted, std::size_t lane, const DrumPattern& pattern, Scratch& scratch) const;

    std::int32_t numBars;
    std::array<TargetLane, laneCount> lanes;
};

} // namespace pulsewright
