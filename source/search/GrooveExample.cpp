// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "GrooveExample.h"

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

    struct Note
    {
        std::uint64_t tick;
        std::uint8_t channel, note, velocity;
    };

    //==============================================================================
    /** Takes bytes off the front. */
    class Reader
    {
    public:
        explicit Reader (std::span<const std::uint8_t> bytesToRead) : bytes (bytesToRead) {}

        bool isAtEnd() const noexcept { return bytes.empty(); }

        std::span<const std::uint8_t> take (std::size_t count)
        {
            if (count > bytes.size())
                throw BadExample ("the MIDI file is cut off, or it is none");

            const auto taken = bytes.first (count);
            bytes            = bytes.subspan (count);
            return taken;
        }

        std::uint32_t number (std::size_t numBytes)
        {
            std::uint32_t value = 0;
            for (const auto byte : take (numBytes))
                value = (value << 8) | byte;
            return value;
        }

        std::uint8_t byte() { return take (1).front(); }
        std::uint8_t peek() { return Reader (*this).byte(); }

        std::uint32_t variableLength()
        {
            std::uint32_t value = 0;

            for (int i = 0; i < 4; ++i)
            {
                const auto next = byte();
                value           = (value << 7) | (next & 0x7Fu);

                if (next < 0x80)
                    return value;
            }

            throw BadExample ("the MIDI file has a time that is longer than four bytes");
        }

    private:
        std::span<const std::uint8_t> bytes;
    };

    bool hasName (std::span<const std::uint8_t> chunk, std::string_view name) noexcept
    {
        return std::ranges::equal (chunk.first (std::min (chunk.size(), name.size())),
                                   name,
                                   [] (auto a, auto b) { return a == static_cast<std::uint8_t> (b); });
    }

    std::size_t dataBytesOf (std::uint8_t status)
    {
        const auto kind = status & 0xF0u;

        if (status >= 0xF0)
            throw BadExample ("the MIDI file has a message that files may not have");

        return kind == 0xC0 || kind == 0xD0 ? 1 : 2;
    }

    /** @returns where the track ends, in ticks */
    std::uint64_t readTrack (Reader track, std::vector<Note>& notes)
    {
        constexpr std::uint8_t meta = 0xFF, endOfTrack = 0x2F;

        std::uint64_t tick   = 0;
        std::uint8_t running = 0;

        while (! track.isAtEnd())
        {
            tick += track.variableLength();
            const auto status = track.peek() >= 0x80 ? track.byte() : running;

            if (status < 0x80)
                throw BadExample ("the MIDI file has data where a message should begin");

            if (status == meta)
            {
                const auto type = track.byte();
                track.take (track.variableLength());

                if (type == endOfTrack)
                    break;
            }
            else if (status == 0xF0 || status == 0xF7)
                track.take (track.variableLength());
            else
            {
                running         = status;
                const auto data = track.take (dataBytesOf (status));

                if ((status & 0xF0) == 0x90 && data[1] > 0)
                    notes.push_back ({ tick, static_cast<std::uint8_t> (status & 0x0F), data[0], data[1] });
            }
        }

        return tick;
    }

    //==============================================================================
    bool isDrum (const Note& note) noexcept
    {
        return laneOfDrum (note.note).has_value();
    }

    /** Leaves the notes of the drums' channel. */
    void keepDrums (std::vector<Note>& notes)
    {
        constexpr std::uint8_t drumChannel = 9;

        if (notes.empty())
            throw BadExample ("the MIDI file has no notes");

        const bool hasDrumChannel = std::ranges::find (notes, drumChannel, &Note::channel) != notes.end();
        const auto channel        = hasDrumChannel ? drumChannel : notes.front().channel;
        const auto isElsewhere    = [channel] (const Note& note) { return note.channel != channel; };

        if (! hasDrumChannel && std::ranges::any_of (notes, isElsewhere))
            throw BadExample ("the MIDI file has notes on several channels, but none on channel 10, where drums are");

        std::erase_if (notes, isElsewhere);
        const auto others = std::erase_if (notes, [] (const Note& note) { return ! isDrum (note); });

        if (notes.empty() || (! hasDrumChannel && others > notes.size()))
            throw BadExample ("the MIDI file has no drums: its notes are a melody's");
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

bool isMidiFile (std::span<const std::uint8_t> bytes) noexcept
{
    return bytes.size() >= 4 && hasName (bytes, "MThd");
}

GrooveExample readMidiFile (std::span<const std::uint8_t> bytes)
{
    if (! isMidiFile (bytes))
        throw BadExample ("this is no MIDI file");

    Reader file (bytes.subspan (4));
    Reader header (file.take (file.number (4)));
    header.take (4); // format and number of tracks
    const auto division = header.number (2);

    if ((division & 0x8000u) != 0)
        throw BadExample ("the MIDI file counts its time in frames of SMPTE; only beats can be compared");

    if (division == 0)
        throw BadExample ("the MIDI file has a beat of no ticks");

    std::vector<Note> notes;
    std::uint64_t endTick = 0;

    while (! file.isAtEnd())
    {
        const auto name = file.take (4);
        const Reader chunk (file.take (file.number (4)));

        if (hasName (name, "MTrk"))
            endTick = std::max (endTick, readTrack (chunk, notes));
    }

    keepDrums (notes);

    const auto ticksPerBar   = std::uint64_t { division } * beatsPerBar;
    const auto [first, last] = std::ranges::minmax (notes, {}, &Note::tick);
    const auto emptyTicks    = first.tick / ticksPerBar * ticksPerBar;
    const bool endsWithABar  = endTick % ticksPerBar == 0 && endTick > last.tick;
    const auto bars          = endsWithABar ? (endTick - emptyTicks) / ticksPerBar : (last.tick - emptyTicks) / ticksPerBar + 1;

    if (bars > static_cast<std::uint64_t> (GrooveExample::mostBars))
        throw BadExample ("the MIDI file is longer than " + std::to_string (GrooveExample::mostBars) + " bars");

    GrooveExample example;
    example.bars = static_cast<std::int32_t> (bars);

    for (const auto& note : notes)
        example.hits.push_back ({ .start    = static_cast<double> (note.tick - emptyTicks) / division,
                                  .note     = note.note,
                                  .velocity = note.velocity,
                                  .lane     = *laneOfDrum (note.note) });

    return example;
}

} // namespace pulsewright
