// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What every pattern and every song must hold, whatever it was made from.

#pragma once

#include "FuzzCheck.h"

#include "generation/SongBuilder.h"

#include <tuple>

namespace pulsewright::fuzz
{

inline bool areDoubled (const DrumHit& earlier, const DrumHit& later)
{
    return earlier.note == later.note && later.start - earlier.start < 0.02;
}

/** A normalised pattern: inside its bars, in order, and no hit doubles the one before it. */
inline void checkNormalised (const DrumPattern& pattern)
{
    for (std::size_t i = 0; i < pattern.hits.size(); ++i)
    {
        const auto& hit = pattern.hits[i];
        check (hit.start >= 0.0 && hit.start <= pattern.lengthInBeats() - 0.001, "a hit starts inside its pattern");

        if (i == 0)
            continue;

        const auto& before = pattern.hits[i - 1];
        check (std::tie (before.start, before.note, before.velocity) <= std::tie (hit.start, hit.note, hit.velocity), "hits are in order");
        check (! areDoubled (before, hit), "no hit doubles the one before it");
    }
}

/** A pattern that the generator has made. */
inline void checkGenerated (const DrumPattern& pattern)
{
    checkNormalised (pattern);
    check (pattern.bars >= 1 && pattern.bars <= 192, "a pattern has 1 to 192 bars");

    for (const auto& hit : pattern.hits)
    {
        check (hit.velocity >= 20 && hit.velocity <= 127, "a velocity is 20 to 127");
        check (hit.length > 0.0 && hit.length < 0.2, "a hit is a short stroke");
        check (! nameOf (hit.lane).empty(), "a hit lies in one of the lanes");
    }
}

/** A song that the builder has made: its sections follow one another and fill it. */
inline void checkSong (const SongArrangement& song)
{
    check (song.totalBars >= 16 && song.totalBars <= 384, "a song has 16 to 384 bars");
    std::uint32_t bars = 0;

    for (const auto& section : song.sections)
    {
        check (section.startBar == bars, "a section begins where the one before it ends");
        check (section.pattern.name == section.name, "a section's pattern has its name");
        checkGenerated (section.pattern);
        bars += static_cast<std::uint32_t> (section.pattern.bars);
    }

    check (song.sections.empty() || bars == song.totalBars, "the sections fill the song");
}

} // namespace pulsewright::fuzz
