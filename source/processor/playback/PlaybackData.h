// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The immutable music that is handed to the audio thread.

#pragma once

#include "generation/SongArrangement.h"

#include <array>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace pulsewright
{

/** What one playable thing (a pattern, a section or the song) sounds like. Never changed once made.
    The hits are those of the pattern or the song that it was made from, kept alive by their owner.
*/
struct PlaybackData
{
    struct Part
    {
        double startBeat;              ///< in the whole
        std::span<const DrumHit> hits; ///< not empty; from the part's start, sorted by start
    };

    std::vector<Part> parts; ///< one after the other
    double lengthInBeats = 8.0;
    double longestHit    = 0.0; ///< in beats; how far before a block a note may begin that ends in it
    std::shared_ptr<const void> owner;
};

/** A pattern. @param hits  sorted by start */
std::shared_ptr<const PlaybackData> makePlaybackData (std::vector<DrumHit> hits, double lengthInBeats);

/** The whole song. */
std::shared_ptr<const PlaybackData> makePlaybackData (const std::shared_ptr<const SongArrangement>& song);

/** A section of it, alone. @param section  its index */
std::shared_ptr<const PlaybackData> makePlaybackData (const std::shared_ptr<const SongArrangement>& song, std::size_t section);

/** Everything the audio thread may be asked to play, exchanged as a whole.
    Snapshots share the parts that did not change; only the publisher counts the references.
*/
struct PlaybackSnapshot
{
    static constexpr std::size_t numSectionSlots = 8;

    std::shared_ptr<const PlaybackData> pattern;
    std::shared_ptr<const PlaybackData> song;
    std::array<std::shared_ptr<const PlaybackData>, numSectionSlots> sections; ///< empty past the song's last section
};

} // namespace pulsewright
