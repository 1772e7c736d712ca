// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PlaybackData.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace pulsewright
{

namespace
{
    void addPart (PlaybackData& data, double startBeat, std::span<const DrumHit> hits)
    {
        if (hits.empty())
            return;

        data.parts.push_back ({ startBeat, hits });

        for (const auto& hit : hits)
            data.longestHit = std::max (data.longestHit, hit.length);
    }
} // namespace

std::shared_ptr<const PlaybackData> makePlaybackData (std::vector<DrumHit> hits, double lengthInBeats)
{
    auto data           = std::make_shared<PlaybackData>();
    const auto owner    = std::make_shared<const std::vector<DrumHit>> (std::move (hits));
    data->lengthInBeats = lengthInBeats;
    data->owner         = owner;
    addPart (*data, 0.0, *owner);
    return data;
}

std::shared_ptr<const PlaybackData> makePlaybackData (const std::shared_ptr<const SongArrangement>& song)
{
    auto data           = std::make_shared<PlaybackData>();
    data->lengthInBeats = song->lengthInBeats();
    data->owner         = song;

    for (const auto& section : song->sections)
        addPart (*data, static_cast<double> (std::uint64_t { section.startBar } * beatsPerBar), section.pattern.hits);

    return data;
}

std::shared_ptr<const PlaybackData> makePlaybackData (const std::shared_ptr<const SongArrangement>& song, std::size_t section)
{
    auto data           = std::make_shared<PlaybackData>();
    const auto& pattern = song->sections[section].pattern;
    data->lengthInBeats = pattern.lengthInBeats();
    data->owner         = song;
    addPart (*data, 0.0, pattern.hits);
    return data;
}

} // namespace pulsewright
