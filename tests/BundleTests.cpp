// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The built VST3 bundle, as a host sees, plays and saves it.

#include "OfflineHost.h"
#include "PlainEvents.h"
#include "RandomTake.h"

#include "generation/GenreProfile.h"
#include "preset/PluginState.h"
#include "preset/PresetFiles.h"
#include "processor/PulsewrightAudioProcessor.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace pulsewright
{

namespace
{
    constexpr double rate     = 48000.0;
    constexpr double tempo    = 137.3;
    constexpr double beatStep = tempo / (rate * 60.0);

    OfflineHost loadBundle()
    {
        return OfflineHost (juce::File (PULSEWRIGHT_TEST_BUNDLE), rate, 8192);
    }

    /** Plays a journey through the music block by block, in the bundle and by the plain rule. */
    struct Journey
    {
        using PlayedNote = std::array<std::int64_t, 4>; // sample, status, note, velocity

        explicit Journey (OfflineHost& h) : host (h) { host.forgetRecordedMidi(); }

        /** @param music  what the plain rule expects to be played; nothing if empty */
        void play (const std::shared_ptr<const PlaybackData>& music, Repeat repeat, double fromBeat, double beats, BlockSizes sizes, int slot = -1)
        {
            const auto numSamples = static_cast<std::int64_t> (beats / beatStep);
            juce::MidiBuffer incoming;
            if (slot >= 0)
                incoming.addEvent (juce::MidiMessage::noteOn (1, 60 + slot, 0.8f), 0);

            for (std::int64_t position = 0; position < numSamples; incoming.clear())
            {
                const auto size  = static_cast<int> (std::min<std::int64_t> (sizes.next(), numSamples - position));
                const auto start = fromBeat + static_cast<double> (position) * beatStep;
                host.process ({ .ppq = start, .bpm = tempo }, size, incoming);

                auto events = music != nullptr ? plainEventsOf (*music, repeat, windowAt (start, tempo, rate, size)) : std::vector<NoteEvent>();
                std::ranges::stable_sort (events, {}, &NoteEvent::sampleOffset);
                for (const auto& event : events)
                    expected.push_back ({ total + event.sampleOffset, event.status, event.note, event.velocity });

                position += size;
                total += size;
            }
        }

        void expectHeard() const
        {
            std::vector<PlayedNote> heard;
            for (const auto& [sample, message] : host.recordedMidi())
                heard.push_back ({ sample, message.getRawData()[0], message.getRawData()[1], message.getRawData()[2] });

            EXPECT_GT (expected.size(), 40u);
            EXPECT_EQ (heard, expected);
        }

        OfflineHost& host;
        std::vector<PlayedNote> expected;
        std::int64_t total = 0;
    };

    std::shared_ptr<const PlaybackData> playable (const DrumPattern& pattern)
    {
        return makePlaybackData (pattern.hits, pattern.lengthInBeats());
    }

} // namespace

TEST (Bundle, ShowsTheParametersInOrder)
{
    auto host = loadBundle();
    PulsewrightAudioProcessor reference;
    ASSERT_GE (host.plugin().getParameters().size(), reference.getParameters().size());

    const auto described = [] (const juce::AudioProcessorParameter& p)
    {
        juce::StringArray words { p.getName (100), p.getLabel(), juce::String (p.getValue(), 4), juce::String (p.getDefaultValue(), 4) };
        words.addArray ({ juce::String (p.getNumSteps()), p.isDiscrete() ? "discrete" : "", p.isAutomatable() ? "automatable" : "" });
        for (const float value : { 0.0f, 0.125f, 0.375f, 0.48f, 5.0f / 6.0f, 1.0f })
            words.add (p.getText (value, 128));
        return words.joinIntoString (", ");
    };

    for (auto* parameter : reference.getParameters())
        EXPECT_EQ (described (*host.plugin().getParameters()[parameter->getParameterIndex()]), described (*parameter));

    const auto description = host.plugin().getPluginDescription();
    EXPECT_EQ (description.name + ", " + description.manufacturerName + ", " + description.version, "Pulsewright, Tolm, 0.3.3");
    EXPECT_EQ (description.category, "Instrument|Synth");
    EXPECT_TRUE (description.isInstrument);
    EXPECT_EQ (std::pair (description.numInputChannels, description.numOutputChannels), std::pair (0, 2));
    EXPECT_TRUE (host.plugin().supportsDoublePrecisionProcessing() && host.plugin().acceptsMidi() && host.plugin().producesMidi());
    EXPECT_EQ (host.plugin().getTailLengthSeconds(), 1.0);
    EXPECT_EQ (host.plugin().getNameForMidiNoteNumber (60, 1), juce::String ("Section 1"));
}

class BundlePlays : public testing::TestWithParam<int>
{};

TEST_P (BundlePlays, EveryEventAtItsSample)
{
    const BlockSizes sizes { GetParam() };
    const PulsewrightAudioProcessor reference;
    const auto pattern = playable (reference.getPattern());
    const auto song    = makePlaybackData (flatten (reference.getSong()), reference.getSong().lengthInBeats());
    const auto section = [&] (std::size_t i) { return playable (reference.getSong().sections[i].pattern); };

    auto host = loadBundle();
    Journey journey (host);

    // A single sample a block is slow: a shorter way, over the same ground.
    const double beats = GetParam() == 1 ? 2.0 : 20.0;

    journey.play (pattern, Repeat::looped, 0.0, beats, sizes);
    journey.play (pattern, Repeat::looped, 7.3, beats, sizes);       // a seek, and round the loop's end
    journey.play (pattern, Repeat::looped, -3.3, beats, sizes);      // a count-in
    journey.play (pattern, Repeat::looped, 1000007.9, beats, sizes); // far out
    journey.play (section (2), Repeat::looped, 0.0, beats, sizes, 2);
    journey.play (section (7), Repeat::looped, 50.0, beats, sizes, 7);

    host.setParameter ("play_mode", 1.0f);
    journey.play (song, Repeat::once, 0.0, beats, sizes, 1);
    journey.play (song, Repeat::once, 27.0 * 4.0 - 1.0, beats, sizes); // across two sections
    journey.play (song, Repeat::once, 318.0, beats, sizes);            // over the end
    journey.play (nullptr, Repeat::once, 400.0, beats, sizes);

    host.setParameter ("play_mode", 0.0f);
    journey.play (section (1), Repeat::looped, 8.0, beats, sizes); // chosen while the song played

    journey.expectHeard();
}

INSTANTIATE_TEST_SUITE_P (BlockSizes,
                          BundlePlays,
                          testing::Values (1, 32, 441, 512, 0),
                          [] (const auto& test) { return test.param == 0 ? std::string ("Random") : "Of" + std::to_string (test.param); });

TEST (Bundle, PlaysWhatAPresetHolds)
{
    std::mt19937 random (1);

    for (int i = 0; i < 4; ++i)
    {
        auto take             = openingTake (static_cast<std::uint32_t> (random()));
        take.kind             = static_cast<Take::Kind> (i % 2);
        take.settings.genre   = static_cast<Genre> (i);
        take.settings.density = snapPercent (0.9f);
        take.tempo            = profileOf (take.settings.genre).tempoBpm;
        ASSERT_EQ (whyNoState (take), "");

        auto host        = loadBundle();
        const auto bytes = vstPresetOf (stateOf (take), "A take");
        const auto saved = host.loadPreset ({ bytes.data(), bytes.size() });
        const auto kept  = stateInVstPreset ({ static_cast<const char*> (saved.getData()), saved.getSize() });
        PulsewrightAudioProcessor expected;
        expected.setStateInformation (kept.data(), static_cast<int> (kept.size()));
        EXPECT_EQ (expected.getChosenTake(), take) << "as the plug-in saves it";

        Journey journey (host);
        if (take.kind == Take::Kind::song)
            journey.play (makePlaybackData (flatten (songOf (take)), songOf (take).lengthInBeats()), Repeat::once, 0.0, 64.0, { 441 });
        else
            journey.play (playable (patternOf (take)), Repeat::looped, 0.0, 16.0, { 441 });
        journey.expectHeard();
    }
}

} // namespace pulsewright
