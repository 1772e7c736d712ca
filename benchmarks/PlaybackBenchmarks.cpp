// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Blocks through the whole processor, as a host plays them.

#include "ComparisonTable.h"
#include "TransportPlayHead.h"

#include "generation/SongBuilder.h"
#include "processor/PulsewrightAudioProcessor.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

namespace pulsewright
{

namespace
{
    constexpr double sampleRate = 48000.0;
    constexpr double tempo      = 174.0;
    constexpr int blockSize     = 32;
    constexpr int studio        = 0; // of kitNames

    struct Host
    {
        explicit Host (int kit, int bars = 216)
        {
            set (parameterID::soundKit, static_cast<float> (kit));
            set (parameterID::playMode, 1.0f);
            GenerationSettings settings;
            settings.genre = Genre::drumAndBass;
            auto song      = SongBuilder::buildSong (settings, bars, 1);
            processor.setMaterial (song.sections.front().pattern, song);
            processor.setPlayHead (&playHead);
            processor.prepareToPlay (sampleRate, blockSize);
        }

        void set (const char* id, float plainValue)
        {
            auto* parameter = processor.parameters.getParameter (id);
            parameter->setValueNotifyingHost (parameter->convertTo0to1 (plainValue));
        }

        void play (double beat)
        {
            playHead.moveTo ({ .isPlaying = isRolling, .ppq = beat, .bpm = tempo });
            midi.clear();
            processor.processBlock (buffer, midi);
        }

        PulsewrightAudioProcessor processor;
        TransportPlayHead playHead;
        juce::AudioBuffer<float> buffer { 2, blockSize };
        juce::MidiBuffer midi;
        bool isRolling = true;
    };

    constexpr double beatsPerBlock = blockSize / sampleRate * tempo / 60.0;

    void playEmptyBlock (benchmark::State& state, int bars)
    {
        Host host (midiOnly, bars);

        // The middle of the song's longest silence.
        double beat = 0.0, longest = 0.0;
        const auto hits = flatten (host.processor.getSong());
        for (std::size_t i = 1; i < hits.size(); ++i)
            if (const double gap = hits[i].start - hits[i - 1].start - hits[i - 1].length; gap > longest)
            {
                longest = gap;
                beat    = hits[i].start - gap / 2.0;
            }

        for (auto _ : state)
        {
            host.play (beat);
            if (! host.midi.isEmpty())
                state.SkipWithError ("there are events");
            beat += 1e-9; // a host never stands still
        }
    }

    void waitForTheTransport (benchmark::State& state)
    {
        Host host (studio);
        host.isRolling = false;
        for (auto _ : state)
            host.play (0.0);
    }

    /** Every block of a song, and its slow ones. The time is that of a block. */
    void playSong (benchmark::State& state, int kit)
    {
        using Clock = std::chrono::steady_clock;
        Host host (kit);
        const auto numBlocks = static_cast<std::size_t> (host.processor.getSong().lengthInBeats() / beatsPerBlock);
        std::vector<double> times;

        for (auto _ : state)
            for (std::size_t i = 0; i < numBlocks; ++i)
            {
                const auto start = Clock::now();
                host.play (static_cast<double> (i) * beatsPerBlock);
                times.push_back (std::chrono::duration<double, std::micro> (Clock::now() - start).count());
            }

        state.counters["per"] = static_cast<double> (numBlocks);
        const auto place      = times.begin() + static_cast<std::ptrdiff_t> (static_cast<double> (times.size()) * 0.999);
        std::nth_element (times.begin(), place, times.end());
        char label[64];
        std::snprintf (label, sizeof (label), "99.9th percentile %.2f us", *place);
        state.SetLabel (label);
    }

    /** The longest of ten thousand blocks, all voices sounding. */
    void playFullKit (benchmark::State& state)
    {
        using Clock = std::chrono::steady_clock;
        Host host (studio);
        host.isRolling = false;
        std::vector<double> times;

        for (auto _ : state)
        {
            host.playHead.moveTo ({ .isPlaying = false });
            host.midi.clear();

            if (times.size() % 256 == 0)
                for (int stroke = 0; stroke < 64; ++stroke)
                    host.midi.addEvent (juce::MidiMessage::noteOn (10, stroke % 2 == 0 ? 36 : 45, juce::uint8 { 100 }), 0);

            const auto start = Clock::now();
            host.processor.processBlock (host.buffer, host.midi);
            times.push_back (std::chrono::duration<double, std::micro> (Clock::now() - start).count());
        }

        const auto place = times.begin() + static_cast<std::ptrdiff_t> (static_cast<double> (times.size()) * 0.9999);
        std::nth_element (times.begin(), place, times.end());
        char label[80];
        std::snprintf (label,
                       sizeof (label),
                       "99.99th percentile %.1f us, %.1f %% of the block",
                       *place,
                       *place / (blockSize / sampleRate * 1e6) * 100.0);
        state.SetLabel (label);
    }

    /** So many events at one sample, every second one a trigger note. */
    juce::MidiBuffer denseMidi (int numEvents)
    {
        juce::MidiBuffer midi;
        midi.addEvent (juce::MidiMessage::noteOn (1, BlockPlayer::firstTriggerNote, juce::uint8 { 100 }), 0);
        midi.addEvent (juce::MidiMessage::controllerEvent (1, 1, 64), 0);

        for (int events = 2; events < numEvents; events *= 2)
            midi.data.addArray (juce::Array<juce::uint8> (midi.data));

        return midi;
    }

    void copyMidi (benchmark::State& state, int numEvents)
    {
        const auto incoming = denseMidi (numEvents);
        juce::MidiBuffer midi;

        for (auto _ : state)
        {
            midi = incoming;
            benchmark::DoNotOptimize (midi.data.begin());
        }

        state.counters["per"] = numEvents;
    }

    void passMidi (benchmark::State& state, int numEvents)
    {
        const auto incoming = denseMidi (numEvents);
        Host host (midiOnly);
        host.isRolling = false;

        for (auto _ : state)
        {
            host.midi = incoming;
            host.processor.processBlock (host.buffer, host.midi);
        }

        state.counters["per"] = numEvents;
        state.SetLabel (std::to_string (host.midi.getNumEvents()) + " pass");
    }

    const bool registered = []
    {
        for (const int events : { 1024, 131072 })
        {
            const auto row = "MIDI in a block, an event of " + std::to_string (events);
            benchmark::RegisterBenchmark ((row + "/copied").c_str(), copyMidi, events);
            benchmark::RegisterBenchmark ((row + "/processor").c_str(), passMidi, events);
        }

        benchmark::RegisterBenchmark ("block of 32 without events/song of 16 bars", playEmptyBlock, 16);
        benchmark::RegisterBenchmark ("block of 32 without events/song of 384 bars", playEmptyBlock, 384);
        benchmark::RegisterBenchmark ("block of 32 without events/transport stands", waitForTheTransport);
        benchmark::RegisterBenchmark ("song in blocks of 32, a block/MIDI Only", playSong, static_cast<int> (midiOnly));
        benchmark::RegisterBenchmark ("song in blocks of 32, a block/Studio", playSong, studio);
        benchmark::RegisterBenchmark ("block of 32, 64 voices/processor", playFullKit)->Iterations (1000000);
        return true;
    }();
} // namespace

} // namespace pulsewright
