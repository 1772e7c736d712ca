// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "FileReplacement.h"
#include "Output.h"

#include "Progress.h"
#include "TransportPlayHead.h"
#include "WavFile.h"

#include "export/MidiFileWriter.h"
#include "processor/PulsewrightAudioProcessor.h"

#include <algorithm>
#include <cmath>

namespace pulsewright::cli
{

namespace
{
    constexpr double sampleRate  = 48000.0;
    constexpr double tailSeconds = 1.0;
    constexpr int blockSize      = 1024;

    void choose (PulsewrightAudioProcessor& processor, const char* id, int index)
    {
        auto* parameter = processor.parameters.getParameter (id);
        parameter->setValueNotifyingHost (parameter->convertTo0to1 (static_cast<float> (index)));
    }
} // namespace

void writeWav (const std::filesystem::path& target, const SongArrangement& song, int tempoBpm, int kit)
{
    const juce::ScopedJuceInitialiser_GUI juceIsUp;

    const double tempo          = fileTempo (tempoBpm);
    const double beatsPerSample = tempo / (sampleRate * 60.0);
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

    FileReplacement replacement (target);
    WavFile file (std::filesystem::absolute (replacement.path()).string(), sampleRate);
    Progress progress ("Playing");
    juce::AudioBuffer<float> buffer (2, blockSize);
    juce::MidiBuffer midi;

    for (std::int64_t position = 0; file.isGood() && position < totalSamples; position += blockSize)
    {
        buffer.setSize (2, static_cast<int> (std::min<std::int64_t> (blockSize, totalSamples - position)), false, false, true);
        playHead.moveTo ({ .ppq = static_cast<double> (position) * beatsPerSample, .bpm = tempo });
        midi.clear();
        processor.processBlock (buffer, midi);
        file.append (buffer);
        progress.show (static_cast<double> (position) / static_cast<double> (totalSamples));
    }

    processor.setPlayHead (nullptr);

    if (! file.close())
        throw WriteFailure (file.wasOpened() ? MidiFileWriter::cannotCompleteMessage : MidiFileWriter::cannotOpenMessage);

    replacement.commit();
}

} // namespace pulsewright::cli
