// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Parameters.h"

#include "PercentRange.h"

#include "generation/SongBuilder.h"
#include "kit/DrumSound.h"

#include <cmath>

namespace pulsewright
{

namespace
{
    //==============================================================================
    /** A percentage that a host cannot push out of its range with a value that is not a number. */
    class PercentParameter final : public juce::AudioParameterFloat
    {
    public:
        PercentParameter (const char* id, const char* displayName, float defaultValue)
            : AudioParameterFloat (juce::ParameterID { id, 1 },
                                   displayName,
                                   juce::NormalisableRange<float> (0.0f, 1.0f, percentInterval, 1.0f),
                                   defaultValue,
                                   juce::AudioParameterFloatAttributes()
                                       .withLabel ("%")
                                       .withStringFromValueFunction ([] (float percentage, int) { return percentText (percentage); })
                                       .withValueFromStringFunction (percentValue))
        {}

    private:
        void valueChanged (float newValue) override
        {
            if (! std::isfinite (newValue))
                static_cast<AudioProcessorParameter&> (*this).setValue (static_cast<AudioProcessorParameter&> (*this).getDefaultValue());
        }
    };

    /** @param nameAt  gives the name at an index */
    template <typename NameAt>
    juce::StringArray namesOf (std::uint32_t count, NameAt&& nameAt)
    {
        juce::StringArray names;

        for (std::uint32_t i = 0; i < count; ++i)
        {
            const std::string_view name = nameAt (i);
            names.add (juce::String (name.data(), name.size()));
        }

        return names;
    }

    // There is no length of six bars and no duration of 4:30; the gaps stay, since the index is what is stored.
    constexpr std::array<int, 7> patternLengths { 1, 2, 3, 4, 5, 7, 8 };

    /** Truncated and clamped to 0..last; a missing parameter and a value that is not a number read as 0. */
    int readIndex (const std::atomic<float>* value, int last) noexcept
    {
        const float raw = value != nullptr ? value->load (std::memory_order_relaxed) : 0.0f;

        if (! (raw > 0.0f))
            return 0;

        return raw >= static_cast<float> (last) ? last : static_cast<int> (raw);
    }
} // namespace

//==============================================================================
juce::String percentText (float value)
{
    return juce::String (juce::roundToInt (value * 100.0f));
}

double numberFrom (const juce::String& text)
{
    const int exponent = text.indexOfAnyOf ("eE");

    if (exponent < 0)
        return text.getDoubleValue();

    const auto afterMark = text.substring (exponent + 1);
    const int signLength = afterMark.startsWithChar ('-') || afterMark.startsWithChar ('+') ? 1 : 0;
    const auto digits    = afterMark.substring (signLength).trimCharactersAtStart ("0");

    return (text.substring (0, exponent + 1 + signLength) + "0" + digits.substring (0, 6)).getDoubleValue();
}

float percentValue (const juce::String& text)
{
    const auto value = static_cast<float> (numberFrom (text) / 100.0);
    return std::isnan (value) ? 0.0f : value;
}

juce::AudioProcessorValueTreeState::ParameterLayout createLayout()
{
    namespace id = parameterID;

    juce::AudioProcessorValueTreeState::ParameterLayout layout;

    const auto percent = [&layout] (const char* parameter, const char* name, float defaultValue)
    { layout.add (std::make_unique<PercentParameter> (parameter, name, defaultValue)); };

    const auto choice = [&layout] (const char* parameter, const char* name, const juce::StringArray& names, int defaultIndex) {
        layout.add (std::make_unique<juce::AudioParameterChoice> (juce::ParameterID { parameter, 1 }, name, names, defaultIndex));
    };

    const auto genres     = namesOf (genreCount, [] (std::uint32_t i) { return nameOf (static_cast<Genre> (i)); });
    const auto structures = namesOf (songStructureCount, SongBuilder::structureName);

    // clang-format off
    choice  (id::genre,                 "Genre",                  genres, 0);
    percent (id::density,               "Density",                0.48f);
    percent (id::energy,                "Energy",                 0.58f);
    percent (id::syncopation,           "Syncopation",            0.42f);
    percent (id::swing,                 "Swing",                  0.18f);
    percent (id::variation,             "Variation",              0.35f);
    percent (id::experimental,          "Experimental",           0.12f);
    percent (id::timing,                "Timing Humanize",        0.16f);
    percent (id::velocity,              "Velocity Humanize",      0.22f);
    choice  (id::playMode,              "Playback",               { "Pattern", "Full Song" }, 0);
    choice  (id::patternLength,         "Pattern Length",         { "1 bar", "2 bars", "3 bars", "4 bars", "5 bars", "7 bars", "8 bars" }, 1);
    choice  (id::songDuration,          "Song Duration",          { "Genre average", "2:00", "2:30", "3:00", "3:30", "4:00", "5:00" }, 0);
    choice  (id::songStructure,         "Song Structure",         structures, 0);
    choice  (id::soundKit,              "Sound Kit",              { "Studio", "808", "Dusty", "Electronic", "MIDI Only" }, 0);
    percent (id::kickProbability,       "Kick Probability",       1.0f);
    percent (id::snareProbability,      "Snare Probability",      1.0f);
    percent (id::hatsProbability,       "Hats Probability",       1.0f);
    percent (id::percussionProbability, "Percussion Probability", 1.0f);
    // clang-format on

    return layout;
}

//==============================================================================
ParameterReader::ParameterReader (const juce::AudioProcessorValueTreeState& tree)
    : genreValue (tree.getRawParameterValue (parameterID::genre)),
      playModeValue (tree.getRawParameterValue (parameterID::playMode)),
      patternLengthValue (tree.getRawParameterValue (parameterID::patternLength)),
      songDurationValue (tree.getRawParameterValue (parameterID::songDuration)),
      songStructureValue (tree.getRawParameterValue (parameterID::songStructure)),
      soundKitValue (tree.getRawParameterValue (parameterID::soundKit))
{
    for (std::size_t i = 0; i < settings.size(); ++i)
        settings[i] = tree.getRawParameterValue (settingsParameterIDs[i]);
}

Genre ParameterReader::genre() const noexcept
{
    return static_cast<Genre> (readIndex (genreValue, static_cast<int> (genreCount) - 1));
}

bool ParameterReader::playsFullSong() const noexcept
{
    return playModeValue != nullptr && playModeValue->load (std::memory_order_relaxed) >= 0.5f;
}

int ParameterReader::patternBars() const noexcept
{
    return patternLengths[static_cast<std::size_t> (readIndex (patternLengthValue, static_cast<int> (patternLengths.size()) - 1))];
}

std::uint32_t ParameterReader::songDuration() const noexcept
{
    return static_cast<std::uint32_t> (readIndex (songDurationValue, static_cast<int> (songDurationCount) - 1));
}

std::uint32_t ParameterReader::songStructure() const noexcept
{
    return static_cast<std::uint32_t> (readIndex (songStructureValue, static_cast<int> (songStructureCount) - 1));
}

int ParameterReader::soundKit() const noexcept
{
    return readIndex (soundKitValue, midiOnly);
}

std::array<float, GenerationSettings::numValues> ParameterReader::settingsValues() const noexcept
{
    std::array<float, GenerationSettings::numValues> values {};

    for (std::size_t i = 0; i < values.size(); ++i)
        if (settings[i] != nullptr)
            values[i] = settings[i]->load (std::memory_order_relaxed);

    return values;
}

} // namespace pulsewright
