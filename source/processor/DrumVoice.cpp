// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "DrumVoice.h"

#include "generation/DrumPattern.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace pulsewright
{

namespace
{
    constexpr double longestVoiceSeconds = 2.5;
    constexpr double inaudibleEnvelope   = 0.00008; // -82 dB
    constexpr float voiceGain            = 0.36f;

    constexpr double kickSweepRate  = 28.0; // per second
    constexpr float kickDrive       = 2.2f; // of the Dusty kick, and the gain that follows it
    constexpr float kickDriveGain   = 0.72f;
    constexpr float hatHighPassZero = 0.92f;

    constexpr int lowestPannedNote = 41;
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
                 .frequency = (note - 37) * 18.0 + 105.0 + kit * 13.0,
                 .sineGain  = 0.68f,
                 .noiseGain = 0.22f };
    }

    DrumSound centredSoundOf (int note, int kit) noexcept
    {
        const auto kitIndex = static_cast<std::size_t> (std::clamp (kit, 0, midiOnly - 1));

        if (note < 37)
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

DrumSound DrumSound::of (int note, int kit) noexcept
{
    auto sound = centredSoundOf (note, kit);

    if (note >= lowestPannedNote)
        sound.pan = note % 2 == 1 ? panWidth : -panWidth;

    return sound;
}

//==============================================================================
void DrumVoice::start (int note, int midiVelocity, int kit, std::uint32_t strokeCount) noexcept
{
    reset();
    active     = true;
    sound      = DrumSound::of (note, kit);
    velocity   = std::clamp (static_cast<float> (midiVelocity) / 127.0f, 0.0f, 1.0f);
    noiseState = (strokeCount * 104729u + static_cast<std::uint32_t> (note) * 7919u) ^ 0x9E3779B9u;
}

float DrumVoice::nextNoise() noexcept
{
    noiseState = noiseState * 1664525u + 1013904223u;
    return static_cast<float> ((noiseState >> 8) * (2.0 / 16777215.0) - 1.0);
}

float DrumVoice::nextSample (double secondsPerSample) noexcept
{
    const float noise     = nextNoise();
    const double envelope = std::exp (-sound.decayRate * age);
    const auto level      = static_cast<float> (envelope);

    // The phase is advanced before it is used; the sine takes it in single precision.
    const auto nextSine = [&] (double frequency)
    {
        phase += 2.0 * std::numbers::pi * frequency * secondsPerSample;
        return std::sin (static_cast<float> (phase));
    };

    float signal = 0.0f;

    switch (sound.source)
    {
        case DrumSound::Source::sweptSine:
            signal = nextSine (sound.frequency + sound.sweepDepth * std::exp (-kickSweepRate * age)) * level;

            if (sound.saturates)
                signal = std::tanh (kickDrive * signal) * kickDriveGain;
            break;

        case DrumSound::Source::noiseAndSine: signal = (sound.noiseGain * noise + nextSine (sound.frequency) * sound.sineGain) * level; break;

        case DrumSound::Source::brightNoise:
            signal        = level * (noise - hatHighPassZero * previousNoise) * sound.noiseGain;
            previousNoise = noise;
            break;
    }

    // Accumulated rather than counted: at some rates the sum ends the longest voices one sample early.
    age += secondsPerSample;

    if (envelope < inaudibleEnvelope || age > longestVoiceSeconds)
        active = false;

    return signal * velocity * voiceGain;
}

} // namespace pulsewright
