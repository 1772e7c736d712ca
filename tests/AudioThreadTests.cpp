// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The audio thread never waits and never allocates or frees.

#include "AudioThreadWatch.h"
#include "StateBytes.h"
#include "TransportPlayHead.h"

#include "editor/PulsewrightAudioProcessorEditor.h"
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

TEST (AudioThreadWatch, CountsAllocationsFreesLocksAndSystemCalls)
{
    if (! AudioThreadWatch::isAvailable)
        GTEST_SKIP() << "not in a sanitizer build";

    AudioThreadWatch::Counts seen;
    std::thread (
        [&seen]
        {
            std::mutex mutex;
            const bool refused = AudioThreadWatch::refuseSystemCalls();
            const AudioThreadWatch watch;
            auto numbers = std::make_unique<std::vector<int>> (100);
            numbers.reset();
            std::free (std::realloc (std::malloc (10), 1000));
            const std::scoped_lock lock (mutex);
            refused ? sched_yield() : 0;
            seen = AudioThreadWatch::counts();
        })
        .join();

    EXPECT_EQ (seen, (AudioThreadWatch::Counts { .allocations = 4, .frees = 3, .locks = 1, .systemCalls = 1 }));
    EXPECT_EQ (AudioThreadWatch::counts(), AudioThreadWatch::Counts {}) << "what other threads do is theirs";
}

/** While the window is open and the message thread does all that it can, two others restore states and turn knobs. */
TEST (AudioThread, NeitherAllocatesNorLocksNorCallsTheSystem)
{
    PulsewrightAudioProcessor processor;
    const auto good = saved (processor);
    std::unique_ptr<juce::AudioProcessorEditor> editor (processor.createEditor());
    TransportPlayHead playHead;
    processor.setPlayHead (&playHead);
    processor.prepareToPlay (48000.0, 512);

    std::atomic<bool> stop { false };
    std::atomic<int> restores { 0 }, changes { 0 };
    std::thread restoring (
        [&, states = badStates (good)]
        {
            for (; ! stop; ++restores)
                restore (processor, restores % 2 == 0 ? good : states[static_cast<std::size_t> (restores / 2) % states.size()].bytes);
        });
    std::thread turning (
        [&]
        {
            for (std::mt19937 dice (3); ! stop; ++changes)
                processor.getParameters()[static_cast<int> (dice() % 18)]->setValueNotifyingHost (static_cast<float> (dice() % 100) / 99.0f);
        });

    std::size_t events = 0;
    AudioThreadWatch::Counts counts;
    bool refused = false;
    std::atomic<bool> isDone { false };
    std::thread audio (
        [&]
        {
            juce::AudioBuffer<float> buffer (2, 512);
            juce::MidiBuffer midi;
            midi.ensureSize (1 << 16); // as hosts and wrappers keep theirs
            std::mt19937 dice (2);
            double beat         = 0.0;
            float peak          = 0.0f;
            const int numBlocks = AudioThreadWatch::isAvailable ? 1000000 : 50000;

            refused = AudioThreadWatch::isAvailable && AudioThreadWatch::refuseSystemCalls();

            for (int block = 0; block < numBlocks || changes < 200 || restores < 20; ++block)
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

                peak = std::max (peak, part.getMagnitude (0, numSamples));
                events += static_cast<std::size_t> (midi.getNumEvents());
                beat = dice() % 1000 == 0 ? static_cast<double> (dice() % 300) : beat + numSamples * 174.0 / (48000.0 * 60.0);
            }

            counts = AudioThreadWatch::counts();
            isDone = true;
            EXPECT_LE (peak, 1.0f);
        });

    std::mt19937 dice (1);
    const std::vector<std::function<void()>> requests { [&] { processor.generatePattern (SectionType::fill); },
                                                        [&] { processor.mutatePattern(); },
                                                        [&] { processor.regeneratePattern(); },
                                                        [&] { processor.buildSong(); },
                                                        [&] { processor.selectSection (static_cast<int> (dice() % 9)); },
                                                        [&] { processor.setLaneLocked (static_cast<int> (dice() % 4), dice() % 2 == 0); },
                                                        [&] { processor.startPreview(); },
                                                        [&] { processor.stopPreview(); },
                                                        [&] { editor.reset (processor.createEditor()); },
                                                        [&] { juce::MessageManager::getInstance()->runDispatchLoopUntil (2); } };

    for (int times = 0; ! isDone || times < 100; ++times)
        requests[dice() % requests.size()]();

    audio.join();
    stop = true;
    restoring.join();
    turning.join();
    processor.setPlayHead (nullptr);

    EXPECT_EQ (refused, AudioThreadWatch::isAvailable);
    EXPECT_EQ (counts, AudioThreadWatch::Counts {});
    EXPECT_GT (events, 1000u);

    restore (processor, good);
    EXPECT_EQ (saved (processor), good) << "the last restore holds";
}

} // namespace pulsewright
