// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Reads Standard MIDI Files, ours and others'.

#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

namespace pulsewright
{

/** Bytes that are no MIDI file, or one that cannot be compared; the message says why. */
struct BadMidiFile : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/** A note that begins or ends. */
struct MidiNote
{
    std::uint64_t tick;                   ///< from the start of the file
    bool isOn;                            ///< a note-on of velocity 0 is none
    std::uint8_t channel, note, velocity; ///< channel 0 to 15; the velocity of a note-off is 0

    bool operator== (const MidiNote&) const = default;
};

struct MidiFile
{
    std::uint32_t ticksPerBeat = 0;
    std::uint64_t endTick      = 0; ///< of the longest track
    std::vector<MidiNote> notes;    ///< of all tracks: sorted by time, those that end first
};

/** Whether bytes begin as such a file does. */
bool isMidiFile (std::span<const std::uint8_t> bytes) noexcept;

/** Format 0, 1 or 2; tempos, names and controllers are passed over. @throws BadMidiFile */
MidiFile readMidiFile (std::span<const std::uint8_t> bytes);

} // namespace pulsewright
