// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The search's inner loops for one kind of vectors. As for the kit's, nothing here may call an inline function that is
// not made for these vectors alone.

#pragma once

#include "TakeKernels.h"

#include <xsimd/xsimd.hpp>

namespace pulsewright
{

template <typename Architecture>
class TakeKernelsFor
{
public:
    static constexpr TakeKernels kernels (const char* name) noexcept { return { name, draw, weigh }; }

private:
    using Words    = xsimd::batch<std::uint32_t, Architecture>;
    using Integers = xsimd::batch<std::int32_t, Architecture>;

    static constexpr std::size_t streams  = TakeKernels::streams;
    static constexpr std::size_t width    = Words::size;
    static constexpr std::size_t vectors  = 4; // side by side: each step of a generator waits for the one before
    static constexpr std::size_t together = vectors * width;
    static_assert (streams % together == 0);

    //==============================================================================
    // MT19937, as the C++ standard defines mersenne_twister_engine.
    static constexpr std::size_t stateSize = TakeKernels::stateSize, shiftSize = 397;

    static Words load (const std::uint32_t* words) noexcept { return Words::load_unaligned (words); }

    static Words seeded (const Words& before, std::size_t index) noexcept
    {
        return (before ^ (before >> 30)) * Words (1812433253u) + Words (static_cast<std::uint32_t> (index));
    }

    static Words twisted (const Words& word, const Words& next, const Words& shifted) noexcept
    {
        const auto joined = (word & Words (0x80000000u)) | (next & Words (0x7FFFFFFFu));
        const auto isOdd  = Words (0u) - (next & Words (1u));
        return shifted ^ (joined >> 1) ^ (isOdd & Words (0x9908B0DFu));
    }

    static Words tempered (Words word) noexcept
    {
        word = word ^ (word >> 11);
        word = word ^ ((word << 7) & Words (0x9D2C5680u));
        word = word ^ ((word << 15) & Words (0xEFC60000u));
        return word ^ (word >> 18);
    }

    static void draw (const std::uint32_t* seeds, std::size_t count, std::uint32_t* state, std::uint32_t* numbers)
    {
        for (std::size_t first = 0; first < streams; first += together)
            drawTogether (seeds + first, count, state + first, numbers + first);
    }

    static void drawTogether (const std::uint32_t* seeds, std::size_t count, std::uint32_t* state, std::uint32_t* numbers)
    {
        // These come straight out of the setting-up. When they suffice, the middle of the state is not kept.
        constexpr std::size_t mostEarly = stateSize - shiftSize;
        const auto early                = count < mostEarly ? count : mostEarly;
        const bool keepsAll             = count > mostEarly;

        const auto at = [] (auto* words, std::size_t index, std::size_t v) { return words + index * streams + v * width; };

        Words last[vectors];

        for (std::size_t v = 0; v < vectors; ++v)
        {
            last[v] = load (seeds + v * width);
            last[v].store_unaligned (at (state, 0, v));
        }

        for (std::size_t index = 1; index < shiftSize; ++index)
        {
            for (auto& word : last)
                word = seeded (word, index);

            if (index <= early || keepsAll)
                for (std::size_t v = 0; v < vectors; ++v)
                    last[v].store_unaligned (at (state, index, v));
        }

        for (std::size_t n = 0; n < early; ++n)
            for (std::size_t v = 0; v < vectors; ++v)
            {
                last[v]         = seeded (last[v], n + shiftSize);
                const auto word = twisted (load (at (state, n, v)), load (at (state, n + 1, v)), last[v]);
                tempered (word).store_unaligned (at (numbers, n, v));

                if (keepsAll)
                {
                    last[v].store_unaligned (at (state, n + shiftSize, v));
                    word.store_unaligned (at (state, n, v));
                }
            }

        for (std::size_t n = early; n < count; ++n)
            for (std::size_t v = 0; v < vectors; ++v)
            {
                const auto index = n % stateSize;
                const auto word  = twisted (load (at (state, index, v)),
                                           load (at (state, (index + 1) % stateSize, v)),
                                           load (at (state, (index + shiftSize) % stateSize, v)));
                word.store_unaligned (at (state, index, v));
                tempered (word).store_unaligned (at (numbers, n, v));
            }
    }

    //==============================================================================
    static std::uint64_t weigh (const WeighedStroke* strokes,
                                std::size_t numStrokes,
                                const std::uint32_t* numbers,
                                std::int32_t* positions,
                                std::int32_t* sums,
                                std::int32_t limit)
    {
        const auto* numbersOfBits  = reinterpret_cast<const std::int32_t*> (numbers);
        constexpr auto whenDropped = static_cast<std::int32_t> (streams);
        constexpr auto morePlayed  = 2 * whenDropped;

        for (std::size_t first = 0; first < streams; first += together)
        {
            Integers position[vectors], sum[vectors];
            Integers wasPlayed[TakeKernels::mostStrokes][vectors]; // of rivals only

            for (std::size_t v = 0; v < vectors; ++v)
            {
                position[v] = Integers::load_unaligned (positions + first + v * width);
                sum[v]      = Integers::load_unaligned (sums + first + v * width);
            }

            for (std::size_t i = 0; i < numStrokes; ++i)
                for (std::size_t v = 0; v < vectors; ++v)
                {
                    const auto* stroke = strokes + i;
                    const auto bits    = __builtin_bit_cast(Words, Integers::gather (numbersOfBits, position[v])) >> 8;

                    // All bits where it is played, none where not. A comparison would ask for xsimd's select(), which
                    // the AVX-512 of version 8 does not compile without optimisation.
                    const auto played = (__builtin_bit_cast(Integers, bits) - Integers (stroke->limit)) >> 31;
                    sum[v]            = sum[v] + (played & Integers (stroke->weight));
                    position[v]       = position[v] + Integers (whenDropped) + (played & Integers (morePlayed));

                    if (stroke->isRival)
                        wasPlayed[i][v] = played;

                    if (stroke->rival >= 0)
                        sum[v] = sum[v] + (played & wasPlayed[stroke->rival][v] & Integers (stroke->together));
                }

            for (std::size_t v = 0; v < vectors; ++v)
            {
                position[v].store_unaligned (positions + first + v * width);
                sum[v].store_unaligned (sums + first + v * width);
            }
        }

        std::uint64_t isNear = 0;

        for (std::size_t stream = 0; stream < streams; ++stream)
            isNear |= (sums[stream] <= limit ? std::uint64_t { 1 } : 0) << stream;

        return isNear;
    }
};

} // namespace pulsewright
