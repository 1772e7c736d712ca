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

BlockWindow windowAt (double startBeat, double tempoBpm, double sampleRate, int numSamples) noexcept
{
    const double beatsPerSample = tempoBpm / (std::max (1.0, sampleRate) * 60.0);
    const double span           = numSamples * beatsPerSample;

    const bool isPlayable = std::abs (startBeat) <= farthestBeat && beatsPerSample > 0.0 && span > 0.0 && span <= mostBeatsOfABlock;

    if (! isPlayable)
        return {};

    return { .start = startBeat, .from = startBeat, .end = startBeat + span, .beatsPerSample = beatsPerSample, .numSamples = numSamples };
}

BlockWindow TransportContinuity::join (BlockWindow window) noexcept
{
    if (isRolling && std::abs (window.start - playedUntil) <= largestRounding)
    {
        // A short block may lie wholly before the end of the last one: then it plays nothing, and
        // what has been played stays played.
        window.from = playedUntil;
        playedUntil = std::max (playedUntil, window.end);
    }
    else
    {
        playedUntil = window.end;
    }

    isRolling = true;
    return window;
}

} // namespace pulsewright
