// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The rule of playback in its plainest form: what the engine's search is checked against.

#pragma once

#include "processor/playback/PlaybackEngine.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <span>
#include <vector>

namespace pulsewright
{

/** The hits of music that was made of one piece. */
inline std::span<const DrumHit> hitsOf (const PlaybackData& music)
{
    return music.parts.empty() ? std::span<const DrumHit> {} : music.parts.front().hits;
}

/** The rule as one would say it: every hit of every repetition is looked at. */
inline std::vector<NoteEvent> plainEventsOf (const PlaybackData& music, Repeat repeat, const BlockWindow& window)
{
    std::vector<NoteEvent> events;

    const auto emit = [&] (double t, std::uint8_t status, std::uint32_t note, std::uint32_t velocity)
    {
        if (t >= window.from && t < window.end)
            events.push_back ({ static_cast<int> (std::clamp ((t - window.start) / window.beatsPerSample, 0.0, window.numSamples - 1.0)),
                                status,
                                static_cast<std::uint8_t> (note),
                                static_cast<std::uint8_t> (velocity) });
    };

    const auto looped = repeat == Repeat::looped;
    const auto first  = looped ? std::floor (window.from / music.lengthInBeats) - 1 : 0.0;
    const auto last   = looped ? std::floor (window.end / music.lengthInBeats) + 1 : 0.0;

    for (auto k = first; k <= last; ++k) // NOLINT(cert-flp30-c,clang-analyzer-security.FloatLoopCounter): whole numbers
        for (const auto& hit : hitsOf (music))
        {
            const auto t = k * music.lengthInBeats + hit.start;
            emit (t, 0x99, hit.note, hit.velocity);
            emit (t + hit.length, 0x89, hit.note, 0);
        }

    return events;
}

/** Block sizes as hosts give them: fixed, or another one each time. */
struct BlockSizes
{
    int fixed;
    std::mt19937 dice { 7 };

    int next() { return fixed > 0 ? fixed : static_cast<int> (1 + dice() % 700); }
};

} // namespace pulsewright
