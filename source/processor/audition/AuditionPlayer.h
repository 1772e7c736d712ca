// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Music with the kit's sound, on a clock of its own: what the command line writes as sound and the page in the browser plays.

#pragma once

#include "processor/kit/DrumSynth.h"
#include "processor/playback/PlaybackEngine.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace pulsewright
{

/** What is played, and how. */
struct Audition
{
    std::shared_ptr<const PlaybackData> music;
    Repeat repeat   = Repeat::looped;
    double tempoBpm = 120.0;
};

/** Searches the music for strokes in windows of windowSize samples, counted from the start. So the samples do not depend on
    how they are asked for, and a change is heard from the next window on, without a gap.
    Thread: any, one at a time. Blocks: never. Allocates: in prepare(), and in render() where a window has thousands of strokes;
    render() frees the music that is no longer played.
*/
class AuditionPlayer
{
public:
    static constexpr int windowSize = 512; ///< as pulsewright-play-song asks the plug-in: the same onsets to the sample

    /** Stops and silences. @param newSampleRate  in hertz */
    void prepare (double newSampleRate);

    /** What the next window plays. The clock runs on: a loop keeps its beat. A song that follows a loop, or is over by now,
        begins with the bar that is being played.
    */
    void set (Audition next) { upcoming = std::move (next); }

    /** From the first beat, with the next sample. */
    void start() noexcept;

    /** No stroke begins any more; those that sound end by themselves. A song that is over stops by itself. */
    void stop() noexcept { playing = false; }
    bool isPlaying() const noexcept { return playing; }

    /** Where the next sample is, in beats since the start. */
    double beat() const noexcept { return originBeat + static_cast<double> (frame - originFrame) * beatsPerSample(); }

    /** @param kit  index into kitNames
        @param left, right  room for numSamples each; replaced
    */
    void render (float* left, float* right, int numSamples, int kit);

private:
    static constexpr std::size_t usualStrokes = 4096; // of a window; the densest song has some fifty

    double beatsPerSample() const noexcept { return current.tempoBpm / (sampleRate * 60.0); }
    void countFrom (double newOrigin) noexcept;
    void takeUpcoming();
    void addStroke (const NoteOn& stroke);
    void openWindow();
    void renderPiece (const SoundBlock<float>& piece, int kit);

    double sampleRate = 48000.0;
    Audition upcoming, current;
    TransportContinuity continuity;
    DrumSynth synth;

    bool playing             = false;
    double originBeat        = 0.0; // at originFrame; the tempo has not changed since
    std::int64_t originFrame = 0, frame = 0;
    std::int64_t windowStart = 0, windowEnd = 0;
    std::vector<NoteOn> strokes; // of the window, in the order in which a host would have them
    std::size_t numPlayed = 0;   // of them
};

} // namespace pulsewright
