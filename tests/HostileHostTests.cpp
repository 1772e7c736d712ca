// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Hosts that do what no host should.

#include "HostLog.h"
#include "StateBytes.h"
#include "TransportPlayHead.h"

#include "processor/PulsewrightAudioProcessor.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <limits>
#include <thread>

namespace pulsewright
{

namespace
{
    constexpr double nan      = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();

    /** Events that fit in no block, to a buffer of anything. */
    template <typename Sample>
    void playBlock (PulsewrightAudioProcessor& processor, int channels, int numSamples)
    {
        juce::AudioBuffer<Sample> buffer (channels, numSamples);
        juce::MidiBuffer midi;
        midi.addEvent (juce::MidiMessage::noteOn (1, 36, juce::uint8 { 100 }), -500);
        midi.addEvent (juce::MidiMessage::noteOn (1, 38, juce::uint8 { 100 }), 20000);
        midi.addEvent (juce::MidiMessage::createSysExMessage ("sysex", 5), numSamples);

        for (int channel = 0; channel < channels; ++channel)
            juce::FloatVectorOperations::fill (buffer.getWritePointer (channel), static_cast<Sample> (nan), numSamples);

        processor.processBlock (buffer, midi);

        for (int channel = 0; channel < channels; ++channel)
            for (int i = 0; i < numSamples; ++i)
                ASSERT_LE (std::abs (buffer.getSample (channel, i)), 1.0); // which no NaN is
    }
} // namespace

// What the wrappers keep from the plug-in; the rest is in the hostile host, which plays the built bundles.
TEST (HostileHost, PlaysAnythingAnywhere)
{
    PulsewrightAudioProcessor processor;
    TransportPlayHead playHead;
    processor.setPlayHead (&playHead);

    for (const double rate : { 44100.0, 0.0, -1.0, 1.0, 384000.0, 1e12, nan, infinity })
    {
        processor.prepareToPlay (rate, 512); // and never a release

        for (const double position : { 0.0, 3.99, -1e5, 1e6, 1e18, -1e300, nan, infinity, -infinity })
            for (const double tempo : { 120.0, 0.0, -90.0, 1e-9, 1e300, nan, infinity })
                for (const int numSamples : { 0, 1, 511, 4096 })
                {
                    playHead.moveTo ({ .ppq = position, .bpm = tempo });
                    playBlock<float> (processor, 2, numSamples);
                    playBlock<double> (processor, 1, numSamples);
                    ASSERT_FALSE (testing::Test::HasFatalFailure()) << rate << ", " << position << ", " << tempo << ", " << numSamples;
                    ASSERT_TRUE (processor.getEffectiveBpm() == 120 || processor.getEffectiveBpm() == 90);
                }
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
    EXPECT_EQ (saves, static_cast<int> (numMacros) * 3 + 1);
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
