// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "SongBuilder.h"

#include "GenreProfile.h"
#include "GrooveGenerator.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <span>

namespace pulsewright
{

namespace
{
    struct TemplateEntry
    {
        std::string_view label;
        SectionType type;
        int bars; ///< its share of the song, relative to the others
    };

    using enum SectionType;

    // clang-format off
    constexpr TemplateEntry classic[]
    {
        { "Intro",        intro,          4 },
        { "Verse A",      verse,          8 },
        { "Pre-Chorus",   preChorus,      4 },
        { "Chorus",       chorus,         8 },
        { "Verse B",      verseVariation, 8 },
        { "Breakdown",    breakdown,      4 },
        { "Chorus High",  highChorus,     8 },
        { "Outro",        outro,          4 }
    };

    constexpr TemplateEntry verseChorus[]
    {
        { "Intro",        intro,          4 },
        { "Verse A",      verse,          8 },
        { "Chorus A",     chorus,         8 },
        { "Verse B",      verseVariation, 8 },
        { "Chorus B",     highChorus,     8 },
        { "Outro",        outro,          4 }
    };

    constexpr TemplateEntry club[]
    {
        { "DJ Intro",     intro,          8 },
        { "Groove",       verse,          8 },
        { "Breakdown",    breakdown,      8 },
        { "Drop A",       chorus,        16 },
        { "Drop B",       highChorus,    16 },
        { "DJ Outro",     outro,          8 }
    };

    constexpr TemplateEntry minimal[]
    {
        { "Intro",        intro,          4 },
        { "Main A",       verse,         12 },
        { "Main B",       highChorus,    12 },
        { "Outro",        outro,          4 }
    };
    // clang-format on

    struct Structure
    {
        std::string_view name;
        std::span<const TemplateEntry> entries;
    };

    constexpr std::array<Structure, songStructureCount> structures {
        { { "Classic", classic }, { "Verse / Chorus", verseChorus }, { "Club", club }, { "Minimal", minimal } }
    };

    static_assert (! structures.back().name.empty(), "a structure has no table: one for each that songStructureCount counts");

    /** A structure value just past the last one is Classic; further out there is a name but no music. */
    Structure structureOf (std::uint32_t value) noexcept
    {
        if (value < structures.size())
            return structures[value];

        if (value == structures.size())
            return structures.front();

        return { structures.front().name, {} };
    }

    /** The nearest multiple of four bars, halves upwards. */
    std::int32_t barsInGroupsOfFour (double seconds, double tempoBpm) noexcept
    {
        constexpr double secondsPerBarAtOneBpm = 240.0;
        const double groups                    = std::round (seconds * tempoBpm / secondsPerBarAtOneBpm * 0.25);
        return static_cast<std::int32_t> (std::min (groups * 4.0, static_cast<double> (SongBuilder::maxBars)));
    }

    /** Largest-remainder sharing: every entry gets at least one bar, ties go to the earliest. */
    std::vector<std::int32_t> shareOut (std::int32_t totalBars, std::span<const TemplateEntry> entries)
    {
        int templateBars = 0;
        for (const auto& entry : entries)
            templateBars += entry.bars;

        std::vector<std::int32_t> bars;
        std::vector<double> remainders;

        for (const auto& entry : entries)
        {
            const double share = static_cast<double> (totalBars) * entry.bars / templateBars;
            bars.push_back (std::max (1, static_cast<std::int32_t> (std::floor (share))));
            remainders.push_back (share - std::floor (share));
        }

        for (auto given = std::accumulate (bars.begin(), bars.end(), 0); given < totalBars; ++given)
        {
            const auto largest = std::max_element (remainders.begin(), remainders.end());
            ++bars[static_cast<std::size_t> (largest - remainders.begin())];
            *largest = -1.0; // fewer bars are left than there are entries
        }

        return bars;
    }
} // namespace

//==============================================================================
SongArrangement SongBuilder::buildSong (const GenerationSettings& settings, std::int32_t bars, std::uint32_t structure)
{
    if (bars < 1)
    {
        const auto& profile = profileOf (settings.genre);
        bars                = barsInGroupsOfFour (std::max (1, profile.averageSongSeconds), profile.tempoBpm);
    }

    const auto totalBars       = std::clamp (bars, minBars, maxBars);
    const auto [name, entries] = structureOf (structure);

    SongArrangement song;
    song.name.append (nameOf (settings.genre)).append (" ").append (std::to_string (totalBars)).append (" Bar ").append (name).append (" Song");
    song.totalBars = static_cast<std::uint32_t> (totalBars);
    song.seed      = settings.seed;

    if (entries.empty())
        return song;

    const auto sectionBars = shareOut (totalBars, entries);
    std::uint32_t startBar = 0;

    song.sections.reserve (entries.size());

    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        const auto& entry = entries[i];

        SongSection section;
        section.name         = entry.label;
        section.startBar     = startBar;
        section.pattern      = GrooveGenerator::generate (settings, entry.type, sectionBars[i], firstSectionSeed + static_cast<std::uint32_t> (i));
        section.pattern.name = entry.label;

        song.sections.push_back (std::move (section));
        startBar += static_cast<std::uint32_t> (sectionBars[i]);
    }

    return song;
}

std::int32_t SongBuilder::songBars (std::int32_t seconds, std::int32_t tempoBpm) noexcept
{
    const double usableSeconds = seconds < 2 ? 1.0 : seconds;
    const double usableTempo   = tempoBpm < 2 ? 1.0 : tempoBpm;

    return std::clamp (barsInGroupsOfFour (usableSeconds, usableTempo), minBars, maxBars);
}

std::int32_t SongBuilder::durationSeconds (Genre genre, std::uint32_t durationIndex) noexcept
{
    const auto seconds = durationIndex < songDurations.size() ? songDurations[durationIndex].seconds : 0;
    return seconds > 0 ? seconds : profileOf (genre).averageSongSeconds;
}

std::string_view SongBuilder::structureName (std::uint32_t structure) noexcept
{
    return structureOf (structure).name;
}

std::string_view SongBuilder::sectionLabel (std::uint32_t structure, std::uint32_t seed) noexcept
{
    const auto entries = structureOf (structure).entries;
    const auto index   = seed - firstSectionSeed; // wraps to a large number for a seed below firstSectionSeed
    return index < entries.size() ? entries[index].label : std::string_view();
}

} // namespace pulsewright
