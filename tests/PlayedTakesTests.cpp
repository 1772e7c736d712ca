// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Takes in the plug-in: they come back, as codes, as presets and from the list of the session.

#include "EditorWindow.h"
#include "RandomTake.h"
#include "StateBytes.h"

#include "generation/TakeCode.h"
#include "preset/PluginState.h"
#include "preset/PresetFiles.h"

#include <gtest/gtest.h>

namespace pulsewright
{

namespace
{
    void expectSame (const PulsewrightAudioProcessor& a, const PulsewrightAudioProcessor& b, const std::string& what)
    {
        EXPECT_EQ (a.getPattern(), b.getPattern()) << what;
        EXPECT_EQ (a.getSong(), b.getSong()) << what;
    }

    void set (PulsewrightAudioProcessor& processor, const char* id, float value)
    {
        processor.parameters.getParameter (id)->setValueNotifyingHost (value);
    }
} // namespace

TEST (PlayedTakes, WhatTheOperationsMakeComesBackFromItsCode)
{
    PulsewrightAudioProcessor source, other;
    set (source, parameterID::patternLength, 1.0f);
    std::mt19937 random (1);

    const std::vector<std::pair<const char*, std::function<void()>>> operations {
        { "groove", [&] { source.generatePattern (SectionType::verse); } },
        { "fill", [&] { source.generatePattern (SectionType::fill); } },
        { "song", [&] { source.buildSong(); } },
        { "section", [&] { source.selectSection (static_cast<int> (random() % 4)); } },
        { "remade", [&] { source.mutatePattern(), source.regeneratePattern(); } },
        { "restored", [&] { restore (source, saved (source)); } }
    };

    for (int i = 0; i < 200; ++i)
    {
        for (auto* parameter : source.getParameters())
            parameter->setValueNotifyingHost (static_cast<float> (random() % 1000) / 999.0f);

        const auto& [name, operate] = operations[random() % operations.size()];
        const bool wasSong          = std::string_view (name) == "song";
        set (source, parameterID::playMode, wasSong ? 1.0f : 0.0f);
        operate();

        const auto take = source.getChosenTake();
        ASSERT_TRUE (take.has_value()) << name;
        other.playTake (takeOf (codeOf (take.value()).value()));
        ASSERT_EQ (other.getPattern(), source.getPattern()) << name;
        ASSERT_EQ (other.getSeedCounter(), take->counter + 1);
        ASSERT_EQ (other.getChosenTake(), take) << name;

        if (wasSong)
        {
            ASSERT_EQ (other.getSong(), source.getSong());
        }
    }

    source.mutatePattern();
    set (source, parameterID::playMode, 0.0f);
    EXPECT_FALSE (source.getChosenTake().has_value());
}

TEST (PlayedTakes, APresetPlaysItsTake)
{
    std::mt19937 random (2);
    int numPresets = 0;

    for (int i = 0; i < 400; ++i)
    {
        auto take = randomTake (random);
        if (take.kind == Take::Kind::groove && i % 4 != 0)
            take.section = SectionType::verse, take.bars = 2, take.stream = 0;

        PulsewrightAudioProcessor played, restored;
        played.playTake (take);
        const auto state = stateOf (take);
        restored.setStateInformation (state.data(), static_cast<int> (state.size()));

        const bool isSong = take.kind == Take::Kind::song;
        const bool isSame = isSong ? restored.getSong() == played.getSong() : restored.getPattern() == played.getPattern();
        ASSERT_EQ (isSame, whyNoState (take).empty()) << codeOf (take).value() << ": " << whyNoState (take);
        numPresets += isSame ? 1 : 0;

        // The frames around it, there and back.
        ASSERT_EQ (stateInVstPreset (vstPresetOf (state, "A \"name\" & more")), state);
        ASSERT_EQ (stateInBase64 (base64Of (state)), state);
    }

    EXPECT_GT (numPresets, 100);

    // JUCE writes the same texts.
    const auto state = stateOf (randomTake (random));
    EXPECT_EQ (juce::MemoryBlock (state.data(), state.size()).toBase64Encoding(), juce::String (base64Of (state)));
}

TEST (PlayedTakes, BadPresetsAreRefused)
{
    const auto state = stateOf (Take());
    const auto good  = vstPresetOf (state, "Good");

    for (std::size_t size = 0; size < good.size(); ++size)
        EXPECT_THROW (static_cast<void> (stateInVstPreset (good.substr (0, size))), BadPreset) << size;

    auto another = good;
    another[10]  = '0';
    EXPECT_THROW (static_cast<void> (stateInVstPreset (another)), BadPreset);

    // Any byte of the numbers at the front and at the back: refused, or what is there.
    std::mt19937 random (3);
    for (int i = 0; i < 5000; ++i)
    {
        auto changed     = good;
        const auto place = random() % 2 == 0 ? 40 + random() % 8 : good.size() - 1 - random() % 48;
        changed[place]   = static_cast<char> (random());

        try
        {
            EXPECT_NE (good.find (stateInVstPreset (changed)), std::string::npos) << place;
        }
        catch (const BadPreset& error)
        {
            EXPECT_STRNE (error.what(), "") << place;
        }
    }

    for (const auto* text : { "", "12", ".", "-1.AAAA", "5.AA", "4294967297.AAAAA", "3.AA?A", "x.AAAA" })
        EXPECT_THROW (static_cast<void> (stateInBase64 (text)), BadPreset) << text;
}

TEST (PlayedTakes, PlayingATakeAgainGeneratesNothing)
{
    EditorWindow window;
    PulsewrightAudioProcessor expected;
    std::mt19937 random (4);

    for (int i = 0; i < 6; ++i)
    {
        const auto take = randomTake (random);
        window.processor.playTake (take);
        expected.playTake (take);
        runFor (300);
        expectSame (window.processor, expected, codeOf (take).value());
    }

    // After that, a knob generates again.
    window.find<PercentSlider> ("density").setValue (0.123, juce::sendNotificationSync);
    runFor (300);
    set (expected, "density", 0.123f);
    expected.regeneratePattern();
    expectSame (window.processor, expected, "turned");
}

TEST (PlayedTakes, EarlierOnesComeBackAsTheyWere)
{
    EditorWindow window;
    auto& processor = window.processor;
    processor.generatePattern (SectionType::verse);
    processor.mutatePattern();
    const auto mutated = processor.getPattern();
    runFor (300);
    const auto remade = processor.getPattern();
    EXPECT_NE (remade, mutated) << "its knobs have made it anew";
    processor.buildSong();
    const auto song = processor.getSong();

    const auto earlier = processor.getEarlierTakes();
    std::string list;
    for (const auto& kept : earlier)
        list += describe (kept) + "\n";
    EXPECT_EQ (list,
               "Take 3: Boom Bap song, 80 bars\nTake 1: Boom Bap groove, 2 bars\nTake 1: Boom Bap mutation, 2 bars\n"
               "Take 1: Boom Bap groove, 2 bars\nTake 0: Boom Bap groove, 2 bars\n");

    EXPECT_TRUE (processor.playEarlierTake (earlier[2].id));
    runFor (300);
    EXPECT_EQ (processor.getPattern(), mutated);
    EXPECT_FALSE (processor.getChosenTake().has_value());
    EXPECT_EQ (processor.getSeedCounter(), 4u);

    // A knob that moves now makes a take of its own; the mutation stays.
    set (processor, "density", 0.9f);
    runFor (300);
    EXPECT_EQ (processor.getEarlierTakes().size(), 6u);
    EXPECT_TRUE (processor.playEarlierTake (earlier[2].id));
    EXPECT_EQ (processor.getPattern(), mutated);
    EXPECT_TRUE (processor.playEarlierTake (earlier[0].id));
    EXPECT_EQ (processor.getSong(), song);
    EXPECT_FALSE (processor.playEarlierTake (9999));

    for (int i = 0; i < 40; ++i)
        processor.generatePattern (SectionType::verse);
    EXPECT_EQ (processor.getEarlierTakes().size(), TakeHistory::capacity);
    EXPECT_FALSE (processor.playEarlierTake (earlier[0].id));
}

} // namespace pulsewright
