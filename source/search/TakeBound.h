// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// How near a groove can come at best, from what is played alone: what lies farther need not be generated.

#pragma once

#include "GrooveTarget.h"
#include "TakeKernels.h"

#include "generation/GroovePlan.h"

#include <cstdint>
#include <span>
#include <vector>

namespace pulsewright
{

/** A lower bound of the distance as a sum over what is played: everything that is wanted is missing at first, and each
    candidate that is played takes off at most what it can stand for, or adds what it costs as a stroke too many. Where two
    are after the same stroke, what they take off twice is added again. By the duality of assignment problems no sum of
    these is above the distance.
*/
class TakeBound
{
public:
    /** The bound counts in so many smallest steps, so that 32 bits hold it. */
    static constexpr int shift = 3;

    TakeBound (const GroovePlan& plan, const GrooveTarget& target);

    /** What a groove without a stroke begins with. */
    std::int32_t start() const noexcept { return base; }

    struct Bar
    {
        std::vector<WeighedStroke> strokes;
        std::int32_t bestLater = 0; ///< at most so much is taken off in the bars that follow; 0 or below
    };

    const std::vector<Bar>& bars() const noexcept { return weighedBars; }

    struct Possible;

private:
    void weighBar (std::span<const OfferedStroke> offered, std::span<const Possible> all, std::size_t first, const GrooveTarget& target);

    std::int32_t base = 0;
    std::vector<Bar> weighedBars;
};

} // namespace pulsewright
