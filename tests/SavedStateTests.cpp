// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "StateBytes.h"

#include "processor/PulsewrightAudioProcessor.h"
#include "processor/SavedState.h"

#include <gtest/gtest.h>

#include <limits>

namespace pulsewright
{

namespace
{
    std::optional<SavedState> readFrom (const juce::MemoryBlock& bytes)
    {
        static const PulsewrightAudioProcessor layout;
        return SavedState::read (bytes.getData(), static_cast<int> (bytes.getSize()), layout.parameters);
    }

    SavedState stateOf (const juce::String& attributes, const juce::String& children = {})
    {
        return readFrom (framed (stateText (attributes, children))).value();
    }

    /** What the parameter tree takes: of several values the last. */
    float valueOf (const SavedState& state, const juce::String& id)
    {
        auto value = std::numeric_limits<float>::quiet_NaN();
        for (const auto& child : state.parameters)
            if (child["id"].toString() == id)
                value = static_cast<float> (child["value"]);
        return value;
    }

    juce::MemoryBlock bytesOf (const SavedState& state)
    {
        juce::MemoryBlock bytes;
        state.write (bytes);
        return bytes;
    }
} // namespace

TEST (SavedState, CountersAreReadModulo32Bits)
{
    // clang-format off
    const std::vector<std::pair<juce::String, std::uint32_t>> counters {
        { "seedCounter=\"7\"", 7 },          { "seedCounter=\"4294967295\"", 4294967295u },  { "seedCounter=\"-1\"", 4294967295u }, { "seedCounter=\"+09\"", 9 },
        { "seedCounter=\"4294967298\"", 2 }, { "seedCounter=\"-2147483648\"", 2147483648u }, { "seedCounter=\"many\"", 0 },         { "", 1 },
        { "seedCounter=\"          1234567890123456789\"", 2112454933u } };
    // clang-format on

    for (const auto& [attribute, expected] : counters)
    {
        const auto state = stateOf (attribute);
        EXPECT_EQ (state.seedCounter, expected) << attribute;
        EXPECT_EQ (readFrom (bytesOf (state)).value().seedCounter, expected) << attribute;
    }
}

TEST (SavedState, ValuesLieInTheirRangesAndMissingOnesAreDefaults)
{
    // clang-format off
    const std::vector<std::pair<juce::String, float>> densities {
        { "0.25", 0.25f }, { "1.7", 1.0f }, { "-3", 0.0f }, { "nan", 0.0f }, { "loud", 0.0f }, { "", 0.0f }, { "1e999", 1.0f }, { "-inf", 0.0f },
        { "1e2999999999", 1.0f }, { "1e-2999999999", 0.0f }, { "3e-0000000001", 0.3f }, { "2.5E-1 e2999999999", 0.25f } };
    // clang-format on

    for (const auto& [text, expected] : densities)
    {
        const auto state = stateOf ("lock1=\"1\" lock3=\"yes please\" newer=\"thing\"",
                                    parameterElement ("density", text) + parameterElement ("genre", "99") + parameterElement ("tomorrow", "5")
                                        + "<PARAM id=\"swing\"/><Other/>");

        EXPECT_FLOAT_EQ (valueOf (state, "density"), expected) << text;
        EXPECT_EQ (valueOf (state, "genre"), static_cast<float> (genreCount - 1));
        EXPECT_FLOAT_EQ (valueOf (state, "swing"), 0.18f) << "an element without a value";
        EXPECT_FLOAT_EQ (valueOf (state, "energy"), 0.58f) << "no element at all";
        EXPECT_EQ (valueOf (state, "sound_kit"), 0.0f);
        EXPECT_EQ (state.locks, (LaneLocks { false, true, false, false }));
        EXPECT_EQ (state.parameters["newer"].toString(), "thing") << "a later version's";
        EXPECT_EQ (valueOf (state, "tomorrow"), 5.0f);
    }
}

TEST (SavedState, WhatIsNoStateGivesNothing)
{
    const auto good = bytesOf (stateOf ("seedCounter=\"7\""));
    ASSERT_TRUE (readFrom (good));

    for (const auto& [name, bad] : badStates (good))
        EXPECT_FALSE (readFrom (bad)) << name;

    // What stands behind the text's length is not the state's, though no zero comes first.
    auto padded                = good;
    padded[good.getSize() - 1] = ' ';
    padded.append ("<!DOCTYPE x []>", 15);
    EXPECT_TRUE (readFrom (padded));

    const PulsewrightAudioProcessor layout;
    EXPECT_FALSE (SavedState::read (nullptr, 100, layout.parameters));
    EXPECT_FALSE (SavedState::read (good.getData(), -1, layout.parameters));
    EXPECT_FALSE (SavedState::read (good.getData(), std::numeric_limits<int>::min(), layout.parameters));
}

TEST (SavedState, AStateThatIsReadCanBeSavedAndReadAgain)
{
    // Within the bounds, but not as it would be written out: twice the same, with more digits, or too long once it is.
    const auto swing = parameterElement ("swing", "0.75");
    const std::vector<std::pair<juce::String, juce::String>> odd {
        { "seedCounter=\"9\" lock1=\"1\" seedCounter=\"7\" lock1=\"0\"", "<PARAM id=\"swing\" value=\"0.25\" value=\"0.75\"/>" },
        { "seedCounter=\"7\"", parameterElement ("swing", "0.25") + swing },
        { "seedCounter=\"7\"", parameterElement ("density", "0.0009930000009938504") + swing },
        { "seedCounter=\"7\"", swing + juce::String::repeatedString ("<a/>", 240) },
        { "seedCounter=\"7\" later='" + juce::String::repeatedString ("\"", 300) + "'", swing },
        { "seedCounter=\"7\" later=\"&amp;&lt;&gt;&quot;&apos;&#9;&#x41;\"", swing },
        { "seedCounter=\"7\" later='" + juce::String::repeatedString ("a", 65000) + "'", swing }
    };

    for (const auto& [attributes, children] : odd)
    {
        const auto state = stateOf (attributes, children);
        const auto again = readFrom (bytesOf (state));
        ASSERT_TRUE (again) << attributes.substring (0, 60);
        EXPECT_EQ (bytesOf (*again), bytesOf (state));

        for (const auto* read : { &state, &*again })
        {
            EXPECT_EQ (read->seedCounter, 7u);
            EXPECT_EQ (read->locks, LaneLocks {});
            EXPECT_FLOAT_EQ (valueOf (*read, "swing"), 0.75f) << attributes.substring (0, 60);
        }
    }
}

} // namespace pulsewright
