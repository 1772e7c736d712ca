// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Output.h"
#include "OutputFile.h"

#include "Progress.h"
#include "TransportPlayHead.h"
#include "WavFile.h"

#include "processor/PulsewrightAudioProcessor.h"

#include <algorithm>
#include <cmath>

namespace pulsewright::cli
{

namespace
{
    constexpr int sampleRate     = 48000;
    constexpr double tailSeconds = 1.0;
    constexpr int blockSize      = 1024;

    void choose (PulsewrightAudioProcessor& processor, const char* id, int index)
    {
        auto* parameter = processor.parameters.getParameter (id);
        parameter->setValueNotifyingHost (parameter->convertTo0to1 (static_cast<float> (index)));
    }
} // namespace

void writeWav (const std::string& target, const SongArrangement& song, int tempoBpm, int kit)
{
    const juce::ScopedJuceInitialiser_GUI juceIsUp;

    const double beatsPerSample = tempoBpm / (sampleRate * 60.0);
    const auto totalSamples =
        static_cast<std::int64_t> (std::llround (song.lengthInBeats() / beatsPerSample) + std::llround (tailSeconds * sampleRate));

    PulsewrightAudioProcessor processor;
    processor.setMaterial (song.sections.empty() ? DrumPattern() : song.sections.front().pattern, song);
    choose (processor, parameterID::playMode, 1);
    choose (processor, parameterID::soundKit, kit);

    TransportPlayHead playHead;
    processor.setPlayHead (&playHead);
    processor.setNonRealtime (true);
    processor.prepareToPlay (sampleRate, blockSize);

    OutputFile output (target);
    WavFile file ([&output] (auto bytes) { output.write (bytes); }, sampleRate, static_cast<std::uint32_t> (totalSamples));
    Progress progress ("Playing");
    juce::AudioBuffer<float> buffer (2, blockSize);
    juce::MidiBuffer midi;

    for (std::int64_t position = 0; position < totalSamples; position += blockSize)
    {
        buffer.setSize (2, static_cast<int> (std::min<std::int64_t> (blockSize, totalSamples - position)), false, false, true);
        playHead.moveTo ({ .ppq = static_cast<double> (position) * beatsPerSample, .bpm = static_cast<double> (tempoBpm) });
        midi.clear();
        processor.processBlock (buffer, midi);
        file.append (buffer.getReadPointer (0), buffer.getReadPointer (1), buffer.getNumSamples());
        progress.show (static_cast<double> (position) / static_cast<double> (totalSamples));
    }

    processor.setPlayHead (nullptr);

    output.commit();
}

} // namespace pulsewright::cli
