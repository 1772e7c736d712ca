// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Where a host says that its transport is.

#pragma once

#include <cstdint>
#include <optional>

namespace pulsewright
{

/** A stretch of time that a host repeats, in beats since its start. */
struct HostLoop
{
    double start = 0.0, end = 0.0;

    double length() const noexcept { return end - start; }
};

/** What a host says of its transport at one sample; hosts leave out what they do not know. */
struct HostPosition
{
    bool isRolling = false;
    std::optional<double> beat;         ///< quarter notes since the host's start
    std::optional<double> tempo;        ///< BPM
    std::optional<std::int64_t> sample; ///< since the host's start
    std::optional<std::int64_t> bar;    ///< from 0
    std::optional<int> beatsPerBar;
    std::optional<HostLoop> loop; ///< only while the host repeats it
};

/** A part of a block, played at one tempo. */
struct HostStretch
{
    int firstSample = 0, numSamples = 0; ///< in the block
    HostPosition position;               ///< at the first sample
};

} // namespace pulsewright
