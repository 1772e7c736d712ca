// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Any hits, bars, tempo and name become a file that a strict reader takes, with the hits that went in.

#include "FuzzCheck.h"
#include "StrictMidiReader.h"

#include "export/MidiFileWriter.h"

#include <algorithm>
#include <cmath>

namespace pulsewright::fuzz
{

namespace
{
    // A time between two events has four bytes of seven bits: what lies farther away has no place in a file.
    constexpr double mostTicks      = 0x0FFFFFFF;
    constexpr double farthestBeat   = 250000.0;
    constexpr std::int32_t mostBars = 60000;

    struct Song
    {
        std::vector<DrumHit> hits;
        std::int32_t bars, tempo;
        std::string name;
    };

    /** A time as the fuzzer likes it, or as near to it as a file can say. */
    double anyBeat (FuzzedDataProvider& input)
    {
        static constexpr std::array<double, 8> usual { 0.0, 0.5 / 960, 1.0 / 960, 127.0 / 960, 128.0 / 960, 16384.0 / 960, 0.11, 3.999 };

        const auto beat = anyReal (input, usual);
        return std::isnan (beat) ? beat : std::min (beat, farthestBeat);
    }

    Song anySong (FuzzedDataProvider& input)
    {
        Song song;
        song.bars  = std::min (input.ConsumeIntegral<std::int32_t>(), mostBars);
        song.tempo = input.ConsumeIntegral<std::int32_t>();
        song.name  = input.ConsumeRandomLengthString (input.ConsumeBool() ? 40 : 40000);

        const auto most = input.ConsumeBool() ? 0x7Fu : 0x1FFu;

        while (input.remaining_bytes() > 0)
        {
            const auto start    = anyBeat (input);
            const auto length   = anyBeat (input);
            const auto note     = input.ConsumeIntegralInRange (0u, most);
            const auto velocity = input.ConsumeIntegralInRange (0u, most);
            song.hits.push_back ({ .start = start, .length = length, .note = note, .velocity = velocity });
        }

        return song;
    }

    bool isPlain (const Song& song)
    {
        return std::all_of (song.hits.begin(), song.hits.end(), [] (const DrumHit& hit) { return hit.note < 128 && hit.velocity < 128; });
    }

    //==============================================================================
    std::uint32_t tickOf (double beat)
    {
        return beat > 0.0 ? static_cast<std::uint32_t> (std::floor (beat * 960.0 + 0.5)) : 0;
    }

    MidiTrack::Event noteEvent (std::uint32_t tick, int status, std::uint32_t note, std::uint32_t velocity)
    {
        return { tick, static_cast<std::uint8_t> (status), 0, { static_cast<char> (note & 0xFF), static_cast<char> (velocity & 0xFF) } };
    }

    /** What the hits say: tick by tick, ends before beginnings, otherwise in the order of the hits. */
    std::vector<MidiTrack::Event> notesOf (const std::vector<DrumHit>& hits)
    {
        std::map<std::pair<std::uint32_t, bool>, std::vector<MidiTrack::Event>> moments; // by tick; false for ends

        for (const auto& hit : hits)
        {
            const auto on  = tickOf (hit.start);
            const auto off = std::max (on + 1, tickOf (hit.start + hit.length));
            moments[{ on, true }].push_back (noteEvent (on, 0x99, hit.note, hit.velocity));
            moments[{ off, false }].push_back (noteEvent (off, 0x89, hit.note, 0));
        }

        std::vector<MidiTrack::Event> notes;
        for (const auto& [moment, events] : moments)
            notes.insert (notes.end(), events.begin(), events.end());

        return notes;
    }

    std::uint32_t lastTickOf (const std::vector<MidiTrack::Event>& events)
    {
        return events.empty() ? 0 : events.back().tick;
    }

    void checkConductor (const MidiTrack& track, const Song& song, std::uint32_t endTick)
    {
        const auto tempo = 60000000 / std::clamp (song.tempo, 30, 300);
        const std::string tempoBytes { static_cast<char> (tempo >> 16), static_cast<char> (tempo >> 8 & 0xFF), static_cast<char> (tempo & 0xFF) };

        const std::vector<MidiTrack::Event> expected { { 0, 0xFF, 0x03, "Pulsewright Conductor" },
                                                       { 0, 0xFF, 0x51, tempoBytes },
                                                       { 0, 0xFF, 0x58, "\x04\x02\x18\x08" } };
        check (track.events == expected, "the first track has its name, the tempo and four-four time");
        check (track.endTick == endTick, "the first track ends with the last bar");
    }

    void checkDrums (const MidiTrack& track, const Song& song, std::uint32_t endTick)
    {
        const auto notes = notesOf (song.hits);
        check (! track.events.empty() && track.events.front() == MidiTrack::Event { 0, 0xFF, 0x03, song.name }, "the drums have the song's name");
        check (std::equal (track.events.begin() + 1, track.events.end(), notes.begin(), notes.end()), "the notes are those of the hits");
        check (track.endTick == std::max (endTick, lastTickOf (notes)), "the drums end with the last bar or note");
    }

    void run (FuzzedDataProvider input)
    {
        const auto song  = anySong (input);
        const auto bytes = MidiFileWriter::buildMidiFileBytes (song.hits, song.bars, song.tempo, song.name);
        check (MidiFileWriter::buildMidiFileBytes (song.hits, song.bars, song.tempo, song.name) == bytes, "a file is the same twice");

        MidiFile file;

        try
        {
            file = StrictMidiReader::read (bytes, isPlain (song) ? 0x7F : 0xFF);
        }
        catch (const std::runtime_error& error)
        {
            check (false, error.what());
        }

        const auto endTick = static_cast<std::uint32_t> (std::max (song.bars, 1)) * 3840;
        check (endTick <= mostTicks, "the bars have a place in the file");
        check (file.format == 1 && file.ticksPerQuarter == 960 && file.tracks.size() == 2, "the file has its header");
        checkConductor (file.tracks[0], song, endTick);
        checkDrums (file.tracks[1], song, endTick);
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    pulsewright::fuzz::run ({ data, size });
    return 0;
}
