// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The kit as its formulas read, one sample at a time with the library's functions: the yardstick of the
// benchmarks, and what the tests hold the fast one against.

#pragma once

#include "processor/kit/DrumSound.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace pulsewright::plain
{

class DrumVoice
{
public:
    void start (int note, int midiVelocity, int kit, std::uint32_t strokeCount) noexcept
    {
        *this      = {};
        active     = true;
        sound      = DrumSound::of (note, kit);
        velocity   = std::clamp (static_cast<float> (midiVelocity) / 127.0f, 0.0f, 1.0f);
        noiseState = DrumSound::noiseSeed (note, strokeCount);
    }

    bool isActive() const noexcept { return active; }
    float pan() const noexcept { return sound.pan; }

    /** The next sample, before panning. */
    float nextSample (double secondsPerSample) noexcept
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
                signal = nextSine (sound.frequency + sound.sweepDepth * std::exp (-DrumSound::sweepRate * age)) * level;

                if (sound.saturates)
                    signal = std::tanh (DrumSound::saturationDrive * signal) * DrumSound::saturationGain;
                break;

            case DrumSound::Source::noiseAndSine: signal = (sound.noiseGain * noise + nextSine (sound.frequency) * sound.sineGain) * level; break;

            case DrumSound::Source::brightNoise:
                signal        = level * (noise - DrumSound::highPassZero * previousNoise) * sound.noiseGain;
                previousNoise = noise;
                break;
        }

        // Accumulated rather than counted: at some rates the sum ends the longest voices one sample early.
        age += secondsPerSample;

        if (envelope < DrumSound::inaudibleLevel || age > DrumSound::longestSeconds)
            active = false;

        return signal * velocity * DrumSound::gain;
    }

private:
    float nextNoise() noexcept
    {
        noiseState = noiseState * DrumSound::noiseMultiplier + DrumSound::noiseIncrement;
        return static_cast<float> ((noiseState >> 8) * (2.0 / 16777215.0) - 1.0);
    }

    bool active              = false;
    DrumSound sound          = {};
    float velocity           = 0.0f;
    double phase             = 0.0;
    double age               = 0.0;
    float previousNoise      = 0.0f;
    std::uint32_t noiseState = 1;
};

/** Sixty-four of them, taken in turn. */
class DrumKit
{
public:
    explicit DrumKit (double sampleRate) : secondsPerSample (1.0 / std::max (1.0, sampleRate)) {}

    void start (int note, int velocity, int kit) noexcept
    {
        auto& voice = voices[strokeCount % voices.size()];
        voice.start (note, velocity, kit, ++strokeCount);
    }

    /** Writes both sides. */
    void render (float* left, float* right, int numSamples) noexcept
    {
        for (int sample = 0; sample < numSamples; ++sample)
        {
            float leftSum = 0.0f, rightSum = 0.0f;

            for (auto& voice : voices)
            {
                if (! voice.isActive())
                    continue;

                const float out = voice.nextSample (secondsPerSample);
                leftSum += out * (1.0f - voice.pan());
                rightSum += out * (1.0f + voice.pan());
            }

            left[sample]  = std::tanh (leftSum);
            right[sample] = std::tanh (rightSum);
        }
    }

private:
    std::array<DrumVoice, 64> voices {};
    std::uint32_t strokeCount = 0;
    double secondsPerSample;
};

} // namespace pulsewright::plain
