// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "AuditionPlayer.h"

#include <algorithm>
#include <cmath>

namespace pulsewright
{

void AuditionPlayer::prepare (double newSampleRate)
{
    sampleRate = newSampleRate;
    playing    = false;
    strokes.reserve (usualStrokes);
    synth.prepare (newSampleRate);
}

void AuditionPlayer::start() noexcept
{
    playing = true;
    current = upcoming;
    frame   = 0;
    countFrom (0.0);
    continuity.breakOff();
    windowEnd = 0;
}

void AuditionPlayer::countFrom (double newOrigin) noexcept
{
    originBeat  = newOrigin;
    originFrame = frame;
}

void AuditionPlayer::takeUpcoming()
{
    const bool wasLoop  = current.repeat == Repeat::looped;
    const bool isOther  = current.music != upcoming.music;
    const double now    = beat();
    const bool isPast   = upcoming.music == nullptr || now >= upcoming.music->lengthInBeats;
    const bool restarts = upcoming.repeat == Repeat::once && isOther && (wasLoop || isPast);

    if (restarts || current.tempoBpm != upcoming.tempoBpm)
        countFrom (restarts ? std::fmod (now, beatsPerBar) : now);

    current = upcoming;
}

void AuditionPlayer::addStroke (const NoteOn& stroke)
{
    const auto isEarlier = [] (int sample, const NoteOn& other) { return sample < other.sample; };
    strokes.insert (std::upper_bound (strokes.begin(), strokes.end(), stroke.sample, isEarlier), stroke);
}

void AuditionPlayer::openWindow()
{
    takeUpcoming();
    strokes.clear();
    numPlayed   = 0;
    windowStart = frame;
    windowEnd   = frame + windowSize;

    if (current.music == nullptr)
        return;

    findEvents (*current.music,
                current.repeat,
                continuity.join (windowAt (beat(), current.tempoBpm, sampleRate, windowSize)),
                [this] (const NoteEvent& event)
                {
                    if (event.status == NoteEvent::noteOn && event.velocity > 0)
                        addStroke ({ event.sampleOffset, event.note, event.velocity });
                });
}

void AuditionPlayer::renderPiece (const SoundBlock<float>& piece, int kit)
{
    const auto first = static_cast<int> (frame - windowStart);

    synth.renderFrom (piece,
                      kit,
                      [&] (auto&& play)
                      {
                          for (; playing && numPlayed < strokes.size() && strokes[numPlayed].sample < first + piece.numSamples; ++numPlayed)
                              play ({ strokes[numPlayed].sample - first, strokes[numPlayed].note, strokes[numPlayed].velocity });
                      });
}

void AuditionPlayer::render (float* left, float* right, int numSamples, int kit)
{
    std::fill_n (left, numSamples, 0.0f); // without a kit nothing is written
    std::fill_n (right, numSamples, 0.0f);

    for (int done = 0; done < numSamples;)
    {
        if (playing && frame == windowEnd)
            openWindow();

        const auto untilNextWindow = playing ? windowEnd - frame : numSamples;
        const int count            = static_cast<int> (std::min<std::int64_t> (numSamples - done, untilNextWindow));
        renderPiece ({ { left + done, right + done }, count }, kit);
        frame += playing ? count : 0;
        done += count;
    }

    if (playing && current.repeat == Repeat::once && current.music != nullptr && beat() >= current.music->lengthInBeats)
        playing = false;
}

} // namespace pulsewright
