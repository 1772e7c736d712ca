// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The eighteen host parameters: their layout, and the rules by which their values are read.

#pragma once

#include "NonBlocking.h"
#include "generation/GenerationSettings.h"
#include "generation/Genre.h"
#include "preset/ParameterIds.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <array>
#include <atomic>

namespace pulsewright
{

/** The eighteen parameters in the order in which hosts list them. */
juce::AudioProcessorValueTreeState::ParameterLayout createLayout();

/** The number that a text begins with, as JUCE reads it: 0 where there is none, infinite or not a number where it says
    so. getDoubleValue() overflows an int on long exponents, so only the first six digits are passed on.
*/
double numberFrom (const juce::String& text);

/** How a percentage is shown and typed everywhere: 0.48 as "48". Halves go to the even integer.
    Text without a number is 0.
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

    Genre genre() const PULSEWRIGHT_NONBLOCKING;
    bool playsFullSong() const PULSEWRIGHT_NONBLOCKING;
    int patternBars() const noexcept;             ///< 1, 2, 3, 4, 5, 7 or 8
    std::uint32_t songDuration() const noexcept;  ///< 0 to 6
    std::uint32_t songStructure() const noexcept; ///< 0 to 3
    int soundKit() const PULSEWRIGHT_NONBLOCKING; ///< 0 to 4

    /** The values for GenerationSettings::setValues(). */
    std::array<float, GenerationSettings::numValues> settingsValues() const noexcept;

private:
    using Value = const std::atomic<float>*;

    Value genreValue, playModeValue, patternLengthValue, songDurationValue, songStructureValue, soundKitValue;
    std::array<Value, GenerationSettings::numValues> settings;
};

} // namespace pulsewright
