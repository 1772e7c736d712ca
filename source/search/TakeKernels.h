// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The search's inner loops: the dice of many takes side by side, and what their strokes are worth.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace pulsewright
{

/** What a candidate adds when it is played. */
struct WeighedStroke
{
    std::int32_t limit;            ///< as OfferedStroke has it
    std::int32_t weight;           ///< at most so much nearer (below 0) or farther
    std::int32_t rival    = -1;    ///< an earlier candidate of the bar that can match the same stroke of the target; -1: none
    std::int32_t together = 0;     ///< is added when both are played
    bool isRival          = false; ///< whether a later candidate has this one as its `rival`
};

/** Pure but for what the arguments point to. Allocates: never. */
struct TakeKernels
{
    static constexpr std::size_t streams = 64; ///< takes side by side

    static constexpr std::size_t stateSize   = 624; ///< words of a generator
    static constexpr std::size_t mostStrokes = 64;  ///< of a bar

    const char* name;

    /** Draws the first numbers of MT19937 generators, bit for bit the standard's.
        @param seeds    one a stream
        @param count    how many numbers of each; few are much cheaper than a generator's setting-up
        @param state    scratch: stateSize words a stream
        @param numbers  number n of stream s comes to lie at n * streams + s
    */
    void (*draw) (const std::uint32_t* seeds, std::size_t count, std::uint32_t* state, std::uint32_t* numbers);

    /** Takes every stream through a bar: one number for a candidate that is dropped, three for one that is played.
        @param positions  where each stream's next number is, as an index; moved on
        @param sums       the weights of what was played are added
        @returns          a bit for each stream whose sum is at most the limit
    */
    std::uint64_t (*weigh) (const WeighedStroke* strokes,
                            std::size_t numStrokes,
                            const std::uint32_t* numbers,
                            std::int32_t* positions,
                            std::int32_t* sums,
                            std::int32_t limit);

    /** All that this machine can run, the widest first. */
    static std::span<const TakeKernels* const> all() noexcept;
};

} // namespace pulsewright
