// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the kits' drums are made of.

#pragma once

#include "NonBlocking.h"
#include "generation/Take.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace pulsewright
{

/** The kits, and last the choice of none. The index is what hosts automate and states store. */
inline constexpr std::array<std::string_view, 5> kitNames { "Studio", "808", "Dusty", "Electronic", "MIDI Only" };

/** From this index on there is no sound. */
inline constexpr int midiOnly = static_cast<int> (kitNames.size()) - 1;
static_assert (kitNames.size() == Take::kitCount);

/** What a stroke is made of; fixed when the voice starts. Rates are per second, frequencies in hertz. */
struct DrumSound
{
    enum class Source : std::uint8_t
    {
        sweptSine,    ///< kick: a sine that falls in pitch
        noiseAndSine, ///< snare and percussion
        brightNoise   ///< hats: noise through a one-zero high-pass
    };

    Source source     = Source::sweptSine;
    bool saturates    = false; ///< the Dusty kick is driven into a tanh
    double decayRate  = 6.0;
    double frequency  = 50.0;
    double sweepDepth = 0.0; ///< hertz above the frequency at the start of a swept sine
    float sineGain    = 1.0f;
    float noiseGain   = 0.0f;
    float pan         = 0.0f; ///< -1 left to 1 right

    // The same for all.
    static constexpr double longestSeconds = 2.5;
    static constexpr double inaudibleLevel = 0.00008; ///< -82 dB; here a stroke is over
    static constexpr float gain            = 0.36f;
    static constexpr double sweepRate      = 28.0; ///< of a swept sine's fall
    static constexpr float saturationDrive = 2.2f;
    static constexpr float saturationGain  = 0.72f;
    static constexpr float highPassZero    = 0.92f; ///< of the bright noise

    // The noise is a linear congruential generator's.
    static constexpr std::uint32_t noiseMultiplier = 1664525u;
    static constexpr std::uint32_t noiseIncrement  = 1013904223u;

    /** Makes the noise of every stroke its own.
        @param strokeCount  how many strokes the synthesizer has started, this one included
    */
    static constexpr std::uint32_t noiseSeed (int note, std::uint32_t strokeCount) PULSEWRIGHT_NONBLOCKING
    {
        return (strokeCount * 104729u + static_cast<std::uint32_t> (note) * 7919u) ^ 0x9E3779B9u;
    }

    /** The sound of a MIDI note (0 to 127) in kit 0 to 3. Thread: any. Blocks: never. Allocates: never. */
    static DrumSound of (int note, int kit) PULSEWRIGHT_NONBLOCKING;
};

} // namespace pulsewright
