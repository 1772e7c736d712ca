// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "GrooveExample.h"

#include "export/MidiFileReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>

namespace pulsewright
{

namespace
{
    constexpr auto kick  = DrumLane::kick;
    constexpr auto snare = DrumLane::snare;
    constexpr auto hats  = DrumLane::hats;
    constexpr auto perc  = DrumLane::perc;

    // clang-format off
    constexpr std::uint32_t firstDrum = 35;
    constexpr std::array drums // from note 35 on
    {
        kick,  // 35 Acoustic Bass Drum
        kick,  // 36 Bass Drum 1
        perc,  // 37 Side Stick
        snare, // 38 Acoustic Snare
        snare, // 39 Hand Clap
        snare, // 40 Electric Snare
        perc,  // 41 Low Floor Tom
        hats,  // 42 Closed Hi Hat
        perc,  // 43 High Floor Tom
        hats,  // 44 Pedal Hi-Hat
        perc,  // 45 Low Tom
        hats,  // 46 Open Hi-Hat
        perc,  // 47 Low-Mid Tom
        perc,  // 48 Hi-Mid Tom
        hats,  // 49 Crash Cymbal 1
        perc,  // 50 High Tom
        hats,  // 51 Ride Cymbal 1
        hats,  // 52 Chinese Cymbal
        hats,  // 53 Ride Bell
        perc,  // 54 Tambourine
        hats,  // 55 Splash Cymbal
        perc,  // 56 Cowbell
        hats,  // 57 Crash Cymbal 2
        perc,  // 58 Vibraslap
        hats   // 59 Ride Cymbal 2
    };
    // clang-format on

    //==============================================================================
    bool isDrum (const MidiNote& note) noexcept
    {
        return laneOfDrum (note.note).has_value();
    }

    /** Leaves the notes of the drums' channel. */
    void keepDrums (std::vector<MidiNote>& notes)
    {
        constexpr std::uint8_t drumChannel = 9;

        if (notes.empty())
            throw BadExample ("the MIDI file has no notes");

        const bool hasDrumChannel = std::ranges::find (notes, drumChannel, &MidiNote::channel) != notes.end();
        const auto channel        = hasDrumChannel ? drumChannel : notes.front().channel;
        const auto isElsewhere    = [channel] (const MidiNote& note) { return note.channel != channel; };

        if (! hasDrumChannel && std::ranges::any_of (notes, isElsewhere))
            throw BadExample ("the MIDI file has notes on several channels, but none on channel 10, where drums are");

        std::erase_if (notes, isElsewhere);
        const auto others = std::erase_if (notes, [] (const MidiNote& note) { return ! isDrum (note); });

        if (notes.empty() || (! hasDrumChannel && others > notes.size()))
            throw BadExample ("the MIDI file has no drums: its notes are a melody's");
    }

    MidiFile readMidi (std::span<const std::uint8_t> bytes)
    {
        try
        {
            return readMidiFile (bytes);
        }
        catch (const BadMidiFile& error)
        {
            throw BadExample (error.what());
        }
    }
} // namespace

std::optional<DrumLane> laneOfDrum (std::uint32_t note) noexcept
{
    return note >= firstDrum && note - firstDrum < drums.size() ? std::optional (drums[note - firstDrum]) : std::nullopt;
}

std::int32_t barsUpTo (double lastStart) noexcept
{
    return static_cast<std::int32_t> (lastStart / beatsPerBar) + 1;
}

GrooveExample exampleInMidiFile (std::span<const std::uint8_t> bytes)
{
    const auto file = readMidi (bytes);
    auto notes      = file.notes;
    std::erase_if (notes, [] (const auto& note) { return ! note.isOn; });
    keepDrums (notes);

    const auto ticksPerBar   = std::uint64_t { file.ticksPerBeat } * beatsPerBar;
    const auto [first, last] = std::ranges::minmax (notes, {}, &MidiNote::tick);
    const auto emptyTicks    = first.tick / ticksPerBar * ticksPerBar;
    const bool endsWithABar  = file.endTick % ticksPerBar == 0 && file.endTick > last.tick;
    const auto bars          = endsWithABar ? (file.endTick - emptyTicks) / ticksPerBar : (last.tick - emptyTicks) / ticksPerBar + 1;

    if (bars > static_cast<std::uint64_t> (GrooveExample::mostBars))
        throw BadExample ("the MIDI file is longer than " + std::to_string (GrooveExample::mostBars) + " bars");

    GrooveExample example;
    example.bars = static_cast<std::int32_t> (bars);

    for (const auto& note : notes)
        example.hits.push_back ({ .start    = static_cast<double> (note.tick - emptyTicks) / file.ticksPerBeat,
                                  .note     = note.note,
                                  .velocity = note.velocity,
                                  .lane     = *laneOfDrum (note.note) });

    return example;
}

} // namespace pulsewright
