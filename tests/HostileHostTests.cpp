// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Hosts that do what no host should.

#include "StateBytes.h"
#include "TransportPlayHead.h"

#include "processor/PulsewrightAudioProcessor.h"

#include <gtest/gtest.h>

#include <pluginterfaces/base/ipluginbase.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <dlfcn.h>
#include <limits>
#include <random>
#include <thread>

namespace pulsewright
{

namespace
{
    constexpr double nan      = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinity = std::numeric_limits<double>::infinity();

    /** Plays blocks of any size, rate, place and tempo, with MIDI that fits in none of them. */
    class MadTransport
    {
    public:
        explicit MadTransport (PulsewrightAudioProcessor& p) : processor (p) { processor.setPlayHead (&playHead); }
        ~MadTransport() { processor.setPlayHead (nullptr); }

        void playBlock()
        {
            constexpr double positions[] { 0.0, 3.99, -1e5, 1e6, 1e18, -1e300, nan, infinity, -infinity };
            constexpr double tempos[] { 120.0, 0.0, -90.0, 1e-9, 1e300, nan, infinity };
            constexpr double rates[] { 44100.0, 48000.0, 0.0, -1.0, 1.0, 384000.0, 1e12, nan, infinity };

            if (oneIn (8)) // and never a release
                processor.prepareToPlay (oneOf (rates), 512);
            if (oneIn (40))
                oneIn (2) ? static_cast<void> (processor.startPreview()) : processor.stopPreview();

            const bool isKnown = ! oneIn (10);
            playHead.moveTo ({ .isPlaying = ! oneIn (4),
                               .ppq       = isKnown ? std::optional (oneOf (positions)) : std::nullopt,
                               .bpm       = isKnown ? std::optional (oneOf (tempos)) : std::nullopt });

            fillMidi();
            oneIn (2) ? play<float>() : play<double>();
        }

    private:
        bool oneIn (std::uint32_t n) { return dice() % n == 0; }
        template <typename Value, std::size_t size>
        Value oneOf (const Value (&values)[size])
        {
            return values[dice() % size];
        }

        void fillMidi()
        {
            midi.clear();

            for (auto i = dice() % 6; i > 0; --i)
            {
                std::array<std::uint8_t, 3> bytes { static_cast<std::uint8_t> (0x80 + dice() % 0x80),
                                                    static_cast<std::uint8_t> (dice()),
                                                    static_cast<std::uint8_t> (dice()) };
                midi.addEvent (bytes.data(), static_cast<int> (1 + dice() % 3), static_cast<int> (dice() % 20000) - 500);
            }

            if (oneIn (8))
                midi.addEvent (juce::MidiMessage::createSysExMessage ("sysex", 5), 0);
        }

        template <typename Sample>
        void play()
        {
            constexpr int sizes[] { 0, 1, 2, 31, 32, 511, 4096, 8192 };
            const int numSamples = oneIn (2) ? oneOf (sizes) : static_cast<int> (dice() % 1000);
            juce::AudioBuffer<Sample> buffer (static_cast<int> (dice() % 3), numSamples);

            // What was in the buffer before is nobody's business, NaN or not.
            for (int channel = 0; channel < buffer.getNumChannels(); ++channel)
                juce::FloatVectorOperations::fill (buffer.getWritePointer (channel), static_cast<Sample> (nan), numSamples);

            const bool isBypassed = oneIn (16);
            const int numMessages = midi.getNumEvents();
            isBypassed ? processor.processBlockBypassed (buffer, midi) : processor.processBlock (buffer, midi);
            ASSERT_TRUE (! isBypassed || midi.getNumEvents() == numMessages);

            for (int channel = 0; channel < buffer.getNumChannels(); ++channel)
                for (int i = 0; i < numSamples; ++i)
                    ASSERT_LE (std::abs (buffer.getSample (channel, i)), isBypassed ? 0.0 : 1.0); // which no NaN is
        }

        PulsewrightAudioProcessor& processor;
        TransportPlayHead playHead;
        juce::MidiBuffer midi;
        std::mt19937 dice { 3 };
    };
} // namespace

TEST (HostileHost, PlaysAnythingAnywhere)
{
    PulsewrightAudioProcessor processor;
    MadTransport transport (processor);

    for (int i = 0; i < 6000; ++i)
    {
        transport.playBlock();
        ASSERT_FALSE (testing::Test::HasFatalFailure()) << "block " << i;
        ASSERT_TRUE (processor.getEffectiveBpm() == 120 || processor.getEffectiveBpm() == 90);
    }
}

/** Inside a gesture the host lets another thread save and play, and waits for it. */
TEST (HostileHost, GesturesCallBack)
{
    struct Host final : juce::AudioProcessorListener
    {
        void audioProcessorParameterChanged (juce::AudioProcessor* p, int, float) override { saveAndPlay (*p); }
        void audioProcessorChanged (juce::AudioProcessor* p, const ChangeDetails&) override { saveAndPlay (*p); }
        void audioProcessorParameterChangeGestureBegin (juce::AudioProcessor* p, int) override { saveAndPlay (*p); }
        void audioProcessorParameterChangeGestureEnd (juce::AudioProcessor* p, int) override { saveAndPlay (*p); }

        void saveAndPlay (juce::AudioProcessor& processor)
        {
            std::thread other (
                [&]
                {
                    juce::AudioBuffer<float> buffer (2, 64);
                    juce::MidiBuffer midi;
                    processor.processBlock (buffer, midi);
                    calls += saved (processor).isEmpty() ? 0 : 1;
                });
            other.join();
        }

        int calls = 0;
    };

    PulsewrightAudioProcessor processor;
    processor.prepareToPlay (48000.0, 64);
    processor.startPreview();
    Host host;
    processor.addListener (&host);
    processor.mutatePattern();
    processor.removeListener (&host);
    EXPECT_EQ (host.calls, 8 * 3 + 1);
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

/** The module itself, as a host's scanner treats it. */
TEST (HostileHost, TheModuleLoadsAndUnloads)
{
    const auto binary = juce::File (PULSEWRIGHT_TEST_BUNDLE).findChildFiles (juce::File::findFiles, true, "*.so").getFirst();
    ASSERT_TRUE (binary.existsAsFile());
    const auto isMapped = [&] { return juce::File ("/proc/self/maps").loadFileAsString().contains (binary.getFileName()); };

    for (int i = 0; i < 500; ++i)
    {
        auto* module = dlopen (binary.getFullPathName().toRawUTF8(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE (module, nullptr) << dlerror();
        ASSERT_TRUE (isMapped());

        const auto enter   = reinterpret_cast<bool (*) (void*)> (dlsym (module, "ModuleEntry"));
        const auto leave   = reinterpret_cast<bool (*)()> (dlsym (module, "ModuleExit"));
        const auto factory = reinterpret_cast<Steinberg::IPluginFactory* (*) ()> (dlsym (module, "GetPluginFactory"));
        ASSERT_TRUE (enter != nullptr && leave != nullptr && factory != nullptr);
        ASSERT_TRUE (enter (module));

        auto* plugins = factory();
        ASSERT_NE (plugins, nullptr);
        plugins->release();
        ASSERT_TRUE (leave());
        dlclose (module);
    }

    EXPECT_FALSE (isMapped());
}

} // namespace pulsewright
