// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "DrumPattern.h"

#include "NearlySorted.h"

#include <algorithm>
#include <array>
#include <tuple>

namespace pulsewright
{

std::string_view note::nameOf (std::uint32_t note) noexcept
{
    switch (note)
    {
        case kick: return "Kick";
        case sideStick: return "Side Stick";
        case snare: return "Snare";
        case secondSnare: return "Second Snare";
        case closedHat: return "Closed Hat";
        case lowTom: return "Low Tom";
        case openHat: return "Open Hat";
        case midTom: return "Mid Tom";
        case highTom: return "High Tom";
        default: return {};
    }
}

std::string_view nameOf (DrumLane lane) noexcept
{
    static constexpr std::array<std::string_view, laneCount> names { "Kick", "Snare", "Hats", "Perc" };

    const auto index = static_cast<std::size_t> (lane);
    return index < names.size() ? names[index] : std::string_view {};
}

//==============================================================================
namespace
{
    struct SectionTypeInfo
    {
        std::string_view name;
        float energyOffset;
    };

    // clang-format off
    constexpr std::array<SectionTypeInfo, sectionTypeCount> sectionTypes
    {{
        { "Intro",           -0.25f },
        { "Verse",            0.0f  },
        { "Pre-Chorus",       0.08f },
        { "Chorus",           0.16f },
        { "Verse Variation",  0.06f },
        { "Breakdown",       -0.34f },
        { "High Chorus",      0.28f },
        { "Outro",           -0.22f },
        { "Fill",             0.3f  }
    }};
    // clang-format on

    constexpr SectionTypeInfo unknownSectionType { "Section", 0.0f };

    const SectionTypeInfo& infoOf (SectionType type) noexcept
    {
        const auto index = static_cast<std::size_t> (type);
        return index < sectionTypes.size() ? sectionTypes[index] : unknownSectionType;
    }
} // namespace

std::string_view nameOf (SectionType type) noexcept
{
    return infoOf (type).name;
}

float energyOffsetOf (SectionType type) noexcept
{
    return infoOf (type).energyOffset;
}

//==============================================================================
namespace
{
    // Closer than this, in beats, two hits of one note are heard as a flam of the same stroke.
    constexpr double doubledNoteDistance = 0.02;

    bool playsBefore (const DrumHit& a, const DrumHit& b) noexcept
    {
        return std::tie (a.start, a.note, a.velocity) < std::tie (b.start, b.note, b.velocity);
    }
} // namespace

void normalise (DrumPattern& pattern)
{
    auto& hits           = pattern.hits;
    const auto lastStart = pattern.lastStart();

    for (auto& hit : hits)
        hit.start = std::max (0.0, std::min (lastStart, hit.start));

    sortNearlySorted (hits, playsBefore);

    // Each hit is held against the last one kept, of whatever note: a snare between two kicks keeps both.
    const auto doubles = [] (const DrumHit& kept, const DrumHit& hit)
    { return hit.note == kept.note && hit.start - kept.start < doubledNoteDistance; };

    auto kept = std::adjacent_find (hits.begin(), hits.end(), doubles); // up to here nothing moves

    if (kept == hits.end())
        return;

    for (auto hit = kept + 1; hit != hits.end(); ++hit)
        if (! doubles (*kept, *hit))
            *++kept = *hit;

    hits.erase (kept + 1, hits.end());
}

} // namespace pulsewright
