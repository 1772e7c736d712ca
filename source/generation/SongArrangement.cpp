// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "SongArrangement.h"

#include <algorithm>

namespace pulsewright
{

std::vector<DrumHit> flatten (const SongArrangement& song)
{
    std::size_t total = 0;
    for (const auto& section : song.sections)
        total += section.pattern.hits.size();

    std::vector<DrumHit> hits;
    hits.reserve (total);

    for (const auto& section : song.sections)
    {
        const auto offset = static_cast<double> (std::uint64_t { section.startBar } * beatsPerBar);

        for (auto hit : section.pattern.hits)
        {
            hit.start += offset;
            hits.push_back (hit);
        }
    }

    const auto startsEarlier = [] (const DrumHit& a, const DrumHit& b) { return a.start < b.start; };

    // The sections of a built song follow one another, so there is rarely anything to sort.
    if (! std::is_sorted (hits.begin(), hits.end(), startsEarlier))
        std::stable_sort (hits.begin(), hits.end(), startsEarlier);

    return hits;
}

} // namespace pulsewright
