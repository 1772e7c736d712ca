// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// One drum stroke: an oscillator, a noise source and an exponential envelope.

#pragma once

#include <cstdint>

namespace pulsewright
{

/** The synthesised kits. Anything from midiOnly on is silent. */
enum DrumKit : int
{
    studio       = 0,
    eightOhEight = 1,
    dusty        = 2,
    electronic   = 3,
    midiOnly     = 4
};

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

    /** The sound of a MIDI note (0 to 127) in kit 0 to 3. */
    static DrumSound of (int note, int kit) noexcept;
};

/** A one-shot voice. It ends by itself, inaudible or 2.5 seconds old.

    Thread: audio only. Wait-free, allocates nothing.
*/
class DrumVoice
{
public:
    /** @param velocity     0 to 127
        @param strokeCount  how many voices the synthesizer has started, this one included: it
                            makes the noise of every stroke its own
    */
    void start (int note, int velocity, int kit, std::uint32_t strokeCount) noexcept;

    void reset() noexcept { *this = {}; }

    bool isActive() const noexcept { return active; }
    float pan() const noexcept { return sound.pan; }

    /** The next sample, before panning.
        @param secondsPerSample  1 / sample rate
    */
    float nextSample (double secondsPerSample) noexcept;

private:
    float nextNoise() noexcept;

    bool active              = false;
    DrumSound sound          = {};
    float velocity           = 0.0f; // 0 to 1
    double phase             = 0.0;  // radians; never wrapped, voices are short
    double age               = 0.0;  // seconds
    float previousNoise      = 0.0f;
    std::uint32_t noiseState = 1;
};

} // namespace pulsewright
