// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PlaybackEngine.h"

namespace pulsewright
{

namespace
{
    // Beyond this a double no longer tells one beat from the next.
    constexpr double farthestBeat = 0x1p52;

    // A block of more beats than this is no playback but a host gone wrong; to search it for notes
    // would keep the audio thread for seconds.
    constexpr double mostBeatsOfABlock = 256.0;
} // namespace

BlockWindow windowAt (double startBeat, double tempoBpm, double sampleRate, int numSamples) PULSEWRIGHT_NONBLOCKING
{
    const double beatsPerSample = tempoBpm / (std::max (1.0, sampleRate) * 60.0);
    const double span           = numSamples * beatsPerSample;

    const bool isPlayable = std::abs (startBeat) <= farthestBeat && beatsPerSample > 0.0 && span > 0.0 && span <= mostBeatsOfABlock;

    if (! isPlayable)
        return {};

    return { .start = startBeat, .from = startBeat, .end = startBeat + span, .beatsPerSample = beatsPerSample, .numSamples = numSamples };
}

BlockWindow TransportContinuity::join (BlockWindow window, const std::optional<HostLoop>& loop, double patternLength) PULSEWRIGHT_NONBLOCKING
{
    const auto isSamePlace = [&window] (double beat) { return std::abs (window.start - beat) <= largestRounding; };

    if (loop && window.end > loop->end && window.end - loop->end <= largestRounding)
        window.end = loop->end;

    if (isRolling && isSamePlace (playedUntil))
    {
        // A short block may lie wholly before the end of the last one: then it plays nothing.
        window.from = playedUntil;
    }
    else if (isRolling && loop && playedUntil >= loop->end - largestRounding && isSamePlace (playedUntil - loop->length()))
    {
        // The unplayed end of the loop is not the music directly before the loop's start, so it is played separately.
        window.remainder = { playedUntil, loop->end };
        window.from      = std::max (playedUntil - loop->length(), loop->start);
    }
    else if (isRolling && patternLength > 0.0)
    {
        const double difference = std::remainder (window.start - playedUntil, patternLength);
        window.from             = std::abs (difference) <= largestRounding ? window.start - difference : window.start;
    }

    // Never play a beat twice.
    playedUntil = std::max (window.from, window.end);
    isRolling   = true;
    return window;
}

} // namespace pulsewright
