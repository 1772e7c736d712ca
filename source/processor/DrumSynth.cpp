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

void DrumSynth::startVoice (int note, int velocity, int kit) noexcept
{
    // Round robin: the oldest slot is taken over, whether it still sounds or not.
    auto& voice = voices[strokeCount % numVoices];
    ++strokeCount;
    voice.start (tables, note, velocity, kit, static_cast<std::uint32_t> (strokeCount));
}

template <typename Sample>
void DrumSynth::render (juce::AudioBuffer<Sample>& buffer, const juce::MidiBuffer& midi, int kit) noexcept
{
    if (kit >= midiOnly)
        return;

    const int numSamples = buffer.getNumSamples();
    int position         = 0;

    for (const auto event : midi)
    {
        const int eventPosition = std::clamp (event.samplePosition, 0, numSamples);
        renderRange (buffer, position, eventPosition);
        position = std::max (position, eventPosition);

        const bool isNoteOn = event.numBytes >= 3 && (event.data[0] & 0xF0) == 0x90 && event.data[2] > 0;

        if (isNoteOn)
            startVoice (event.data[1], event.data[2], kit);
    }

    renderRange (buffer, position, numSamples);
}

template <typename Sample>
void DrumSynth::renderRange (juce::AudioBuffer<Sample>& buffer, int firstSample, int endSample) noexcept
{
    const int numSides = std::min (2, buffer.getNumChannels());

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

        for (int side = 0; side < numSides; ++side)
        {
            auto& sum = mix[static_cast<std::size_t> (side)];

            if (sounds)
                kernels->saturate (sum.data(), count);

            std::copy_n (sum.begin(), count, buffer.getWritePointer (side) + start);
        }
    }
}

template void DrumSynth::render (juce::AudioBuffer<float>&, const juce::MidiBuffer&, int) noexcept;
template void DrumSynth::render (juce::AudioBuffer<double>&, const juce::MidiBuffer&, int) noexcept;

} // namespace pulsewright
