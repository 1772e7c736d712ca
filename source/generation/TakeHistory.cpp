// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "TakeHistory.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace pulsewright
{

namespace
{
    std::string barsText (std::int64_t bars)
    {
        return std::to_string (bars) + (bars == 1 ? " bar" : " bars");
    }

    std::string_view kindOf (const KeptTake& kept) noexcept
    {
        if (kept.take.kind == Take::Kind::song)
            return "song";

        return kept.origin == KeptTake::Origin::mutated ? "mutation" : kept.take.section == SectionType::fill ? "fill" : "groove";
    }
} // namespace

std::string describe (const KeptTake& kept)
{
    const bool isSong = kept.take.kind == Take::Kind::song;

    return "Take " + std::to_string (kept.take.counter) + ": " + std::string (nameOf (kept.take.settings.genre)) + " " + std::string (kindOf (kept))
         + ", " + barsText (isSong ? std::int64_t { kept.song->totalBars } : std::int64_t { kept.pattern->bars });
}

//==============================================================================
void TakeHistory::add (KeptTake made)
{
    made.id = ++lastId;
    kept.push_front (std::move (made));

    if (kept.size() > capacity)
        kept.pop_back();

    isNewestPlaying = true;
}

void TakeHistory::follow (KeptTake remade)
{
    if (! isNewestPlaying || kept.front().origin == KeptTake::Origin::mutated)
        return add (std::move (remade));

    auto& newest  = kept.front();
    remade.id     = newest.id;
    remade.origin = newest.origin;
    newest        = std::move (remade);
}

const KeptTake* TakeHistory::bringBack (std::uint32_t id)
{
    const auto found = std::find_if (kept.begin(), kept.end(), [id] (const auto& take) { return take.id == id; });

    if (found == kept.end())
        return nullptr;

    isNewestPlaying = found == kept.begin();
    return &*found;
}

} // namespace pulsewright
