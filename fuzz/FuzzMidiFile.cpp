// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Any hits, bars, tempo and name become a file whose chunks add up, with the hits that went in.

#include "FuzzCheck.h"

#include "export/MidiFileWriter.h"

#include <algorithm>
#include <cmath>
#include <map>
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
    /** The tick, and the bytes without lengths: what a track says. */
    using Event = std::pair<std::uint32_t, std::string>;

    /** A file, or a part of it, read from the front. */
    struct Bytes
    {
        std::span<const std::uint8_t> rest;

        std::string text (std::size_t size)
        {
            check (size <= rest.size(), "the lengths add up");
            std::string taken (rest.begin(), rest.begin() + static_cast<std::ptrdiff_t> (size));
            rest = rest.subspan (size);
            return taken;
        }

        std::uint32_t quantity()
        {
            std::uint32_t value = 0;
            for (std::uint8_t byte = 0x80; byte >= 0x80; value = value << 7 | (byte & 0x7Fu))
                byte = static_cast<std::uint8_t> (text (1)[0]);

            return value;
        }

        Bytes chunk (const std::string& name)
        {
            check (text (4) == name, "a chunk has its name");
            std::size_t size = 0;
            for (const char byte : text (4))
                size = size << 8 | static_cast<std::uint8_t> (byte);

            check (size <= rest.size(), "the lengths add up");
            const Bytes inner { rest.first (size) };
            rest = rest.subspan (size);
            return inner;
        }

        std::vector<Event> events()
        {
            std::vector<Event> all;
            for (std::uint32_t tick = 0; ! rest.empty();)
            {
                tick += quantity();
                const bool isMeta = rest.size() > 1 && rest[0] == 0xFF;
                auto event        = text (isMeta ? 2 : 3);
                all.emplace_back (tick, isMeta ? event + text (quantity()) : event);
            }
            return all;
        }
    };

    //==============================================================================
    std::uint32_t tickOf (double beat)
    {
        return beat > 0.0 ? static_cast<std::uint32_t> (std::floor (beat * 960.0 + 0.5)) : 0;
    }

    std::string bytesOf (std::initializer_list<std::uint32_t> values)
    {
        std::string text;
        for (const auto value : values)
            text += static_cast<char> (value & 0xFF);
        return text;
    }

    /** What the drums have to say: tick by tick, ends before beginnings, otherwise in the order of the hits. */
    std::vector<Event> drumEventsOf (const Song& song, std::uint32_t endTick)
    {
        std::multimap<std::pair<std::uint32_t, bool>, std::string> moments; // by tick; false for ends

        for (const auto& hit : song.hits)
        {
            const auto on = tickOf (hit.start);
            moments.insert ({ { on, true }, bytesOf ({ 0x99, hit.note, hit.velocity }) });
            moments.insert ({ { std::max (on + 1, tickOf (hit.start + hit.length)), false }, bytesOf ({ 0x89, hit.note, 0 }) });
        }

        std::vector<Event> events { { 0, "\xFF\x03" + song.name } };
        for (const auto& [moment, bytes] : moments)
            events.emplace_back (moment.first, bytes);

        events.emplace_back (std::max (endTick, events.back().first), "\xFF\x2F");
        return events;
    }

    void run (FuzzedDataProvider input)
    {
        const auto song    = anySong (input);
        const auto file    = MidiFileWriter::buildMidiFileBytes (song.hits, song.bars, song.tempo, song.name);
        const auto endTick = static_cast<std::uint32_t> (std::max (song.bars, 1)) * 3840;
        const auto tempo   = 60000000u / static_cast<std::uint32_t> (std::clamp (song.tempo, 30, 300));

        Bytes bytes { file };
        check (bytes.chunk ("MThd").text (6) == bytesOf ({ 0, 1, 0, 2, 3, 0xC0 }), "two tracks of 960 ticks a beat");

        const std::vector<Event> conductor { { 0, "\xFF\x03Pulsewright Conductor" },
                                             { 0, "\xFF\x51" + bytesOf ({ tempo >> 16, tempo >> 8, tempo }) },
                                             { 0, "\xFF\x58\x04\x02\x18\x08" },
                                             { endTick, "\xFF\x2F" } };
        check (bytes.chunk ("MTrk").events() == conductor, "the first track has its name, the tempo and four-four time");
        check (bytes.chunk ("MTrk").events() == drumEventsOf (song, endTick), "the notes are those of the hits");
        check (bytes.rest.empty(), "nothing stands behind the last track");
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    pulsewright::fuzz::run ({ data, size });
    return 0;
}
