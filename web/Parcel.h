// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Music as bytes, from the page's engine to that of the audio thread. Both run the same module, so numbers lie alike.

#pragma once

#include "processor/audition/AuditionPlayer.h"

#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace pulsewright
{

/** What stands before the hits. */
struct ParcelHead
{
    double lengthInBeats  = 0.0;
    Repeat repeat         = Repeat::looped;
    std::uint32_t numHits = 0;
};

static_assert (std::is_trivially_copyable_v<DrumHit>);

inline std::string packed (const std::vector<DrumHit>& hits, double lengthInBeats, Repeat repeat)
{
    const ParcelHead head { lengthInBeats, repeat, static_cast<std::uint32_t> (hits.size()) };
    std::string bytes (sizeof (head) + hits.size() * sizeof (DrumHit), '\0');
    std::memcpy (bytes.data(), &head, sizeof (head));

    if (! hits.empty())
        std::memcpy (bytes.data() + sizeof (head), hits.data(), hits.size() * sizeof (DrumHit));

    return bytes;
}

/** @param bytes  as packed() has made them */
inline Audition unpacked (std::string_view bytes, double tempoBpm)
{
    ParcelHead head;
    std::memcpy (&head, bytes.data(), sizeof (head));
    std::vector<DrumHit> hits (head.numHits);

    if (! hits.empty())
        std::memcpy (hits.data(), bytes.data() + sizeof (head), hits.size() * sizeof (DrumHit));

    return { makePlaybackData (std::move (hits), head.lengthInBeats), head.repeat, tempoBpm };
}

} // namespace pulsewright
