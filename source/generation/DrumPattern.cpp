// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "DrumPattern.h"

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

    /** Stable. Hits that are generated are nearly in order, where this is far quicker than the library's. */
    void sort (std::vector<DrumHit>& hits)
    {
        constexpr std::size_t nearly = 16; // steps a hit

        std::size_t stepsLeft = nearly * hits.size();

        for (std::size_t next = 1; next < hits.size(); ++next)
        {
            auto place = next;

            if (! playsBefore (hits[next], hits[next - 1]))
                continue;

            const auto hit = hits[next];

            for (; place > 0 && playsBefore (hit, hits[place - 1]); --place)
                hits[place] = hits[place - 1];

            hits[place] = hit;

            if (next - place > stepsLeft)
                return std::stable_sort (hits.begin(), hits.end(), playsBefore);

            stepsLeft -= next - place;
        }
    }
} // namespace

void normalise (DrumPattern& pattern)
{
    auto& hits           = pattern.hits;
    const auto lastStart = pattern.lastStart();

    for (auto& hit : hits)
        hit.start = std::max (0.0, std::min (lastStart, hit.start));

    sort (hits);

    // Each hit is held against the last one kept, of whatever note: a snare between two kicks keeps both.
    std::size_t kept = 0;

    for (const auto& hit : hits)
        if (kept == 0 || hit.note != hits[kept - 1].note || hit.start - hits[kept - 1].start >= doubledNoteDistance)
            hits[kept++] = hit;

    hits.resize (kept);
}

} // namespace pulsewright
