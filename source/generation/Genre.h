// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The styles that Pulsewright plays, and their names.

#pragma once

#include <cstdint>
#include <string_view>

namespace pulsewright
{

/** A style of drumming. The values are what hosts automate and states store, so they never change. */
enum class Genre : std::uint32_t
{
    boomBap     = 0,
    trap        = 1,
    dub         = 2,
    house       = 3,
    drumAndBass = 4,
    jazzHop     = 5,
    electronic  = 6
};

inline constexpr std::uint32_t genreCount = 7;
static_assert (static_cast<std::uint32_t> (Genre::electronic) + 1 == genreCount, "counted to the last one; projects store these values");

/** The display name, or "Unknown" for a value that is none of them. */
std::string_view nameOf (Genre genre) noexcept;

} // namespace pulsewright
