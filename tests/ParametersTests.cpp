// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "processor/PulsewrightAudioProcessor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace pulsewright
{

// A reordered or renamed parameter breaks the projects of everybody who has saved one.
TEST (Parameters, OrderAndIdsAreFrozen)
{
    // clang-format off
    const juce::StringArray expected // ID, name, number of choices or step, default as it is stored and as it is shown
    {
        "genre, Genre, 7, 0, Boom Bap",
        "density, Density, 0.001, 0.48, 48 %",
        "energy, Energy, 0.001, 0.58, 58 %",
        "syncopation, Syncopation, 0.001, 0.42, 42 %",
        "swing, Swing, 0.001, 0.18, 18 %",
        "variation, Variation, 0.001, 0.35, 35 %",
        "experimental, Experimental, 0.001, 0.12, 12 %",
        "timing, Timing Humanize, 0.001, 0.16, 16 %",
        "velocity, Velocity Humanize, 0.001, 0.22, 22 %",
        "play_mode, Playback, 2, 0, Pattern",
        "pattern_length, Pattern Length, 7, 1, 2 bars",
        "song_duration, Song Duration, 7, 0, Genre average",
        "song_structure, Song Structure, 4, 0, Classic",
        "sound_kit, Sound Kit, 5, 0, Studio",
        "kick_probability, Kick Probability, 0.001, 1, 100 %",
        "snare_probability, Snare Probability, 0.001, 1, 100 %",
        "hats_probability, Hats Probability, 0.001, 1, 100 %",
        "percussion_probability, Percussion Probability, 0.001, 1, 100 %"
    };
    // clang-format on

    PulsewrightAudioProcessor processor;
    juce::StringArray parameters;

    for (const auto* p : processor.getParameters())
    {
        const auto& ranged = dynamic_cast<const juce::RangedAudioParameter&> (*p);
        const auto& id     = ranged.paramID;
        const auto number  = [] (float value) { return juce::String (std::round (value * 1000.0f) / 1000.0); };
        const auto step    = p->isDiscrete() ? static_cast<float> (p->getNumSteps()) : ranged.getNormalisableRange().interval;
        const auto shown   = p->getText (p->getDefaultValue(), 100) + " " + p->getLabel();
        parameters.add (
            juce::StringArray { id, p->getName (100), number (step), number (*processor.parameters.getRawParameterValue (id)), shown.trimEnd() }
                .joinIntoString (", "));
    }

    EXPECT_EQ (parameters.joinIntoString ("\n"), expected.joinIntoString ("\n"));
}

TEST (Parameters, PercentagesAreShownAndTypedAsWholeNumbers)
{
    for (const auto& [value, text] : { std::pair { 0.48f, "48" }, { 0.125f, "12" }, { 0.375f, "38" }, { 1.0f, "100" } })
        EXPECT_EQ (percentText (value), text) << "halves go to the even integer";

    for (const auto& [text, value] :
         { std::pair { "12.5", 0.125f }, { "48 %", 0.48f }, { "", 0.0f }, { "loud", 0.0f }, { "nan", 0.0f }, { "NaN", 0.0f } })
        EXPECT_EQ (percentValue (text), value) << text;

    PulsewrightAudioProcessor processor;
    for (const auto& [text, value] : { std::pair { "250", 1.0f }, { "1e999", 1.0f }, { "-3", 0.0f } })
        EXPECT_FLOAT_EQ (processor.parameters.getParameter ("density")->getValueForText (text), value) << text;
}

TEST (Parameters, SettingsWithoutATreeLandOnTheSameSteps)
{
    PulsewrightAudioProcessor processor;
    auto* parameter = processor.parameters.getParameter ("swing");

    for (int i = -100; i <= 10100; ++i)
    {
        const auto value = static_cast<float> (i) / 10000.0f;
        parameter->setValueNotifyingHost (parameter->convertTo0to1 (value));
        ASSERT_EQ (processor.parameters.getRawParameterValue ("swing")->load(), snapPercent (value)) << value;
    }
}

TEST (Parameters, EveryChoiceIsReadAsItself)
{
    PulsewrightAudioProcessor processor;
    const ParameterReader values (processor.parameters);
    const int expectedBars[] { 1, 2, 3, 4, 5, 7, 8 };

    const auto choose = [&] (const char* id, int index, int count)
    { processor.parameters.getParameter (id)->setValueNotifyingHost (static_cast<float> (index) / static_cast<float> (count - 1)); };

    for (int i = 0; i < 7; ++i)
    {
        choose (parameterID::genre, i, static_cast<int> (genreCount));
        choose (parameterID::patternLength, i, 7);
        choose (parameterID::songDuration, i, 7);
        choose (parameterID::songStructure, i % 4, 4);
        choose (parameterID::soundKit, i % 5, 5);
        const std::array read { static_cast<int> (values.genre()),
                                static_cast<int> (values.songDuration()),
                                static_cast<int> (values.songStructure()),
                                values.soundKit(),
                                values.patternBars() };
        EXPECT_EQ (read, (std::array { i, i, i % 4, i % 5, expectedBars[i] }));
    }

    // As a later version may have stored it.
    const auto setRaw = [&] (const char* id, float value) { processor.parameters.getRawParameterValue (id)->store (value); };

    for (const auto& [raw, genre] : { std::pair { 2.99f, Genre::dub }, { 1e20f, Genre (genreCount - 1) }, { std::nanf (""), Genre::boomBap } })
    {
        setRaw (parameterID::genre, raw);
        setRaw (parameterID::playMode, genre == Genre::dub ? 0.5f : 0.49f);
        EXPECT_EQ (values.genre(), genre) << raw;
        EXPECT_EQ (values.playsFullSong(), genre == Genre::dub);
    }
}

TEST (Parameters, WhateverAHostSetsEndsInsideTheRange)
{
    constexpr auto infinity = std::numeric_limits<float>::infinity();
    PulsewrightAudioProcessor processor;

    for (auto* parameter : processor.getParameters())
        for (const float bad : { std::numeric_limits<float>::quiet_NaN(), infinity, -infinity, 7.0f, -7.0f })
        {
            parameter->setValueNotifyingHost (bad);
            const auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (parameter);
            const auto range   = ranged->getNormalisableRange().getRange();
            const auto raw     = processor.parameters.getRawParameterValue (ranged->paramID)->load();
            EXPECT_TRUE (raw >= range.getStart() && raw <= range.getEnd()) << ranged->paramID << ": " << bad;
            EXPECT_TRUE (parameter->getValue() >= 0.0f && parameter->getValue() <= 1.0f) << ranged->paramID << ": " << bad;
        }
}

} // namespace pulsewright
