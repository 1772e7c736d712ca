// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "GrooveGenerator.h"

#include "GroovePlan.h"

#include <algorithm>
#include <iterator>
#include <random>

namespace pulsewright
{

DrumPattern GrooveGenerator::generate (const GenerationSettings& settings, SectionType type, std::int32_t bars, std::uint32_t seed)
{
    constexpr std::size_t mostHitsOfABar = 32; // a guess that is right for nearly every setting

    const GroovePlan plan (settings, type, bars);

    DrumPattern pattern;
    pattern.name.append (nameOf (settings.genre)).append (" ").append (nameOf (type));
    pattern.sectionType = type;
    pattern.bars        = plan.bars();
    pattern.seed        = GroovePlan::mixedSeed (seed, type, settings.seed);
    pattern.hits.reserve (static_cast<std::size_t> (pattern.bars) * mostHitsOfABar);

    std::mt19937 engine (pattern.seed);
    plan.play (pattern.hits, [&engine] { return static_cast<std::uint32_t> (engine()); });
    normalise (pattern);
    return pattern;
}

DrumPattern GrooveGenerator::mutate (const GenerationSettings& settings, const DrumPattern& previous, const LaneLocks& locks, std::uint32_t seed)
{
    const auto isLocked = [&locks] (const DrumHit& hit)
    {
        const auto lane = static_cast<std::size_t> (hit.lane);
        return lane < locks.size() && locks[lane];
    };

    auto mutated = generate (settings, previous.sectionType, previous.bars, seed);
    mutated.name = previous.name + " Mutated";

    std::erase_if (mutated.hits, isLocked);

    // Lane by lane: normalise sorts stably, so the order of equal hits is the order kept here.
    for (std::size_t lane = 0; lane < locks.size(); ++lane)
        if (locks[lane])
            std::copy_if (previous.hits.begin(),
                          previous.hits.end(),
                          std::back_inserter (mutated.hits),
                          [lane] (const DrumHit& hit) { return static_cast<std::size_t> (hit.lane) == lane; });

    normalise (mutated);
    return mutated;
}

} // namespace pulsewright
