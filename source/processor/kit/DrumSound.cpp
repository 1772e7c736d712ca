// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "DrumSound.h"

#include "generation/DrumPattern.h"

#include <algorithm>
#include <iterator>

namespace pulsewright
{

namespace
{
    constexpr int lowestPercussion = note::sideStick; // below it all is kick
    constexpr int lowestPannedNote = 41;              // below it all is in the middle: kicks, side stick, snares
    constexpr float panWidth       = 0.18f;

    // clang-format off

    constexpr DrumSound kicks[] // by kit
    {
        { .decayRate = 6.0, .frequency = 50.0, .sweepDepth =  72.0 },
        { .decayRate = 3.2, .frequency = 42.0, .sweepDepth = 105.0 },                     // long and low
        { .saturates = true, .decayRate = 8.5, .frequency = 50.0, .sweepDepth =  72.0 },  // short and dirty
        { .decayRate = 6.0, .frequency = 58.0, .sweepDepth =  72.0 }
    };

    using enum DrumSound::Source;

    constexpr DrumSound snares[]
    {
        { .source = noiseAndSine, .decayRate = 13.0, .frequency = 185.0, .sineGain = 0.32f, .noiseGain = 0.72f },
        { .source = noiseAndSine, .decayRate = 13.0, .frequency = 185.0, .sineGain = 0.32f, .noiseGain = 0.42f }, // less noise
        { .source = noiseAndSine, .decayRate = 18.0, .frequency = 185.0, .sineGain = 0.32f, .noiseGain = 0.72f }, // faster
        { .source = noiseAndSine, .decayRate = 13.0, .frequency = 245.0, .sineGain = 0.32f, .noiseGain = 0.72f }  // higher
    };

    constexpr float hatGains[] { 0.48f, 0.48f, 0.3f, 0.48f };

    // clang-format on

    static_assert (std::size (kicks) == midiOnly && std::size (snares) == midiOnly && std::size (hatGains) == midiOnly,
                   "every kit that sounds has a row in every table");

    constexpr double closedHatDecay = 42.0;
    constexpr double openHatDecay   = 12.0;

    DrumSound hat (double decayRate, std::size_t kit) noexcept
    {
        return { .source = brightNoise, .decayRate = decayRate, .noiseGain = hatGains[kit] };
    }

    DrumSound percussion (int note, int kit) noexcept
    {
        // A tuned row: 18 Hz a semitone from the side stick up, 13 Hz brighter a kit.
        return { .source    = noiseAndSine,
                 .decayRate = 16.0,
                 .frequency = (note - lowestPercussion) * 18.0 + 105.0 + kit * 13.0,
                 .sineGain  = 0.68f,
                 .noiseGain = 0.22f };
    }

    DrumSound centredSoundOf (int note, int kit) noexcept
    {
        const auto kitIndex = static_cast<std::size_t> (std::clamp (kit, 0, midiOnly - 1));

        if (note < lowestPercussion)
            return kicks[kitIndex];

        switch (static_cast<std::uint32_t> (note))
        {
            case note::snare:
            case note::secondSnare: return snares[kitIndex];
            case note::closedHat: return hat (closedHatDecay, kitIndex);
            case note::openHat: return hat (openHatDecay, kitIndex);
            default: return percussion (note, static_cast<int> (kitIndex));
        }
    }
} // namespace

DrumSound DrumSound::of (int note, int kit) PULSEWRIGHT_NONBLOCKING
{
    auto sound = centredSoundOf (note, kit);

    if (note >= lowestPannedNote)
        sound.pan = note % 2 == 1 ? panWidth : -panWidth;

    return sound;
}

} // namespace pulsewright
