// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The built VST3 and LV2, called through their bare interfaces: what JUCE's own host would put right on the way does
// arrive here.

#pragma once

#include <juce_core/juce_core.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace pulsewright
{

struct RawEvent
{
    int sample;
    std::array<std::uint8_t, 3> bytes;
    bool operator== (const RawEvent&) const = default;
};

struct RawBlock
{
    bool isPlaying = true;
    double beat    = 0.0;
    double tempo   = 120.0;
    int numSamples = 0; ///< at most largestRawBlock
    std::vector<RawEvent> midi {};
};

constexpr int largestRawBlock = 8192;

/** One instance in its module. Both are gone with it. */
class RawHost
{
public:
    virtual ~RawHost() = default;

    /** Plays a block. @returns false where what came out is malformed */
    [[nodiscard]] virtual bool play (const RawBlock& block) = 0;

    virtual std::size_t mostEvents() const = 0; ///< that its wrapper lets out of a block; the rest is lost

    virtual juce::MemoryBlock save()                      = 0; ///< the plug-in's own bytes, without the wrapper's
    virtual void restore (const juce::MemoryBlock& state) = 0;
    virtual void restoreText (const std::string&) {} ///< in the form that the format keeps, if that is text

    // The window, of the LV2 alone: inside one of X11's. tendWindow() lets it live; to be called all the time.
    virtual void openWindow (unsigned long) {}
    virtual void tendWindow() {}
    virtual void closeWindow() {}

    // Of the last block.
    std::array<std::array<float, largestRawBlock>, 2> audio {};
    std::vector<RawEvent> midi;
};

/** @param bundle  what ends with .vst3 or .lv2
    @throws std::runtime_error  saying what fails
*/
std::unique_ptr<RawHost> openRaw (const juce::File& bundle, double sampleRate);

} // namespace pulsewright
