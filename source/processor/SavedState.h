// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What a host's project keeps of the plug-in, as bytes and as values.

#pragma once

#include "generation/GrooveGenerator.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <cstdint>
#include <optional>

namespace pulsewright
{

/** Parameters, lane locks and the seed counter. The music is generated from them again.
    Thread: any but audio. Blocks: never.
*/
struct SavedState
{
    static constexpr const char* type = "PulsewrightState"; ///< of the root element

    std::uint32_t seedCounter = 1;
    LaneLocks locks {};

    /** As AudioProcessorValueTreeState::replaceState() takes it: every parameter once or more, each value in its range.
        What a later version has stored besides is kept, as long as the whole can be saved and read again.
    */
    juce::ValueTree parameters;

    /** @param layout  the parameters, with their ranges and defaults
        @returns nothing where the bytes are no state, or one that is not safe to parse
    */
    static std::optional<SavedState> read (const void* data, int size, const juce::AudioProcessorValueTreeState& layout);

    /** Whether read() would give a state. */
    static bool isReadable (const void* data, int size);

    void write (juce::MemoryBlock& destination) const;
};

} // namespace pulsewright
