// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Take.h"

#include "GrooveGenerator.h"
#include "SongBuilder.h"

namespace pulsewright
{

DrumPattern patternOf (const Take& take)
{
    if (take.kind == Take::Kind::song)
        return songOf (take).sections.front().pattern;

    auto pattern = GrooveGenerator::generate (take.settings, take.section, take.bars, take.stream);

    // A section that was taken out of a song keeps its label.
    if (const auto label = SongBuilder::sectionLabel (take.structure, take.stream); ! label.empty())
        pattern.name = label;

    return pattern;
}

SongArrangement songOf (const Take& take)
{
    return SongBuilder::buildSong (take.settings, songBarsOf (take), take.structure);
}

Take sectionOf (const Take& song, std::uint32_t index, const DrumPattern& section) noexcept
{
    auto take     = song;
    take.kind     = Take::Kind::groove;
    take.section  = section.sectionType;
    take.bars     = section.bars;
    take.stream   = SongBuilder::firstSectionSeed + index;
    take.songBars = 0;
    return take;
}

Take songBeside (const Take& take) noexcept
{
    auto song    = take;
    song.kind    = Take::Kind::song;
    song.section = Take().section;
    song.bars    = Take().bars;
    song.stream  = Take().stream;
    return song;
}

std::int32_t songBarsOf (const Take& take) noexcept
{
    if (take.songBars > 0)
        return take.songBars;

    return SongBuilder::songBars (SongBuilder::durationSeconds (take.settings.genre, take.duration), take.tempo);
}

} // namespace pulsewright
