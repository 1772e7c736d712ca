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

std::int32_t songBarsOf (const Take& take) noexcept
{
    if (take.songBars > 0)
        return take.songBars;

    return SongBuilder::songBars (SongBuilder::durationSeconds (take.settings.genre, take.duration), take.tempo);
}

} // namespace pulsewright
