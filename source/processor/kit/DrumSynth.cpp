// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "DrumSynth.h"

#include <algorithm>

namespace pulsewright
{

void DrumSynth::prepare (double sampleRate)
{
    tables = KitTables (sampleRate);

    for (auto& voice : voices)
        voice.reset();
}

void DrumSynth::startVoice (int note, int velocity, int kit) PULSEWRIGHT_NONBLOCKING
{
    // Round robin: the oldest slot is taken over, whether it still sounds or not.
    auto& voice = voices[strokeCount % numVoices];
    ++strokeCount;
    voice.start (tables, note, velocity, kit, static_cast<std::uint32_t> (strokeCount));
}

template <typename Sample>
void DrumSynth::renderRange (const SoundBlock<Sample>& block, int firstSample, int endSample) PULSEWRIGHT_NONBLOCKING
{
    for (int start = firstSample; start < endSample; start += mixLength)
    {
        const int count = std::min (mixLength, endSample - start);
        bool sounds     = false;

        for (auto& side : mix)
            std::fill_n (side.begin(), count + cellPadding, 0.0f);

        // Voices age whether anybody listens or not: a host may switch the output bus off.
        for (auto& voice : voices)
            if (voice.isActive())
            {
                voice.render (tables, *kernels, mix[0].data(), mix[1].data(), count);
                sounds = true;
            }

        for (std::size_t side = 0; side < mix.size(); ++side)
        {
            if (block.sides[side] == nullptr)
                continue;

            if (sounds)
                kernels->saturate (mix[side].data(), count);

            std::copy_n (mix[side].begin(), count, block.sides[side] + start);
        }
    }
}

template void DrumSynth::renderRange (const SoundBlock<float>&, int, int) PULSEWRIGHT_NONBLOCKING;
template void DrumSynth::renderRange (const SoundBlock<double>&, int, int) PULSEWRIGHT_NONBLOCKING;

} // namespace pulsewright
