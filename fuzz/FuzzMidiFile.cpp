// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Any hits, bars, tempo and name become a file whose chunks add up, with the hits that went in.

#include "FuzzCheck.h"

#include "export/MidiFileWriter.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace pulsewright::fuzz
{

namespace
{
    struct Song
    {
        std::vector<DrumHit> hits;
        std::int32_t bars, tempo;
        std::string name;
    };

    /** A time as the fuzzer likes it, or as near to it as a file can say: a distance has four bytes of seven bits. */
    double anyBeat (FuzzedDataProvider& input)
    {
        static constexpr std::array<double, 8> usual { 0.0, 0.5 / 960, 1.0 / 960, 127.0 / 960, 128.0 / 960, 16384.0 / 960, 0.11, 3.999 };

        const auto beat = anyReal (input, usual);
        return std::isnan (beat) ? beat : std::min (beat, 250000.0);
    }

    Song anySong (FuzzedDataProvider& input)
    {
        Song song { .hits  = {},
                    .bars  = std::min (input.ConsumeIntegral<std::int32_t>(), 60000),
                    .tempo = input.ConsumeIntegral<std::int32_t>(),
                    .name  = input.ConsumeRandomLengthString (input.ConsumeBool() ? 40 : 40000) };

        while (input.remaining_bytes() > 0)
            song.hits.push_back ({ .start    = anyBeat (input),
                                   .length   = anyBeat (input),
                                   .note     = input.ConsumeIntegralInRange (0u, 0x1FFu),
                                   .velocity = input.ConsumeIntegralInRange (0u, 0x1FFu) });

        return song;
    }

    //==============================================================================
    /** A file, or a part of it, read from the front. */
    struct Bytes
    {
        std::span<const std::uint8_t> rest;

        std::span<const std::uint8_t> take (std::size_t size)
        {
            check (size <= rest.size(), "the lengths add up");
            const auto taken = rest.first (size);
            rest             = rest.subspan (size);
            return taken;
        }

        std::uint32_t number (std::size_t size, int bits = 8)
        {
            std::uint32_t value = 0;
            for (const auto byte : take (size))
                value = value << bits | (byte & ((1u << bits) - 1u));
            return value;
        }

        /** Seven bits a byte, up to the first byte below 0x80. */
        std::uint32_t quantity()
        {
            const auto last = std::ranges::find_if (rest, [] (auto byte) { return byte < 0x80; });
            return number (static_cast<std::size_t> (last - rest.begin()) + 1, 7);
        }

        Bytes chunk (std::uint32_t name)
        {
            check (number (4) == name, "a chunk has its name");
            return { take (number (4)) };
        }
    };

    /** Tick, status, note and velocity. */
    using Note = std::array<std::uint32_t, 4>;

    /** The notes of a track, and the tick of its end; other events are passed over by their lengths. */
    std::pair<std::vector<Note>, std::uint32_t> notesIn (Bytes track)
    {
        std::vector<Note> notes;
        std::uint32_t tick = 0;

        while (! track.rest.empty())
        {
            tick += track.quantity();

            if (const auto status = track.number (1); status != 0xFF)
                notes.push_back ({ tick, status, track.number (1), track.number (1) });
            else if (const auto type = track.number (1); track.take (track.quantity()).empty() && type == 0x2F)
                check (track.rest.empty(), "nothing stands behind the end of a track");
        }

        return { notes, tick };
    }

    //==============================================================================
    std::uint32_t tickOf (double beat)
    {
        return beat > 0.0 ? static_cast<std::uint32_t> (std::floor (beat * 960.0 + 0.5)) : 0;
    }

    std::vector<Note> notesOf (const std::vector<DrumHit>& hits)
    {
        std::vector<Note> notes;

        for (const auto& hit : hits)
        {
            const auto on = tickOf (hit.start);
            notes.push_back ({ on, 0x99, hit.note & 0xFFu, hit.velocity & 0xFFu });
            notes.push_back ({ std::max (on + 1, tickOf (hit.start + hit.length)), 0x89, hit.note & 0xFFu, 0 });
        }

        return notes;
    }

    void run (FuzzedDataProvider input)
    {
        const auto song = anySong (input);
        const auto file = MidiFileWriter::buildMidiFileBytes (song.hits, song.bars, song.tempo, song.name);

        Bytes bytes { file };
        auto header = bytes.chunk (0x4D546864);
        check (header.number (2) == 1 && header.number (2) == 2 && header.number (2) == 960 && header.rest.empty(), "two tracks, 960 ticks a beat");
        const auto [none, conductorEnd] = notesIn (bytes.chunk (0x4D54726B));
        auto [notes, end]               = notesIn (bytes.chunk (0x4D54726B));
        auto expected                   = notesOf (song.hits);
        check (bytes.rest.empty(), "nothing stands behind the last track");

        const auto inBars = static_cast<std::uint32_t> (std::max (song.bars, 1)) * 3840;
        check (none.empty() && conductorEnd == inBars, "the first track ends with the last bar");
        check (end == std::max (inBars, notes.empty() ? 0 : notes.back()[0]), "the drums end with the last bar or note");

        std::ranges::sort (notes);
        std::ranges::sort (expected);
        check (notes == expected, "the notes are those of the hits");
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    pulsewright::fuzz::run ({ data, size });
    return 0;
}
