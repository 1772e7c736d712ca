// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// One drum stroke: an oscillator, a noise source and an exponential envelope.

#pragma once

#include "StrokeKernels.h"

namespace pulsewright
{

/** A one-shot voice. It ends by itself, inaudible or 2.5 seconds old.

    Thread: audio. Blocks: never. Allocates: never.
*/
class DrumVoice
{
public:
    /** @param midiVelocity  0 to 127
        @param strokeCount   how many voices the synthesizer has started, this one included
    */
    void start (const KitTables& tables, int note, int midiVelocity, int kit, std::uint32_t strokeCount) PULSEWRIGHT_NONBLOCKING;

    void reset() noexcept { *this = {}; }

    bool isActive() const PULSEWRIGHT_NONBLOCKING { return samplesLeft > 0; }

    /** Adds what it plays to both sides, panned. Both buffers have cellPadding extra samples at their end.
        @param tables  those that it was started with
    */
    void render (const KitTables& tables, const StrokeKernels& kernels, float* left, float* right, int numSamples) PULSEWRIGHT_NONBLOCKING;

private:
    DrumSound sound          = {};
    const DecayCurve* curve  = nullptr; // of the tables that it was started with
    StrokeState state        = {};
    float velocity           = 0.0f; // 0 to 1
    std::int64_t samplesLeft = 0;
    int placeInCell          = 0;

    // At the start of the cell.
    double age   = 0.0; // seconds, as a sum of sample intervals
    float level  = 1.0f;
    double sweep = 1.0;
};

} // namespace pulsewright
