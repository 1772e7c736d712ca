// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "StateBytes.h"

#include "processor/PulsewrightAudioProcessor.h"

#include "generation/SongBuilder.h"

#include <gtest/gtest.h>

#include <limits>

namespace pulsewright
{

namespace
{
    void shake (PulsewrightAudioProcessor& processor)
    {
        int i = 0;
        for (auto* p : processor.getParameters())
            p->setValueNotifyingHost (0.05f + 0.05f * static_cast<float> (++i));

        processor.setLaneLocked (2, true);
        processor.generatePattern (SectionType::fill);
        processor.buildSong();
        processor.mutatePattern();
    }
} // namespace

TEST (State, BringsBackSettingsLocksAndCounter)
{
    PulsewrightAudioProcessor original;
    shake (original);
    const auto state = saved (original);

    PulsewrightAudioProcessor copy;
    copy.setLaneLocked (0, true);
    restore (copy, state);

    for (int i = 0; i < 18; ++i)
        EXPECT_FLOAT_EQ (copy.getParameters()[i]->getValue(), original.getParameters()[i]->getValue()) << i;
    for (int lane = 0; lane < 4; ++lane)
        EXPECT_EQ (copy.isLaneLocked (lane), lane == 2);

    EXPECT_EQ (copy.getSeedCounter(), 4u);
    EXPECT_EQ (saved (copy), state);

    // The music is that of the counter, always as a two-bar verse, and a restore takes no counter.
    const ParameterReader values (copy.parameters);
    GenerationSettings settings;
    settings.genre = values.genre();
    settings.setValues (values.settingsValues());
    settings.seed = saltOf (4);

    for (int again = 0; again < 2; ++again)
    {
        EXPECT_EQ (copy.getPattern(), GrooveGenerator::generate (settings, SectionType::verse, 2, 0));
        EXPECT_EQ (copy.getSong(), SongBuilder::buildSong (settings, copy.getSongBarCount (copy.getEffectiveBpm()), values.songStructure()));
        restore (copy, state);
    }
}

TEST (State, CountersAreReadModulo32Bits)
{
    // clang-format off
    const std::vector<std::pair<juce::String, std::uint32_t>> counters {
        { "seedCounter=\"7\"", 7 }, { "seedCounter=\"          1234567890123456789\"", 2112454933u }, { "seedCounter=\"4294967295\"", 4294967295u }, { "seedCounter=\"-1\"", 4294967295u },
        { "seedCounter=\"4294967298\"", 2 }, { "seedCounter=\"-2147483648\"", 2147483648u }, { "seedCounter=\"many\"", 0 }, { "", 1 } };
    // clang-format on

    for (const auto& [attribute, expected] : counters)
    {
        PulsewrightAudioProcessor processor;
        restore (processor, framed (stateText (attribute)));
        EXPECT_EQ (processor.getSeedCounter(), expected) << attribute;

        PulsewrightAudioProcessor copy;
        restore (copy, saved (processor));
        EXPECT_EQ (copy.getSeedCounter(), expected) << attribute;
    }
}

TEST (State, WhatIsNotOursChangesNothing)
{
    PulsewrightAudioProcessor processor;
    shake (processor);
    const auto before  = saved (processor);
    const auto pattern = processor.getPattern();
    const auto changes = processor.getChangeCounter();

    for (const auto& [name, bad] : badStates (before))
    {
        restore (processor, bad);
        EXPECT_EQ (saved (processor), before) << name;
    }

    processor.setStateInformation (nullptr, 100);
    processor.setStateInformation (before.getData(), -1);
    processor.setStateInformation (before.getData(), std::numeric_limits<int>::min());
    EXPECT_EQ (saved (processor), before);
    EXPECT_EQ (processor.getPattern(), pattern);
    EXPECT_EQ (processor.getChangeCounter(), changes);
}

TEST (State, EveryValueEndsInsideItsRange)
{
    // clang-format off
    const std::vector<std::pair<juce::String, float>> densities {
        { "0.25", 0.25f }, { "1.7", 1.0f }, { "-3", 0.0f }, { "nan", 0.0f }, { "loud", 0.0f }, { "", 0.0f }, { "1e999", 1.0f }, { "-inf", 0.0f },
        { "1e2999999999", 1.0f }, { "1e-2999999999", 0.0f }, { "3e-0000000001", 0.3f }, { "2.5E-1 e2999999999", 0.25f } };
    // clang-format on

    for (const auto& [text, expected] : densities)
    {
        PulsewrightAudioProcessor processor;
        restore (processor,
                 framed (stateText ("lock1=\"1\" lock3=\"yes please\" newer=\"thing\"",
                                    parameterElement ("density", text) + parameterElement ("genre", "99") + parameterElement ("tomorrow", "5")
                                        + "<Other/>")));

        EXPECT_FLOAT_EQ (processor.parameters.getRawParameterValue ("density")->load(), expected) << text;
        EXPECT_EQ (processor.parameters.getRawParameterValue ("genre")->load(), static_cast<float> (genreCount - 1));
        EXPECT_TRUE (processor.isLaneLocked (1));
        EXPECT_FALSE (processor.isLaneLocked (3));
    }
}

TEST (State, WhatIsTakenIsTakenAgainAsItWasPlayedOnceItIsSaved)
{
    // Within the bounds, but not as it would be written out.
    const auto swing = parameterElement ("swing", "0.75");
    const std::vector<std::pair<std::string, juce::String>> odd {
        { "twice", stateText ("seedCounter=\"9\" lock1=\"1\" seedCounter=\"7\" lock1=\"0\"", "<PARAM id=\"swing\" value=\"0.25\" value=\"0.75\"/>") },
        { "tags", stateText ("seedCounter=\"7\"", swing + juce::String::repeatedString ("<a/>", 240)) },
        { "quotes", stateText ("seedCounter=\"7\" later='" + juce::String::repeatedString ("\"", 300) + "'", swing) },
        { "bytes", stateText ("seedCounter=\"7\" later='" + juce::String::repeatedString ("a", 65000) + "'", swing) }
    };

    for (const auto& [name, text] : odd)
    {
        PulsewrightAudioProcessor processor, copy;
        restore (processor, framed (text));
        restore (copy, saved (processor));

        EXPECT_EQ (copy.getSeedCounter(), 7u) << name;
        EXPECT_FLOAT_EQ (copy.parameters.getRawParameterValue ("swing")->load(), 0.75f) << name;
        EXPECT_EQ (copy.isLaneLocked (1), processor.isLaneLocked (1)) << name;
        EXPECT_EQ (copy.getPattern(), processor.getPattern()) << name;
        EXPECT_EQ (saved (copy), saved (processor)) << name;
    }
}

TEST (State, AParameterThatTheStateLacksGetsItsDefault)
{
    PulsewrightAudioProcessor processor;
    shake (processor);
    restore (processor, framed (stateText ("seedCounter=\"3\"", "<PARAM id=\"swing\"/>")));

    // ... and the next save has all of them.
    const auto state = saved (processor);
    const auto xml   = juce::AudioProcessor::getXmlFromBinary (state.getData(), static_cast<int> (state.getSize()));

    for (auto* p : processor.getParameters())
    {
        const auto* ranged = dynamic_cast<juce::RangedAudioParameter*> (p);
        const auto* child  = xml->getChildByAttribute ("id", ranged->paramID);
        EXPECT_FLOAT_EQ (p->getValue(), p->getDefaultValue()) << ranged->paramID;
        ASSERT_NE (child, nullptr) << ranged->paramID;
        EXPECT_NEAR (child->getDoubleAttribute ("value", -1.0), ranged->convertFrom0to1 (p->getDefaultValue()), 1e-6) << ranged->paramID;
    }

    EXPECT_FALSE (processor.isLaneLocked (2));
}

} // namespace pulsewright
