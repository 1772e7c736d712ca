// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Sorting what is nearly in order, where it is far quicker than the library's and allocates nothing.

#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace pulsewright
{

/** Stable. @param isBefore  a strict weak ordering */
template <typename Thing, typename Before>
void sortNearlySorted (std::vector<Thing>& things, Before&& isBefore)
{
    constexpr std::size_t nearly = 16; // steps for each of them; with more, the library takes over

    std::size_t stepsLeft = nearly * things.size();

    for (std::size_t next = 1; next < things.size(); ++next)
    {
        if (! isBefore (things[next], things[next - 1]))
            continue;

        const auto thing = things[next];
        auto place       = next;

        for (; place > 0 && isBefore (thing, things[place - 1]); --place)
            things[place] = things[place - 1];

        things[place] = thing;

        if (next - place > stepsLeft)
            return std::stable_sort (things.begin(), things.end(), isBefore);

        stepsLeft -= next - place;
    }
}

} // namespace pulsewright
