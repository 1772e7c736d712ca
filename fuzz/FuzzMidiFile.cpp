// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Any hits, bars, tempo and name become a file that reads back as the hits that went in; other bytes are refused or read.

#include "FuzzCheck.h"

#include "export/MidiFileReader.h"
#include "export/MidiFileWriter.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <tuple>
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
    std::uint32_t tickOf (double beat)
    {
        return beat > 0.0 ? static_cast<std::uint32_t> (std::floor (beat * 960.0 + 0.5)) : 0;
    }

    std::vector<MidiNote> notesOf (const std::vector<DrumHit>& hits)
    {
        std::vector<MidiNote> notes;

        for (const auto& hit : hits)
        {
            const auto on       = tickOf (hit.start);
            const auto note     = static_cast<std::uint8_t> (hit.note);
            const auto velocity = static_cast<std::uint8_t> (hit.velocity);
            notes.push_back ({ on, velocity > 0, 9, note, velocity });
            notes.push_back ({ std::max (on + 1, tickOf (hit.start + hit.length)), false, 9, note, 0 });
        }

        return notes;
    }

    void writeAndRead (const Song& song)
    {
        auto read     = readMidiFile (MidiFileWriter::buildMidiFileBytes (song.hits, song.bars, song.tempo, song.name));
        auto expected = notesOf (song.hits);

        const auto inBars = std::uint64_t { static_cast<std::uint32_t> (std::max (song.bars, 1)) } * 3840;
        check (read.ticksPerBeat == 960 && read.endTick == std::max (inBars, read.notes.empty() ? 0 : read.notes.back().tick),
               "it ends with the last bar or note");

        const auto everything = [] (const MidiNote& note) { return std::tuple (note.tick, note.isOn, note.note, note.velocity); };
        std::ranges::sort (read.notes, {}, everything);
        std::ranges::sort (expected, {}, everything);
        check (read.notes == expected, "the notes are those of the hits");
    }

    /** Anything at all behind a good beginning is refused, or read without harm. */
    void readNoise (std::span<const std::uint8_t> noise)
    {
        std::vector<std::uint8_t> file { 'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 1, 0, 1, 3, 192, 'M', 'T', 'r', 'k' };
        file.insert (file.end(), noise.begin(), noise.end());

        try
        {
            check (readMidiFile (file).ticksPerBeat == 960, "the header is read");
        }
        catch (const BadMidiFile& error)
        {
            check (error.what()[0] != 0, "a refusal says why");
        }
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input (data, size);
    pulsewright::fuzz::writeAndRead (pulsewright::fuzz::anySong (input));
    pulsewright::fuzz::readNoise ({ data, size });
    return 0;
}
