// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The audition kit: 64 one-shot voices that sound every note-on of a block at its sample.

#pragma once

#include "DrumVoice.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

namespace pulsewright
{

/** A note-on of a block. */
struct NoteOn
{
    int sample;   ///< in the block; one past its end begins with the next block
    int note;     ///< 0 to 127
    int velocity; ///< 1 to 127
};

/** Where a block's sound goes. What is there is replaced. */
template <typename Sample>
struct SoundBlock
{
    std::array<Sample*, 2> sides {}; ///< left and right; either may be missing
    int numSamples = 0;
};

/** The kit. Thread: audio, but for prepare(). Blocks: never. Allocates: never. */
class DrumSynth
{
public:
    static constexpr std::size_t numVoices = 64;

    /** Silences all voices. The stroke counter runs on, so that the noise does not repeat itself.
        @param sampleRate  in hertz; below 1 counts as 1
    */
    void prepare (double sampleRate);

    /** Chooses among StrokeKernels::all(), for tests and benchmarks; the best are taken by themselves. */
    void setKernels (const StrokeKernels& chosen) noexcept { kernels = &chosen; }

    /** Renders one block of floats or doubles, from strokes that need not lie in memory side by side.
        @param kit            0 to 3; from 4 on nothing is written, and sounding voices stand still
        @param forEachStroke  called with a function, to which it gives the block's strokes in order
    */
    template <typename Sample, typename ForEachStroke>
    void renderFrom (const SoundBlock<Sample>& block, int kit, ForEachStroke&& forEachStroke) PULSEWRIGHT_NONBLOCKING
    {
        if (kit >= midiOnly)
            return;

        int position = 0;

        forEachStroke (
            [&] (const NoteOn& stroke)
            {
                const int strokePosition = std::clamp (stroke.sample, 0, block.numSamples);
                renderRange (block, position, strokePosition);
                position = std::max (position, strokePosition);
                startVoice (stroke.note, stroke.velocity, kit);
            });

        renderRange (block, position, block.numSamples);
    }

    /** The same from a list. */
    template <typename Sample>
    void render (const SoundBlock<Sample>& block, int kit, std::span<const NoteOn> strokes) PULSEWRIGHT_NONBLOCKING
    {
        renderFrom (block, kit, [strokes] (auto&& play) { std::for_each (strokes.begin(), strokes.end(), play); });
    }

private:
    void startVoice (int note, int velocity, int kit) PULSEWRIGHT_NONBLOCKING;

    template <typename Sample>
    void renderRange (const SoundBlock<Sample>& block, int firstSample, int endSample) PULSEWRIGHT_NONBLOCKING;

    static constexpr int mixLength = 512; // samples at a time; small enough to stay in the nearest cache

    std::array<DrumVoice, numVoices> voices {};
    std::uint64_t strokeCount = 0; // voices ever started
    KitTables tables { 44100.0 };
    const StrokeKernels* kernels = &StrokeKernels::best();
    alignas (64) std::array<std::array<float, mixLength + cellPadding>, 2> mix {}; // left, right
};

} // namespace pulsewright
