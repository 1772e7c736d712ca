// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The kit's inner loops, built once for every kind of vectors that a processor may have.

#pragma once

#include "DrumSound.h"
#include "KitTables.h"

#include <cstdint>
#include <span>

namespace pulsewright
{

/** What changes while a stroke sounds. */
struct StrokeState
{
    double phase             = 0.0; ///< radians; never wrapped, strokes are short
    std::uint32_t noiseState = 1;
    float previousNoise      = 0.0f;
};

/** What stays the same within a piece of a stroke's cell. */
struct StrokePiece
{
    const DrumSound& sound;
    float velocity;           ///< 0 to 1
    float level;              ///< the envelope at the start of the cell
    const float* levelPowers; ///< the envelope's course from the piece's first sample on
    double sweep;             ///< as the level, of a swept sine's fall
    const double* sweepPowers;
    double secondsPerSample;
};

/** Thread: any. Blocks: never. Allocates: never. The buffers are written up to cellPadding - 1 samples past the
    end, with what was there: they have to be that much longer.
*/
struct StrokeKernels
{
    const char* name;

    /** Adds a piece of a stroke to both sides. @param numSamples  1 to cellSize */
    void (*addStroke) (const StrokePiece& piece, StrokeState& state, float* left, float* right, int numSamples) PULSEWRIGHT_NONBLOCKING;

    /** tanh of every sample, in place. */
    void (*saturate) (float* samples, int numSamples) PULSEWRIGHT_NONBLOCKING;

    /** The widest that this machine can run; found once, at the first call. */
    static const StrokeKernels& best() noexcept;

    /** All that this machine can run, the widest first. */
    static std::span<const StrokeKernels* const> all() noexcept;
};

} // namespace pulsewright
