// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The inner loops themselves, for one kind of vectors. Included by one file for each, which is compiled for
// processors that have them. Nothing here may call an inline function that is not made for these vectors
// alone: the linker keeps one copy of such a function for the whole program, and it could keep this one.

#pragma once

#include "StrokeKernels.h"

#include <numbers>
#include <xsimd/xsimd.hpp>

namespace pulsewright
{

template <typename Architecture>
class StrokeKernelsFor
{
public:
    static constexpr StrokeKernels kernels (const char* name) noexcept { return { name, addStroke, saturate }; }

private:
    using Floats  = xsimd::batch<float, Architecture>;
    using Scratch = float[cellSize + cellPadding];

    static constexpr double twoPi = 2.0 * std::numbers::pi;

    static constexpr int width = static_cast<int> (Floats::size);
    static_assert (width <= cellPadding && cellSize % width == 0);

    // Where a sequence is k + 1 steps of the noise generator after a state s: multiplier[k] * s + increment[k].
    struct NoiseSteps
    {
        std::uint32_t multiplier[cellSize + cellPadding] {};
        std::uint32_t increment[cellSize + cellPadding] {};

        constexpr NoiseSteps() noexcept
        {
            std::uint32_t m = 1, i = 0;

            for (int k = 0; k < cellSize + cellPadding; ++k)
            {
                m *= DrumSound::noiseMultiplier;
                i             = i * DrumSound::noiseMultiplier + DrumSound::noiseIncrement;
                multiplier[k] = m;
                increment[k]  = i;
            }
        }
    };

    static constexpr NoiseSteps noiseSteps {};

    // 0, 1, 2 and so on: each sample's place in a vector.
    struct Places
    {
        float of[static_cast<int> (Floats::size)] {};

        constexpr Places() noexcept
        {
            for (int i = 0; i < width; ++i)
                of[i] = static_cast<float> (i);
        }
    };

    static constexpr Places places {};

    static int paddedTo (int count, int multiple) noexcept { return (count + multiple - 1) / multiple * multiple; }

    static void clear (float* samples) noexcept
    {
        for (int i = 0; i < cellPadding; ++i)
            samples[i] = 0.0f;
    }

    /** Twenty-four bits a sample, -1 to 1. */
    static void fillNoise (std::uint32_t& state, float* noise, int numSamples) noexcept
    {
        constexpr float middle = 8388607.5f; // half a bit from an integer, so that the difference is exact
        const auto start       = state;

        for (int k = 0; k < paddedTo (numSamples, cellPadding); ++k)
        {
            const auto bits = (noiseSteps.multiplier[k] * start + noiseSteps.increment[k]) >> 8;
            noise[k]        = (static_cast<float> (static_cast<std::int32_t> (bits)) - middle) * (1.0f / middle);
        }

        state = noiseSteps.multiplier[numSamples - 1] * start + noiseSteps.increment[numSamples - 1];
    }

    /** The phase is a running sum in double precision, sample by sample; its sine is taken in single. */
    static void fillPhases (double& phase, float* phases, int numSamples, const double* increments) noexcept
    {
        double sum = phase;

        for (int k = 0; k < numSamples; ++k)
        {
            sum += increments[k];
            phases[k] = static_cast<float> (sum);
        }

        phase = sum;
        clear (phases + numSamples);
    }

    /** The power of two above a positive number. */
    static double nextPower (double value) noexcept
    {
        const auto exponent = __builtin_bit_cast(std::uint64_t, value) & 0x7FF0000000000000u;
        return __builtin_bit_cast(double, exponent + 0x0010000000000000u);
    }

    /** The same sum, bit for bit, of a step that stays. Between two powers of two all doubles are equally far apart, and it
        grows by a constant, as in advanced(): each sum is then one multiplication and one addition.
    */
    static void fillSteadyPhases (double& phase, float* phases, int numSamples, double step) noexcept
    {
        double sum = phase;
        int k      = 0;

        for (; k < numSamples; ++k)
        {
            const double once  = sum + step;
            const double grown = once - sum;
            const int left     = numSamples - k;

            if (sum > 0.0 && (once + step) - once == grown && sum + grown * (left + 1) < nextPower (sum))
            {
                for (int i = 0; i < paddedTo (left, cellPadding); ++i)
                    phases[k + i] = static_cast<float> (sum + grown * static_cast<double> (i + 1));

                phase = sum + grown * left;
                return;
            }

            sum       = once;
            phases[k] = static_cast<float> (sum);
        }

        phase = sum;
        clear (phases + numSamples);
    }

