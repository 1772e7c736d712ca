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

/** A lower bound of the distance. It starts as if every wanted stroke were missing. Each played candidate then subtracts
    the most that it can match, or adds the cost of an extra stroke. When two candidates match the same stroke, what was
    subtracted twice is added again. So the sum is never above the distance (dual of the assignment problem).
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
