// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The audition kit: 64 one-shot voices that sound every note-on of a block at its sample.

#pragma once

#include "DrumVoice.h"

#include <juce_audio_basics/juce_audio_basics.h>

#include <array>
#include <cstdint>

namespace pulsewright
{

/** Renders MIDI into audio. Thread: audio, but for prepare(). Blocks: never. Allocates: never. */
class DrumSynth
{
public:
    static constexpr std::size_t numVoices = 64;

    /** Silences all voices. The stroke counter runs on, so that the noise does not repeat itself.
        @param sampleRate  in hertz; below 1 counts as 1
    */
    void prepare (double sampleRate);

    /** Chooses among StrokeKernels::all(), for tests and benchmarks; the best are taken by themselves. */
    void setKernels (const StrokeKernels& chosen) noexcept { kernels = &chosen; }

    /** Writes one block: what the buffer held is replaced, up to the second channel; mono gets the left side.

        @param midi  note-ons on any channel start voices at their sample; all else is ignored
        @param kit   0 to 3; from 4 on nothing is written and sounding voices stand still
    */
    template <typename Sample>
    void render (juce::AudioBuffer<Sample>& buffer, const juce::MidiBuffer& midi, int kit) noexcept;

private:
    void startVoice (int note, int velocity, int kit) noexcept;

    template <typename Sample>
    void renderRange (juce::AudioBuffer<Sample>& buffer, int firstSample, int endSample) noexcept;

    static constexpr int mixLength = 512; // samples at a time; small enough to stay in the nearest cache

    std::array<DrumVoice, numVoices> voices {};
    std::uint64_t strokeCount = 0; // voices ever started
    KitTables tables { 44100.0 };
    const StrokeKernels* kernels = &StrokeKernels::best();
    alignas (64) std::array<std::array<float, mixLength + cellPadding>, 2> mix {}; // left, right
};

} // namespace pulsewright
