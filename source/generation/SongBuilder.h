// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Spreads a song's length over a structure and generates every section.

#pragma once

#include "GenerationSettings.h"
#include "SongArrangement.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace pulsewright
{

inline constexpr std::uint32_t songStructureCount = 4;

/** A choice of how long a song is. */
struct SongDuration
{
    std::string_view name;
    std::int32_t seconds; ///< 0: the genre's average
};

/** The index is what hosts automate and states store. 4:30 is missing on purpose; never insert it. */
inline constexpr std::array<SongDuration, 7> songDurations {
    { { "Genre average", 0 }, { "2:00", 120 }, { "2:30", 150 }, { "3:00", 180 }, { "3:30", 210 }, { "4:00", 240 }, { "5:00", 300 } }
};

/** Builds songs. Pure functions: no state, any thread. Nothing fails; what lies out of range is clamped. */
struct SongBuilder
{
    static constexpr std::int32_t minBars = 16;
    static constexpr std::int32_t maxBars = 384;

    /** The seed argument of the first section; the next one has the next. */
    static constexpr std::uint32_t firstSectionSeed = 100;

    /** @param bars       clamped to 16..384; below 1 the genre's own tempo and average length decide
        @param structure  0 Classic, 1 Verse / Chorus, 2 Club, 3 Minimal; 4 is Classic again, and
                          anything above gives a song without sections
    */
    static SongArrangement buildSong (const GenerationSettings& settings, std::int32_t bars, std::uint32_t structure);

    /** The length in bars of a song of so many seconds: a multiple of 4 from 16 to 384. */
    static std::int32_t songBars (std::int32_t seconds, std::int32_t tempoBpm) noexcept;

    /** The length in seconds of a duration choice, 0 being the genre's average. */
    static std::int32_t durationSeconds (Genre genre, std::uint32_t durationIndex) noexcept;

    /** The name of structure 0 to 3, and of Classic for any other value. */
    static std::string_view structureName (std::uint32_t structure) noexcept;

    /** The label of the section with this seed argument; empty where the structure has none. */
    static std::string_view sectionLabel (std::uint32_t structure, std::uint32_t seed) noexcept;
};

} // namespace pulsewright
