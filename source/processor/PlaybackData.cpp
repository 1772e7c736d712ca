// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PlaybackData.h"

#include <algorithm>

namespace pulsewright
{

std::shared_ptr<const PlaybackData> makePlaybackData (std::vector<DrumHit> hits, double lengthInBeats)
{
    auto data           = std::make_shared<PlaybackData>();
    data->hits          = std::move (hits);
    data->lengthInBeats = lengthInBeats;

    for (const auto& hit : data->hits)
        data->longestHit = std::max (data->longestHit, hit.length);

    return data;
}

} // namespace pulsewright
