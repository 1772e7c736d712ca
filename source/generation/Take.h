// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A take as one value: all that decides a groove or a song, so that it can be kept, sent and played again.

#pragma once

#include "DrumPattern.h"
#include "GenerationSettings.h"
#include "SongArrangement.h"

#include <cstdint>

namespace pulsewright
{

/** What one press of GENERATE or BUILD makes, or a section of a song that was taken out of it.

    A groove also describes a song, with the same settings and counter; a song also describes a groove, its first section.
    Locks and the playback switch decide nothing of either.
*/
struct Take
{
    enum class Kind : std::uint32_t
    {
        groove = 0,
        song   = 1
    };

    Kind kind             = Kind::groove;
    std::uint32_t counter = 0;      ///< what the seed counter stood at; 0 is the take that an instance opens with
    GenerationSettings settings {}; ///< each value a thousandth, as snapPercent() gives it; the seed is the counter's salt

    // The groove's.
    SectionType section  = SectionType::verse;
    std::int32_t bars    = 2; ///< 1 to 192
    std::uint32_t stream = 0; ///< the seed argument: 0, or SongBuilder::firstSectionSeed + i for section i of a song

    // The song's.
    std::uint32_t structure = 0; ///< 0 to 3
    std::uint32_t duration  = 0; ///< index into songDurations
    std::int32_t songBars   = 0; ///< 16 to 384; 0: as many as duration and tempo make

    std::int32_t tempo = 90; ///< whole beats per minute, 30 to 300
    std::uint32_t kit  = 0;  ///< index into kitNames

    static constexpr std::int32_t minTempo  = 30;
    static constexpr std::int32_t maxTempo  = 300;
    static constexpr std::uint32_t kitCount = 5;

    bool operator== (const Take&) const = default;
};

/** The take's groove. For a song: its first section. Pure; any thread. */
DrumPattern patternOf (const Take& take);

/** The take's song. For a groove: the song that has the same settings and counter. Pure; any thread. */
SongArrangement songOf (const Take& take);

/** A section of a song as a groove of its own. @param section  the one that the song has there */
Take sectionOf (const Take& song, std::uint32_t index, const DrumPattern& section) noexcept;

/** For a groove: the take of the song that has the same settings and counter. For a song: the song itself. */
Take songBeside (const Take& take) noexcept;

/** The length of the take's song in bars. */
std::int32_t songBarsOf (const Take& take) noexcept;

} // namespace pulsewright
