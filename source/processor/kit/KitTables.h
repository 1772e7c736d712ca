// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the kit's exponentials come to at one sample rate.

#pragma once

#include "DrumSound.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace pulsewright
{

/** A stroke's life is cut into cells of this many samples, counted from its own start. An exponential is
    exact at the start of a cell and follows a table inside: so its values depend on the stroke's age alone,
    not on the host's blocks, and no error grows.
*/
inline constexpr int cellSize = 128;

/** The tables and the scratch buffers of the kernels go on for one widest vector. */
inline constexpr int cellPadding = 16;

/** The table of one decay. */
struct DecayCurve
{
    double rate           = 0.0;                                      ///< per second
    std::int64_t lifetime = 0;                                        ///< samples until a stroke is over
    alignas (64) std::array<float, cellSize + cellPadding> powers {}; ///< exp (-rate * k / sampleRate)
};

/** Thread: any; but making one takes thousands of exponentials and is not for the audio thread. Blocks: never.
    Allocates: never.
*/
class KitTables
{
public:
    /** @param sampleRate  in hertz; below 1 counts as 1, and so does not-a-number */
    explicit KitTables (double sampleRate);

    double secondsPerSample() const PULSEWRIGHT_NONBLOCKING { return sampleInterval; }

    /** @param rate  the decay rate of one of the kits' sounds */
    const DecayCurve& curveOf (double rate) const PULSEWRIGHT_NONBLOCKING;

    /** exp (-DrumSound::sweepRate * k / sampleRate) */
    const double* sweepPowers() const PULSEWRIGHT_NONBLOCKING { return sweep.data(); }

private:
    static constexpr std::size_t maxCurves = 16;

    double sampleInterval;
    std::size_t numCurves = 0;
    std::array<DecayCurve, maxCurves> curves {};
    alignas (64) std::array<double, cellSize + cellPadding> sweep {};
};

/** Returns `time` after adding `step` `count` times, rounding to double after each addition: the same bits as the loop,
    in a few dozen operations. A stroke's age is such a sum.
*/
double advanced (double time, double step, std::int64_t count) PULSEWRIGHT_NONBLOCKING;

} // namespace pulsewright
