// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// One generated clip: lanes, hits and the pattern that holds them.

#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pulsewright
{

//==============================================================================
/** An instrument row. A lane carries several notes, so a hit stores its note apart from its lane. */
enum class DrumLane : std::uint32_t
{
    kick  = 0,
    snare = 1,
    hats  = 2,
    perc  = 3
};

inline constexpr std::uint32_t laneCount = 4;

/** The display name of one of the four lanes; empty for any other value. */
std::string_view nameOf (DrumLane lane) noexcept;

/** The General MIDI drum notes that the generator plays. */
namespace note
{
    inline constexpr std::uint32_t kick        = 36;
    inline constexpr std::uint32_t sideStick   = 37; // perc lane
    inline constexpr std::uint32_t snare       = 38;
    inline constexpr std::uint32_t secondSnare = 40; // snare lane: ghosts and pickups
    inline constexpr std::uint32_t closedHat   = 42;
    inline constexpr std::uint32_t lowTom      = 45; // perc lane, as are the other toms
    inline constexpr std::uint32_t openHat     = 46;
    inline constexpr std::uint32_t midTom      = 47;
    inline constexpr std::uint32_t highTom     = 50;

    /** What a piano roll calls it; empty for any other note. */
    std::string_view nameOf (std::uint32_t note) noexcept;
} // namespace note

//==============================================================================
/** What a stretch of music is for; it moves the energy and density of what is generated. */
enum class SectionType : std::uint32_t
{
    intro          = 0,
    verse          = 1,
    preChorus      = 2,
    chorus         = 3,
    verseVariation = 4,
    breakdown      = 5,
    highChorus     = 6,
    outro          = 7,
    fill           = 8
};

inline constexpr std::uint32_t sectionTypeCount = 9;

/** The display name, or "Section" for a value outside the nine. */
std::string_view nameOf (SectionType type) noexcept;

/** How far the section lies above or below the player's energy, -0.34 to 0.3; 0 for unknown values. */
float energyOffsetOf (SectionType type) noexcept;

//==============================================================================
inline constexpr int beatsPerBar = 4;

/** The choices of a groove's length in bars. There is none of six: the index is what hosts automate and states store. */
inline constexpr std::array<int, 7> patternLengths { 1, 2, 3, 4, 5, 7, 8 };

/** One drum note. Times are in beats (quarter notes) from the start of the pattern. */
struct DrumHit
{
    double start           = 0.0;
    double length          = 0.11;
    std::uint32_t note     = note::kick;
    std::uint32_t velocity = 100; ///< 20 to 127 when generated
    DrumLane lane          = DrumLane::kick;

    bool operator== (const DrumHit&) const = default;
};

/** A clip of drumming in 4/4.

    Once normalised, the hits lie inside the pattern and are sorted by start, note and velocity; of neighbours that have
    the same note and lie less than 0.02 beat apart, the first one is kept.
*/
struct DrumPattern
{
    static constexpr std::int32_t minBars = 1;
    static constexpr std::int32_t maxBars = 192;

    std::string name;
    SectionType sectionType = SectionType::verse;
    std::int32_t bars       = 2;
    std::uint32_t seed      = 1; ///< the mixed seed of its random stream; 1 before generation
    std::vector<DrumHit> hits;

    double lengthInBeats() const noexcept { return static_cast<double> (bars) * beatsPerBar; }

    /** The last place where a hit may start, in beats. */
    double lastStart() const noexcept { return lastStartIn (bars); }

    static constexpr double lastStartIn (std::int32_t bars) noexcept { return static_cast<double> (bars) * beatsPerBar - 0.001; }

    bool operator== (const DrumPattern&) const = default;
};

/** Clamps every start into the pattern, sorts the hits and drops doubled notes. */
void normalise (DrumPattern& pattern);

} // namespace pulsewright
