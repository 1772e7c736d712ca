// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A groove from elsewhere: the drums of a Standard MIDI File, gathered into the four lanes.

#pragma once

#include "generation/DrumPattern.h"

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

namespace pulsewright
{

/** What cannot be understood as a groove; the message says why. */
struct BadExample : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

struct GrooveExample
{
    std::vector<DrumHit> hits; ///< in no order; starts from 0
    std::int32_t bars = 1;     ///< of four beats

    static constexpr std::int32_t mostBars = 10000;
};

/** The lane that a drum of General MIDI belongs to; nothing for hand percussion and for what is no drum. */
std::optional<DrumLane> laneOfDrum (std::uint32_t note) noexcept;

/** How many whole bars hold hits that start up to here. */
std::int32_t barsUpTo (double lastStart) noexcept;

/** The drums of a file: of channel 10, or of its only channel. Empty bars before the first of them are left out. It may have
    any tempo and resolution; a beat is a quarter note.
    @throws BadExample
*/
GrooveExample exampleInMidiFile (std::span<const std::uint8_t> bytes);

} // namespace pulsewright
