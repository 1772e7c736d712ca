// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "DrumVoice.h"

#include <algorithm>
#include <cmath>

namespace pulsewright
{

void DrumVoice::start (const KitTables& tables, int note, int midiVelocity, int kit, std::uint32_t strokeCount) PULSEWRIGHT_NONBLOCKING
{
    reset();
    sound            = DrumSound::of (note, kit);
    velocity         = std::clamp (static_cast<float> (midiVelocity) / 127.0f, 0.0f, 1.0f);
    state.noiseState = DrumSound::noiseSeed (note, strokeCount);
    curve            = &tables.curveOf (sound.decayRate);
    samplesLeft      = curve->lifetime;
}

void DrumVoice::render (const KitTables& tables, const StrokeKernels& kernels, float* left, float* right, int numSamples) PULSEWRIGHT_NONBLOCKING
{
    auto remaining = static_cast<int> (std::min<std::int64_t> (numSamples, samplesLeft));
    samplesLeft -= remaining;

    while (remaining > 0)
    {
        if (placeInCell == cellSize)
        {
            placeInCell = 0;
            age         = advanced (age, tables.secondsPerSample(), cellSize);
            level       = static_cast<float> (std::exp (-sound.decayRate * age));

            if (sound.source == DrumSound::Source::sweptSine)
                sweep = std::exp (-DrumSound::sweepRate * age);
        }

        const int count = std::min (remaining, cellSize - placeInCell);

        kernels.addStroke ({ .sound            = sound,
                             .velocity         = velocity,
                             .level            = level,
                             .levelPowers      = curve->powers.data() + placeInCell,
                             .sweep            = sweep,
                             .sweepPowers      = tables.sweepPowers() + placeInCell,
                             .secondsPerSample = tables.secondsPerSample() },
                           state,
                           left,
                           right,
                           count);

        left += count;
        right += count;
        placeInCell += count;
        remaining -= count;
    }
}

} // namespace pulsewright
