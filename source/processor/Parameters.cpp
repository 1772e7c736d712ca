// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Parameters.h"

#include "generation/SongBuilder.h"
#include "kit/DrumSound.h"

#include <cmath>
#include <map>
#include <numeric>
#include <string>
#include <vector>

namespace pulsewright
{

namespace
{
    //==============================================================================
    /** A percentage that a host cannot push out of its range with a value that is not a number. */
    class PercentParameter final : public juce::AudioParameterFloat
    {
    public:
        explicit PercentParameter (const Setting& setting)
            : AudioParameterFloat (juce::ParameterID { setting.id, 1 },
                                   setting.name,
                                   juce::NormalisableRange<float> (0.0f, 1.0f, settingInterval, 1.0f),
                                   GenerationSettings().*setting.field,
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

    juce::String textOf (std::string_view text)
    {
        return { text.data(), text.size() };
    }

    std::vector<std::uint32_t> numbersBelow (std::uint32_t count)
    {
        std::vector<std::uint32_t> numbers (count);
        std::iota (numbers.begin(), numbers.end(), 0u);
        return numbers;
    }

    /** @param nameOf  gives the name of an item */
    template <typename NameOf>
    juce::StringArray namesOf (const auto& items, NameOf&& nameOf)
    {
        juce::StringArray names;

        for (const auto& item : items)
            names.add (textOf (nameOf (item)));

        return names;
    }

    struct Choice
    {
        int listed; ///< as Setting::listed
        const char* id;
        const char* name;
        juce::StringArray names;
        int byDefault = 0;
    };

    std::vector<Choice> allChoices()
    {
        const auto genres     = numbersBelow (genreCount);
        const auto structures = numbersBelow (songStructureCount);
        const auto barsText   = [] (int bars) { return std::to_string (bars) + (bars == 1 ? " bar" : " bars"); };

        namespace id = parameterID;

        // clang-format off
        return
        {
            {  0, id::genre,         "Genre",          namesOf (genres, [] (auto i) { return nameOf (static_cast<Genre> (i)); }) },
            {  9, id::playMode,      "Playback",       { "Pattern", "Full Song" } },
            { 10, id::patternLength, "Pattern Length", namesOf (patternLengths, barsText), 1 },
            { 11, id::songDuration,  "Song Duration",  namesOf (songDurations, [] (const auto& duration) { return duration.name; }) },
            { 12, id::songStructure, "Song Structure", namesOf (structures, SongBuilder::structureName) },
            { 13, id::soundKit,      "Sound Kit",      namesOf (kitNames, [] (auto name) { return name; }) }
        };
        // clang-format on
    }

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
    std::map<int, std::unique_ptr<juce::RangedAudioParameter>> inOrder;

    for (const auto& setting : allSettings)
        inOrder[setting.listed] = std::make_unique<PercentParameter> (setting);

    for (const auto& choice : allChoices())
        inOrder[choice.listed] =
            std::make_unique<juce::AudioParameterChoice> (juce::ParameterID { choice.id, 1 }, choice.name, choice.names, choice.byDefault);

    juce::AudioProcessorValueTreeState::ParameterLayout layout;

    for (auto& [listed, parameter] : inOrder)
        layout.add (std::move (parameter));

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
        settings[i] = tree.getRawParameterValue (allSettings[i].id);
}

Genre ParameterReader::genre() const PULSEWRIGHT_NONBLOCKING
{
    return static_cast<Genre> (readIndex (genreValue, static_cast<int> (genreCount) - 1));
}

bool ParameterReader::playsFullSong() const PULSEWRIGHT_NONBLOCKING
{
    return playModeValue != nullptr && playModeValue->load (std::memory_order_relaxed) >= 0.5f;
}

int ParameterReader::patternBars() const noexcept
{
    return patternLengths[static_cast<std::size_t> (readIndex (patternLengthValue, static_cast<int> (patternLengths.size()) - 1))];
}

std::uint32_t ParameterReader::songDuration() const noexcept
{
    return static_cast<std::uint32_t> (readIndex (songDurationValue, static_cast<int> (songDurations.size()) - 1));
}

std::uint32_t ParameterReader::songStructure() const noexcept
{
    return static_cast<std::uint32_t> (readIndex (songStructureValue, static_cast<int> (songStructureCount) - 1));
}

int ParameterReader::soundKit() const PULSEWRIGHT_NONBLOCKING
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
