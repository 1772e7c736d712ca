// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Takes for tests.

#pragma once

#include "generation/SongBuilder.h"
#include "generation/TakeCode.h"

#include <random>
#include <span>

namespace pulsewright
{

/** The take of a counter, at the opening settings as parameters have them. */
inline Take openingTake (std::uint32_t counter)
{
    Take take;
    take.counter       = counter;
    take.settings.seed = saltOf (counter);
    for (const auto& setting : allSettings)
        take.settings.*setting.field = snapPercent (take.settings.*setting.field);
    return take;
}

/** Any take that has a code, to the limits of its fields. */
inline Take randomTake (std::mt19937& random)
{
    const auto upTo = [&random] (std::uint32_t last) { return std::uniform_int_distribution<std::uint32_t> (0, last) (random); };

    auto take           = openingTake (0);
    take.kind           = static_cast<Take::Kind> (upTo (1));
    take.counter        = upTo (9) == 0 ? 0 : upTo (0xFFFFFFFFu);
    take.settings.genre = static_cast<Genre> (upTo (genreCount - 1));
    take.settings.seed  = saltOf (take.counter);

    for (const auto& setting : std::span (allSettings).first<numCodedSettings>())
        take.settings.*setting.field = snapPercent (static_cast<float> (upTo (1000)) / 1000.0f);

    if (take.kind == Take::Kind::groove)
    {
        take.section = static_cast<SectionType> (upTo (sectionTypeCount - 1));
        take.bars    = static_cast<std::int32_t> (upTo (191)) + 1;
        take.stream  = upTo (1) == 0 ? 0 : 100 + upTo (7);
    }
    else
        take.songBars = upTo (1) == 0 ? 0 : 16 + static_cast<std::int32_t> (upTo (368));

    take.structure = upTo (songStructureCount - 1);
    take.duration  = upTo (6);
    take.tempo     = 30 + static_cast<std::int32_t> (upTo (270));
    take.kit       = upTo (4);
    return take;
}

} // namespace pulsewright
