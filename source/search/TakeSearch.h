// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Looks through takes for the grooves nearest to a target.

#pragma once

#include "GrooveTarget.h"
#include "TakeKernels.h"

#include "generation/GenerationSettings.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

namespace pulsewright
{

struct TakeQuery
{
    std::vector<GenerationSettings> settings; ///< each is tried for every take; those of one style side by side, in the order of styles
    SectionType section     = SectionType::verse;
    std::uint32_t firstTake = 1, lastTake = 1; ///< both included
    std::size_t top  = 10;                     ///< how many to find
    std::size_t jobs = 1;                      ///< threads
};

struct FoundTake
{
    Distance distance    = 0;
    std::size_t settings = 0; ///< index into the query's
    std::uint32_t take   = 0;
    DrumPattern pattern;
};

struct TakesFound
{
    std::uint64_t searched = 0;    ///< grooves: takes by settings
    bool isWhole           = true; ///< false when it was stopped
    std::vector<FoundTake> takes;  ///< the nearest first, ties by style, take and settings; equal grooves once
};

/** Blocks until all is searched or `stop` has become true. The answer is the same for any number of jobs and any kind of
    vectors. Nothing is allocated for a take that is not among the nearest so far.
    @param target   as long as the grooves that are looked for
    @param onShare  called now and then on this thread, with 0 to 1
*/
TakesFound findTakes (const TakeQuery& query,
                      const GrooveTarget& target,
                      const std::atomic<bool>& stop,
                      const std::function<void (double)>& onShare,
                      const TakeKernels& kernels = *TakeKernels::all().front());

} // namespace pulsewright
