// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Plays a song through the built bundle and leaves it as song.wav and song.mid: that of a fresh instance, or that of a
// preset, which it also leaves as the bundle saves it, song.vstpreset.

#include "OfflineHost.h"
#include "Progress.h"
#include "WavFile.h"

#include "export/MidiFileWriter.h"
#include "preset/PresetFiles.h"
#include "processor/PulsewrightAudioProcessor.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace pulsewright
{

namespace
{
    constexpr int sampleRate     = 48000;
    constexpr int blockSize      = 512;
    constexpr double tailSeconds = 1.0;

    struct Recording
    {
        juce::AudioBuffer<float> audio;
        int numNotes = 0;
    };

    Recording play (OfflineHost& host, const SongArrangement& song, double tempoBpm)
    {
        const double beatsPerSample = tempoBpm / (sampleRate * 60.0);
        const auto musicSamples     = static_cast<int> (std::lround (song.lengthInBeats() / beatsPerSample));
        const auto totalSamples     = musicSamples + static_cast<int> (tailSeconds * sampleRate);

        Recording recording;
        recording.audio.setSize (2, totalSamples);
        Progress progress ("Playing the song");

        for (int position = 0; position < totalSamples; position += blockSize)
        {
            const auto numSamples = std::min (blockSize, totalSamples - position);
            host.process ({ .ppq = position * beatsPerSample, .bpm = tempoBpm }, numSamples);

            for (int channel = 0; channel < 2; ++channel)
                recording.audio.copyFrom (channel, position, host.lastAudio(), channel, 0, numSamples);

            progress.show (static_cast<double> (position) / totalSamples);
        }

        for (const auto& recorded : host.recordedMidi())
            recording.numNotes += recorded.message.isNoteOn() ? 1 : 0;

        return recording;
    }

    void writeWav (const juce::File& path, const juce::AudioBuffer<float>& audio)
    {
        const auto name = path.getFullPathName().toStdString();
        std::ofstream file (name, std::ios::binary);
        WavFile wav ([&file] (auto bytes) { file.write (bytes.data(), static_cast<std::streamsize> (bytes.size())); },
                     sampleRate,
                     static_cast<std::uint32_t> (audio.getNumSamples()));
        wav.append (audio.getReadPointer (0), audio.getReadPointer (1), audio.getNumSamples());
        file.close();

        if (! file)
        {
            path.deleteFile(); // a part of it is of no use
            throw std::runtime_error ("Could not write " + name);
        }
    }

    /** Has both play what a preset holds. @returns the preset that the bundle saves */
    juce::MemoryBlock restore (const juce::File& preset, OfflineHost& host, PulsewrightAudioProcessor& twin)
    {
        juce::MemoryBlock bytes;

        if (! preset.loadFileAsData (bytes))
            throw std::runtime_error ("Could not read " + preset.getFullPathName().toStdString());

        auto saved       = host.loadPreset (bytes);
        const auto state = stateInVstPreset ({ static_cast<const char*> (saved.getData()), saved.getSize() });
        twin.setStateInformation (state.data(), static_cast<int> (state.size()));
        return saved;
    }

    void run (const juce::File& bundle, const juce::File& folder, const juce::File& preset)
    {
        OfflineHost host (bundle, sampleRate, blockSize);
        PulsewrightAudioProcessor twin; // what the bundle is about to play: the instance in it does not hand out its song
        const auto saved = preset == juce::File() ? juce::MemoryBlock() : restore (preset, host, twin);
        const auto song  = twin.getSong();
        const auto tempo = twin.getEffectiveBpm();
        host.setParameter ("play_mode", 1.0f);

        const auto startTime = juce::Time::getMillisecondCounterHiRes();
        const auto recording = play (host, song, tempo);
        const auto seconds   = (juce::Time::getMillisecondCounterHiRes() - startTime) / 1000.0;

        const auto expectedNotes = static_cast<int> (flatten (song).size());

        if (recording.numNotes != expectedNotes)
            throw std::runtime_error ("The bundle played " + std::to_string (recording.numNotes) + " notes where the song has "
                                      + std::to_string (expectedNotes));

        if (const auto result = folder.createDirectory(); result.failed())
            throw std::runtime_error (result.getErrorMessage().toStdString());

        const auto wav  = folder.getChildFile ("song.wav");
        const auto midi = folder.getChildFile ("song.mid");
        writeWav (wav, recording.audio);

        if (! saved.isEmpty() && ! folder.getChildFile ("song.vstpreset").replaceWithData (saved.getData(), saved.getSize()))
            throw std::runtime_error ("Could not write song.vstpreset");

        std::string error;
        if (! MidiFileWriter::saveSongToMidiFile (midi.getFullPathName().toStdString(), song, tempo, &error))
            throw std::runtime_error (error);

        const auto length = recording.audio.getNumSamples() / sampleRate;

        std::printf ("Played %s at %d BPM: %d notes, %d:%04.1f, peak %.2f, rendered in %.1f s (%.0f times real time) -> %s, %s\n",
                     song.name.c_str(),
                     tempo,
                     recording.numNotes,
                     static_cast<int> (length) / 60,
                     std::fmod (length, 60.0),
                     static_cast<double> (recording.audio.getMagnitude (0, recording.audio.getNumSamples())),
                     seconds,
                     length / seconds,
                     wav.getRelativePathFrom (juce::File::getCurrentWorkingDirectory()).toRawUTF8(),
                     midi.getRelativePathFrom (juce::File::getCurrentWorkingDirectory()).toRawUTF8());
    }
} // namespace

} // namespace pulsewright

int main (int argc, char* argv[])
{
    if (argc != 3 && argc != 4)
    {
        std::fprintf (stderr, "usage: %s BUNDLE.vst3 FOLDER [PRESET.vstpreset]\n", argv[0]);
        return 2;
    }

    const juce::ScopedJuceInitialiser_GUI juceIsUp;
    const auto here     = juce::File::getCurrentWorkingDirectory();
    const auto argument = [here, argv] (int i) { return here.getChildFile (juce::String::fromUTF8 (argv[i])); };

    try
    {
        pulsewright::run (argument (1), argument (2), argc == 4 ? argument (3) : juce::File());
    }
    catch (const std::exception& failure)
    {
        std::fprintf (stderr, "%s\n", failure.what());
        return 1;
    }
}
