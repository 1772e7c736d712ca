// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A whole song: labelled sections in playing order, each with its own pattern.

#pragma once

#include "DrumPattern.h"

#include <cstdint>
#include <string>
#include <vector>

namespace pulsewright
{

struct SongSection
{
    std::string name;           ///< the label, for example "Verse A"
    std::uint32_t startBar = 0; ///< counted from 0 in the song
    DrumPattern pattern;        ///< named by the label, as long as the section

    bool operator== (const SongSection&) const = default;
};

struct SongArrangement
{
    std::string name;
    std::uint32_t totalBars = 0; ///< 16 to 384 once built
    std::uint32_t seed      = 1; ///< the salt it was built with
    std::vector<SongSection> sections;

    double lengthInBeats() const noexcept { return static_cast<double> (totalBars) * beatsPerBar; }

    bool operator== (const SongArrangement&) const = default;
};

/** Every hit of the song with its start counted in beats from the song's start, sorted by start.
    Hits that start together keep the order of their sections and patterns.
*/
std::vector<DrumHit> flatten (const SongArrangement& song);

} // namespace pulsewright
