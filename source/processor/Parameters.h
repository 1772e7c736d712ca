// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The eighteen host parameters: their layout, and the rules by which their values are read.

#pragma once

#include "generation/GenerationSettings.h"
#include "generation/Genre.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <array>
#include <atomic>

namespace pulsewright
{

/** The keys by which hosts automate and states are stored. They never change. */
namespace parameterID
{
    inline constexpr const char* genre                 = "genre";
    inline constexpr const char* density               = "density";
    inline constexpr const char* energy                = "energy";
    inline constexpr const char* syncopation           = "syncopation";
    inline constexpr const char* swing                 = "swing";
    inline constexpr const char* variation             = "variation";
    inline constexpr const char* experimental          = "experimental";
    inline constexpr const char* timing                = "timing";
    inline constexpr const char* velocity              = "velocity";
    inline constexpr const char* playMode              = "play_mode";
    inline constexpr const char* patternLength         = "pattern_length";
    inline constexpr const char* songDuration          = "song_duration";
    inline constexpr const char* songStructure         = "song_structure";
    inline constexpr const char* soundKit              = "sound_kit";
    inline constexpr const char* kickProbability       = "kick_probability";
    inline constexpr const char* snareProbability      = "snare_probability";
    inline constexpr const char* hatsProbability       = "hats_probability";
    inline constexpr const char* percussionProbability = "percussion_probability";
} // namespace parameterID

/** The parameters that shape the music, in the order of GenerationSettings::setValues(). */
inline constexpr std::array<const char*, GenerationSettings::numValues> settingsParameterIDs {
    parameterID::density,         parameterID::energy,           parameterID::syncopation,     parameterID::swing,
    parameterID::variation,       parameterID::experimental,     parameterID::timing,          parameterID::velocity,
    parameterID::kickProbability, parameterID::snareProbability, parameterID::hatsProbability, parameterID::percussionProbability
};

/** The style macros, which a mutation nudges: the first eight of the list above. */
inline constexpr std::size_t numMacros = 8;

/** The parameters in the order in which hosts list them. */
juce::AudioProcessorValueTreeState::ParameterLayout createLayout();

/** The number that a text begins with, as JUCE reads it: 0 where there is none, infinite or not a number where
    it says so. JUCE adds up an exponent's digits in an int; six of them decide everything.
*/
double numberFrom (const juce::String& text);

/** How a percentage is shown and typed everywhere: 0.48 as "48". Halves go to the even integer.
    Text that is no number is 0.
*/
juce::String percentText (float value);
float percentValue (const juce::String& text);

//==============================================================================
/** Reads the current values, each truncated and clamped into its choices.
    Thread: any. Blocks: never. Allocates: never.
*/
class ParameterReader
{
public:
    explicit ParameterReader (const juce::AudioProcessorValueTreeState& tree);

    Genre genre() const noexcept;
    bool playsFullSong() const noexcept;
    int patternBars() const noexcept;             ///< 1, 2, 3, 4, 5, 7 or 8
    std::uint32_t songDuration() const noexcept;  ///< 0 to 6
    std::uint32_t songStructure() const noexcept; ///< 0 to 3
    int soundKit() const noexcept;                ///< 0 to 4

    /** The values for GenerationSettings::setValues(). */
    std::array<float, GenerationSettings::numValues> settingsValues() const noexcept;

private:
    using Value = const std::atomic<float>*;

    Value genreValue, playModeValue, patternLengthValue, songDurationValue, songStructureValue, soundKitValue;
    std::array<Value, GenerationSettings::numValues> settings;
};

} // namespace pulsewright
