// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Hosts that do what no host should.

#include "HostLog.h"
#include "StateBytes.h"
#include "TransportPlayHead.h"

#include "processor/PulsewrightAudioProcessor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <limits>
#include <random>
#include <thread>

namespace pulsewright
{

namespace
{
    constexpr double nan      = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();

    /** What a host does next. */
    struct Dice
    {
        std::uint32_t below (std::uint32_t n) { return static_cast<std::uint32_t> (dice() % n); }
        bool oneIn (std::uint32_t n) { return below (n) == 0; }

        template <typename Value, std::size_t size>
        Value oneOf (const Value (&values)[size])
        {
            return values[dice() % size];
        }

        std::mt19937 dice { 3 };
    };

    /** MIDI that fits in no block. */
    juce::MidiBuffer anyMidi (Dice& dice)
    {
        juce::MidiBuffer midi;

        for (auto i = dice.below (6); i > 0; --i)
        {
            const std::array bytes { static_cast<juce::uint8> (0x80 + dice.below (0x80)),
                                     static_cast<juce::uint8> (dice.below (256)),
                                     static_cast<juce::uint8> (dice.below (256)) };
            midi.addEvent (bytes.data(), static_cast<int> (1 + dice.below (3)), static_cast<int> (dice.below (20000)) - 500);
        }

        if (dice.oneIn (8))
            midi.addEvent (juce::MidiMessage::createSysExMessage ("sysex", 5), 0);
        return midi;
    }

    template <typename Sample>
    void playBlock (PulsewrightAudioProcessor& processor, Dice& dice)
    {
        const int sizes[] { 0, 1, 2, 31, 32, 511, 4096, 8192, static_cast<int> (dice.below (1000)) };
        juce::AudioBuffer<Sample> buffer (static_cast<int> (dice.below (3)), dice.oneOf (sizes));
        auto midi             = anyMidi (dice);
        const bool isBypassed = dice.oneIn (16);
        const int numMessages = midi.getNumEvents();

        // What was in the buffer before does not matter, NaN or not.
        for (int channel = 0; channel < buffer.getNumChannels(); ++channel)
            juce::FloatVectorOperations::fill (buffer.getWritePointer (channel), static_cast<Sample> (nan), buffer.getNumSamples());

        isBypassed ? processor.processBlockBypassed (buffer, midi) : processor.processBlock (buffer, midi);
        ASSERT_TRUE (! isBypassed || midi.getNumEvents() == numMessages);

        for (int channel = 0; channel < buffer.getNumChannels(); ++channel)
            for (int i = 0; i < buffer.getNumSamples(); ++i)
                ASSERT_LE (std::abs (buffer.getSample (channel, i)), isBypassed ? 0.0 : 1.0); // which no NaN is
    }
} // namespace

TEST (HostileHost, PlaysAnythingAnywhere)
{
    constexpr double positions[] { 0.0, 3.99, -1e5, 1e6, 1e18, -1e300, nan, infinity, -infinity };
    constexpr double tempos[] { 120.0, 0.0, -90.0, 1e-9, 1e300, nan, infinity };
    constexpr double rates[] { 44100.0, 48000.0, 0.0, -1.0, 1.0, 384000.0, 1e12, nan, infinity };

    PulsewrightAudioProcessor processor;
    TransportPlayHead playHead;
    processor.setPlayHead (&playHead);
    Dice dice;

    for (int i = 0; i < 6000; ++i)
    {
        if (dice.oneIn (8)) // and never a release
            processor.prepareToPlay (dice.oneOf (rates), 512);
        if (dice.oneIn (40))
            dice.oneIn (2) ? static_cast<void> (processor.startPreview()) : processor.stopPreview();

        Transport transport { .isPlaying = ! dice.oneIn (4) };
        if (! dice.oneIn (10))
            transport = { .isPlaying = transport.isPlaying, .ppq = dice.oneOf (positions), .bpm = dice.oneOf (tempos) };

        playHead.moveTo (transport);
        dice.oneIn (2) ? playBlock<float> (processor, dice) : playBlock<double> (processor, dice);
        ASSERT_FALSE (testing::Test::HasFatalFailure()) << "block " << i;
        ASSERT_TRUE (processor.getEffectiveBpm() == 120 || processor.getEffectiveBpm() == 90);
    }

    processor.setPlayHead (nullptr);
}

TEST (HostileHost, AnotherThreadSavesAndPlaysInsideAGesture)
{
    PulsewrightAudioProcessor processor;
    processor.prepareToPlay (48000.0, 64);
    processor.startPreview();
    HostLog log (processor);
    int saves = 0;

    // The host waits for that thread.
    const auto saveAndPlay = [&]
    {
        juce::AudioBuffer<float> buffer (2, 64);
        juce::MidiBuffer midi;
        processor.processBlock (buffer, midi);
        saves += saved (processor).isEmpty() ? 0 : 1;
    };
    log.whenTold = [&] { std::thread (saveAndPlay).join(); };
    processor.mutatePattern();
    EXPECT_EQ (saves, 8 * 3 + 1);
}

TEST (HostileHost, AHundredInstancesShareNothingThatChanges)
{
    std::vector<std::unique_ptr<PulsewrightAudioProcessor>> instances (100);
    for (auto& instance : instances)
        instance = std::make_unique<PulsewrightAudioProcessor>();

    std::shuffle (instances.begin(), instances.end(), std::mt19937 (1));
    instances[0]->generatePattern (SectionType::fill);
    EXPECT_EQ (instances[1]->getSeedCounter(), 1u);
    EXPECT_EQ (instances[1]->getPattern(), instances[99]->getPattern());
}

TEST (HostileHost, ARestoreWaitsForTheOneThatIsUnderway)
{
    PulsewrightAudioProcessor processor;
    const auto first  = framed (stateText ("seedCounter=\"9\"", parameterElement ("density", "0.9")));
    const auto second = saved (processor);
    HostLog log (processor);
    std::thread other;

    log.whenTold = [&]
    {
        if (other.joinable())
            return;

        other = std::thread ([&] { restore (processor, second); });
        std::this_thread::sleep_for (std::chrono::milliseconds (100));
        EXPECT_EQ (processor.getSeedCounter(), 9u) << "the second has not begun";
    };
    restore (processor, first);
    ASSERT_TRUE (other.joinable());
    other.join();
    EXPECT_EQ (saved (processor), second);
}

} // namespace pulsewright
