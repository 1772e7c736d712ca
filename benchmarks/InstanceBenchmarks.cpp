// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What it costs to have an instance, to restore it and to look at it.

#include "ComparisonTable.h"

#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"
#include "processor/PulsewrightAudioProcessor.h"

#include <cstdio>
#include <malloc.h>
#include <memory>
#include <string>
#include <vector>

namespace pulsewright
{

namespace
{
    /** What is allocated, not what is resident: earlier benchmarks leave free pages behind. */
    double allocatedMegabytes()
    {
        const auto info = mallinfo2();
        return static_cast<double> (info.uordblks + info.hblkhd) / (1024.0 * 1024.0);
    }

    void construct (benchmark::State& state)
    {
        for (auto _ : state)
            PulsewrightAudioProcessor();
    }

    void restore (benchmark::State& state)
    {
        PulsewrightAudioProcessor processor;
        juce::MemoryBlock saved;
        processor.getStateInformation (saved);

        for (auto _ : state)
            processor.setStateInformation (saved.getData(), static_cast<int> (saved.getSize()));
    }

    void open (benchmark::State& state, int bars)
    {
        PulsewrightAudioProcessor processor;
        processor.setMaterial (GrooveGenerator::generate ({}, SectionType::verse, bars, 0), processor.getSong());

        for (auto _ : state)
        {
            const std::unique_ptr<juce::AudioProcessorEditor> editor (processor.createEditor());
            benchmark::DoNotOptimize (editor->createComponentSnapshot (editor->getLocalBounds()));
        }
    }

    void keepInMemory (benchmark::State& state)
    {
        GenerationSettings settings;
        settings.genre  = Genre::drumAndBass;
        const auto song = SongBuilder::buildSong (settings, SongBuilder::maxBars, 1);

        for (auto _ : state)
        {
            PulsewrightAudioProcessor first;
            const double before = allocatedMegabytes();
            std::vector<std::unique_ptr<PulsewrightAudioProcessor>> instances;

            for (int i = 0; i < 100; ++i)
            {
                instances.push_back (std::make_unique<PulsewrightAudioProcessor>());
                instances.back()->setMaterial (song.sections.front().pattern, song);
                instances.back()->prepareToPlay (48000.0, 512);
            }

            char label[64];
            std::snprintf (label, sizeof (label), "%.2f MiB each", (allocatedMegabytes() - before) / 100.0);
            state.SetLabel (label);
        }

        state.counters["per"] = 100.0;
    }

    const bool registered = []
    {
        benchmark::RegisterBenchmark ("instance/constructed", construct);
        benchmark::RegisterBenchmark ("instance/restored", restore);
        benchmark::RegisterBenchmark ("instance/constructed with 384 bars", keepInMemory)->Iterations (1);
        benchmark::RegisterBenchmark ("window opened and drawn/first, 2 bars", open, 2)->Iterations (1);
        benchmark::RegisterBenchmark ("window opened and drawn/2 bars", open, 2);
        benchmark::RegisterBenchmark ("window opened and drawn/192 bars", open, 192);
        return true;
    }();
} // namespace

} // namespace pulsewright
