// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The immutable music that the message thread hands to the audio thread.

#pragma once

#include "generation/DrumPattern.h"

#include <array>
#include <memory>
#include <vector>

namespace pulsewright
{

/** What one playable thing (a pattern, a section or the song) sounds like. Never changed once made. */
struct PlaybackData
{
    std::vector<DrumHit> hits; ///< sorted by start
    double lengthInBeats = 8.0;
    double longestHit    = 0.0; ///< in beats; how far before a block a note may begin that ends in it
};

/** @param hits  sorted by start */
std::shared_ptr<const PlaybackData> makePlaybackData (std::vector<DrumHit> hits, double lengthInBeats);

/** Everything the audio thread may be asked to play, exchanged as a whole.
    Snapshots share the parts that did not change; only the message thread counts the references.
*/
struct PlaybackSnapshot
{
    static constexpr std::size_t numSectionSlots = 8;

    std::shared_ptr<const PlaybackData> pattern;
    std::shared_ptr<const PlaybackData> song;
    std::array<std::shared_ptr<const PlaybackData>, numSectionSlots> sections; ///< empty past the song's last section
};

} // namespace pulsewright
