// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "DrumSynth.h"

#include <algorithm>
#include <cmath>

namespace pulsewright
{

void DrumSynth::prepare (double sampleRate) noexcept
{
    secondsPerSample = 1.0 / std::max (1.0, sampleRate);

    for (auto& voice : voices)
        voice.reset();
}

void DrumSynth::startVoice (int note, int velocity, int kit) noexcept
{
    // Round robin: the oldest slot is taken over, whether it still sounds or not.
    auto& voice = voices[strokeCount % numVoices];
    ++strokeCount;
    voice.start (note, velocity, kit, static_cast<std::uint32_t> (strokeCount));
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
    // Voices age whether anybody listens or not: a host may switch the output bus off.
    auto* left  = buffer.getNumChannels() > 0 ? buffer.getWritePointer (0) : nullptr;
    auto* right = buffer.getNumChannels() > 1 ? buffer.getWritePointer (1) : nullptr;

    for (int sample = firstSample; sample < endSample; ++sample)
    {
        float leftSum = 0.0f, rightSum = 0.0f;

        for (auto& voice : voices)
        {
            if (! voice.isActive())
                continue;

            const float out = voice.nextSample (secondsPerSample);
            leftSum += out * (1.0f - voice.pan());
            rightSum += out * (1.0f + voice.pan());
        }

        if (left != nullptr)
            left[sample] = static_cast<Sample> (std::tanh (leftSum));

        if (right != nullptr)
            right[sample] = static_cast<Sample> (std::tanh (rightSum));
    }
}

template void DrumSynth::render (juce::AudioBuffer<float>&, const juce::MidiBuffer&, int) noexcept;
template void DrumSynth::render (juce::AudioBuffer<double>&, const juce::MidiBuffer&, int) noexcept;

} // namespace pulsewright
