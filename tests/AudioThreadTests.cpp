// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The audio thread waits for nobody and keeps its hands off the heap.

#include "AudioThreadWatch.h"
#include "StateBytes.h"
#include "TransportPlayHead.h"

#include "processor/PulsewrightAudioProcessor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <random>
#include <sched.h>
#include <thread>

namespace pulsewright
{

namespace
{
    AudioThreadWatch::Counts operator- (const AudioThreadWatch::Counts& a, const AudioThreadWatch::Counts& b)
    {
        return { a.allocations - b.allocations, a.frees - b.frees, a.locks - b.locks, a.systemCalls - b.systemCalls };
    }
} // namespace

TEST (AudioThread, TheWatchSeesWhatIsPlanted)
{
    if (! AudioThreadWatch::isAvailable)
        GTEST_SKIP() << "not in a sanitizer build";

    std::mutex mutex;
    const auto before = AudioThreadWatch::counts();

    {
        const AudioThreadWatch watch;
        auto planted = std::make_unique<std::vector<int>> (100);
        planted.reset();
        auto* resized = std::realloc (std::malloc (10), 1000);
        std::free (resized);
        const std::scoped_lock lock (mutex);
    }

    const auto seen = AudioThreadWatch::counts() - before;
    EXPECT_GE (seen.allocations, 4);
    EXPECT_GE (seen.frees, 3);
    EXPECT_EQ (seen.locks, 1);

    long systemCalls = 0;
    std::thread (
        [&]
        {
            if (! AudioThreadWatch::refuseSystemCalls())
                return;
            const AudioThreadWatch watch;
            sched_yield();
            systemCalls = AudioThreadWatch::counts().systemCalls;
        })
        .join();
    EXPECT_EQ (systemCalls, 1);

    // Another thread's doings are its own.
    const AudioThreadWatch watch;
    const auto unwatched = AudioThreadWatch::counts();
    EXPECT_EQ (AudioThreadWatch::counts() - unwatched, AudioThreadWatch::Counts {});
}

TEST (AudioThread, NeitherAllocatesNorLocksNorCallsTheSystem)
{
    PulsewrightAudioProcessor processor;
    TransportPlayHead playHead;
    processor.setPlayHead (&playHead);
    processor.prepareToPlay (48000.0, 512);

    // Everything the message thread can do, as fast as it can.
    std::atomic<bool> stop { false };
    std::atomic<int> changes { 0 };
    std::thread messages (
        [&]
        {
            std::mt19937 dice (1);
            const std::vector<std::function<void()>> requests {
                [&] { processor.generatePattern (SectionType::verse); },
                [&] { processor.generatePattern (SectionType::fill); },
                [&] { processor.mutatePattern(); },
                [&] { processor.regeneratePattern(); },
                [&] { processor.buildSong(); },
                [&] { processor.selectSection (static_cast<int> (dice() % 9)); },
                [&] { processor.setLaneLocked (static_cast<int> (dice() % 4), dice() % 2 == 0); },
                [&] { dice() % 2 == 0 ? static_cast<void> (processor.startPreview()) : processor.stopPreview(); },
                [&] { processor.getParameters()[static_cast<int> (dice() % 18)]->setValueNotifyingHost (static_cast<float> (dice() % 100) / 99.0f); },
                [&] { restore (processor, saved (processor)); }
            };

            for (; ! stop; ++changes)
                requests[dice() % requests.size()]();
        });

    std::size_t events = 0;
    AudioThreadWatch::Counts counts;
    bool refused = false;
    std::thread audio (
        [&]
        {
            juce::AudioBuffer<float> buffer (2, 512);
            juce::MidiBuffer midi;
            midi.ensureSize (1 << 16); // as hosts and wrappers keep theirs
            std::mt19937 dice (2);
            double beat         = 0.0;
            const int numBlocks = AudioThreadWatch::isAvailable ? 1000000 : 50000;

            refused = AudioThreadWatch::isAvailable && AudioThreadWatch::refuseSystemCalls();

            for (int block = 0; block < numBlocks || changes < 200; ++block)
            {
                const int numSamples = static_cast<int> (1 + dice() % (block % 16 == 0 ? 512 : 32));
                juce::AudioBuffer<float> part (buffer.getArrayOfWritePointers(), 2, numSamples);
                playHead.moveTo ({ .isPlaying = dice() % 50 != 0, .ppq = beat, .bpm = 174.0 });
                midi.clear();
                if (dice() % 20 == 0)
                    midi.addEvent (juce::MidiMessage::noteOn (1, static_cast<int> (58 + dice() % 12), 1.0f), static_cast<int> (dice()) % numSamples);

                {
                    const AudioThreadWatch watch;
                    processor.processBlock (part, midi);
                }

                events += static_cast<std::size_t> (midi.getNumEvents());
                beat = dice() % 1000 == 0 ? static_cast<double> (dice() % 300) : beat + numSamples * 174.0 / (48000.0 * 60.0);
            }

            counts = AudioThreadWatch::counts();
        });

    audio.join();
    EXPECT_EQ (refused, AudioThreadWatch::isAvailable);
    EXPECT_EQ (counts, AudioThreadWatch::Counts {}); // here: that thread cannot even print

    stop = true;
    messages.join();
    processor.setPlayHead (nullptr);

    EXPECT_GT (events, 1000u);
    EXPECT_GE (changes, 200);
}

} // namespace pulsewright