    /** The sine of 0 to some 30000 radians, off by at most 2e-7. There are no branches: a branch would
        depend on the other samples of the vector, and which samples share a vector depends on the host's blocks.
    */
    static Floats sine (const Floats& x) noexcept
    {
        // The nearest multiple of pi is subtracted, in three parts whose products are exact; what is left is at most a
        // quarter turn.
        constexpr float first  = 3.140625f;
        constexpr float second = 0.0009670257568359375f;
        constexpr auto third   = static_cast<float> (std::numbers::pi - static_cast<double> (first) - static_cast<double> (second));

        const auto multiple = xsimd::to_int (x * Floats (static_cast<float> (1.0 / std::numbers::pi)) + Floats (0.5f));
        const auto k        = xsimd::to_float (multiple);
        const auto r        = ((x - k * Floats (first)) - k * Floats (second)) - k * Floats (third);

        // Abramowitz and Stegun, Handbook of Mathematical Functions, 4.3.97.
        constexpr float coefficients[] { 0.0000027526f, -0.0001984090f, 0.0083333315f, -0.1666666664f };
        const auto square = r * r;
        auto series       = Floats (-0.0000000239f);
        for (const float coefficient : coefficients)
            series = series * square + Floats (coefficient);

        const auto value = r + r * square * series;
        return xsimd::bitwise_cast<Floats> (xsimd::bitwise_cast<xsimd::batch<std::int32_t, Architecture>> (value) ^ (multiple << 31));
    }

    static Floats load (const float* samples) noexcept { return Floats::load_unaligned (samples); }

    static Floats levelAt (const StrokePiece& piece, int k) noexcept { return Floats (piece.level) * load (piece.levelPowers + k); }

    //==============================================================================
    /** Adds what a stroke sounds like to both sides. @param soundAt  gives the samples from one on, before velocity and gain */
    template <typename SoundAt>
    static void addSamples (const StrokePiece& piece, float* left, float* right, int numSamples, SoundAt&& soundAt) noexcept
    {
        const Floats velocity (piece.velocity), gain (DrumSound::gain), leftGain (1.0f - piece.sound.pan), rightGain (1.0f + piece.sound.pan);

        const auto add = [&] (int k, const Floats& sound)
        {
            const auto out = sound * velocity * gain;
            (load (left + k) + out * leftGain).store_unaligned (left + k);
            (load (right + k) + out * rightGain).store_unaligned (right + k);
        };

        int k = 0;

        for (; k + width <= numSamples; k += width)
            add (k, soundAt (k));

        if (k < numSamples) // past the end nothing is added
            add (k, xsimd::select (load (places.of) < Floats (static_cast<float> (numSamples - k)), soundAt (k), Floats (0.0f)));
    }

    static void addSweptSine (const StrokePiece& piece, StrokeState& state, float* left, float* right, int numSamples) noexcept
    {
        alignas (64) double increments[cellSize + cellPadding];
        alignas (64) Scratch phases;
        const auto& sound = piece.sound;

        for (int k = 0; k < paddedTo (numSamples, cellPadding); ++k)
            increments[k] = twoPi * (sound.frequency + sound.sweepDepth * (piece.sweep * piece.sweepPowers[k])) * piece.secondsPerSample;

        fillPhases (state.phase, phases, numSamples, increments);

        const auto plain = [&] (int k) { return sine (load (phases + k)) * levelAt (piece, k); };

        if (sound.saturates)
            addSamples (piece,
                        left,
                        right,
                        numSamples,
                        [&] (int k) { return xsimd::tanh (Floats (DrumSound::saturationDrive) * plain (k)) * Floats (DrumSound::saturationGain); });
        else
            addSamples (piece, left, right, numSamples, plain);
    }

    static void addNoiseAndSine (const StrokePiece& piece, StrokeState& state, float* left, float* right, int numSamples) noexcept
    {
        alignas (64) Scratch noise;
        alignas (64) Scratch phases;
        const auto& sound = piece.sound;
        fillSteadyPhases (state.phase, phases, numSamples, twoPi * sound.frequency * piece.secondsPerSample);
        fillNoise (state.noiseState, noise, numSamples);

        addSamples (piece,
                    left,
                    right,
                    numSamples,
                    [&] (int k)
                    {
                        const auto mixed = Floats (sound.noiseGain) * load (noise + k) + sine (load (phases + k)) * Floats (sound.sineGain);
                        return mixed * levelAt (piece, k);
                    });
    }

    static void addBrightNoise (const StrokePiece& piece, StrokeState& state, float* left, float* right, int numSamples) noexcept
    {
        alignas (64) float noise[1 + cellSize + cellPadding];
        noise[0] = state.previousNoise;
        fillNoise (state.noiseState, noise + 1, numSamples);
        state.previousNoise = noise[numSamples];

        addSamples (piece,
                    left,
                    right,
                    numSamples,
                    [&] (int k)
                    {
                        const auto bright = load (noise + 1 + k) - Floats (DrumSound::highPassZero) * load (noise + k);
                        return levelAt (piece, k) * bright * Floats (piece.sound.noiseGain);
                    });
    }

    static void addStroke (const StrokePiece& piece, StrokeState& state, float* left, float* right, int numSamples) PULSEWRIGHT_NONBLOCKING
    {
        switch (piece.sound.source)
        {
            case DrumSound::Source::sweptSine: return addSweptSine (piece, state, left, right, numSamples);
            case DrumSound::Source::noiseAndSine: return addNoiseAndSine (piece, state, left, right, numSamples);
            case DrumSound::Source::brightNoise: return addBrightNoise (piece, state, left, right, numSamples);
        }
    }

    static void saturate (float* samples, int numSamples) PULSEWRIGHT_NONBLOCKING
    {
        for (int k = 0; k < numSamples; k += width)
            xsimd::tanh (load (samples + k)).store_unaligned (samples + k);
    }
};

} // namespace pulsewright
