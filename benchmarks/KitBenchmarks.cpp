// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The kit against its plain form.

#include "ComparisonTable.h"
#include "PlainDrumKit.h"

#include "processor/kit/DrumSynth.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace pulsewright
{

namespace
{
    constexpr double sampleRate = 48000.0;
    constexpr int takeLength    = 9600; // samples; the shortest stroke, a closed hat, lasts longer

    // One of each, over and over, in all kits.
    constexpr std::array allSounds { 36, 38, 42, 46, 45 };

    int noteOf (int stroke)
    {
        return allSounds[static_cast<std::size_t> (stroke) % allSounds.size()];
    }

    /** Sixty-four voices all the time, in blocks. The time is that of one sample of one voice. */
    void finish (benchmark::State& state, double sum)
    {
        benchmark::DoNotOptimize (sum);
        state.counters["per"] = 64.0 * takeLength;
    }

    void renderPlain (benchmark::State& state, int blockSize)
    {
        plain::DrumKit kit (sampleRate);
        std::vector<float> left (static_cast<std::size_t> (blockSize)), right (left);
        double sum = 0.0;

        for (auto _ : state)
        {
            for (int stroke = 0; stroke < 64; ++stroke)
                kit.start (noteOf (stroke), 100, stroke / 5 % 4);

            for (int position = 0; position < takeLength; position += blockSize)
            {
                kit.render (left.data(), right.data(), std::min (blockSize, takeLength - position));
                sum += static_cast<double> (left[0] + right[0]);
            }
        }

        finish (state, sum);
    }

    void renderKit (benchmark::State& state, int blockSize, const StrokeKernels& kernels)
    {
        DrumSynth synth;
        synth.setKernels (kernels);
        synth.prepare (sampleRate);
        std::vector<float> left (static_cast<std::size_t> (blockSize)), right (left);
        std::array<std::vector<NoteOn>, 4> starts; // one a kit

        for (int stroke = 0; stroke < 64; ++stroke)
            starts[static_cast<std::size_t> (stroke / 5 % 4)].push_back ({ 0, noteOf (stroke), 100 });

        double sum = 0.0;

        for (auto _ : state)
        {
            for (int kit = 0; kit < 4; ++kit)
                synth.render (SoundBlock<float> {}, kit, starts[static_cast<std::size_t> (kit)]);

            for (int position = 0; position < takeLength; position += blockSize)
            {
                synth.render (SoundBlock<float> { { left.data(), right.data() }, std::min (blockSize, takeLength - position) },
                              0,
                              std::span<const NoteOn> {});
                sum += static_cast<double> (left[0] + right[0]);
            }
        }

        finish (state, sum);
    }

    const bool registered = []
    {
        for (const int blockSize : { 32, 64, 512 })
        {
            const auto row = "64 voices, blocks of " + std::to_string (blockSize);
            benchmark::RegisterBenchmark ((row + "/plain").c_str(), renderPlain, blockSize);

            for (const auto* kernels : StrokeKernels::all())
                benchmark::RegisterBenchmark ((row + "/" + kernels->name).c_str(), renderKit, blockSize, *kernels);
        }
        return true;
    }();
} // namespace

} // namespace pulsewright
