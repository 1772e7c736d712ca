// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "MidiTakes.h"

#include "InputFile.h"
#include "LongSearch.h"
#include "OutputFile.h"
#include "TakeOptions.h"

#include "export/MidiFileReader.h"
#include "export/MidiFileWriter.h"
#include "generation/SongBuilder.h"
#include "generation/TakeCode.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <vector>

namespace pulsewright::cli
{

namespace
{
    constexpr std::size_t largestFile = 1 << 24;

    MidiFile readFile (const std::string& name, std::string_view bytes)
    {
        try
        {
            return readMidiFile ({ reinterpret_cast<const std::uint8_t*> (bytes.data()), bytes.size() });
        }
        catch (const BadMidiFile& error)
        {
            throw BadArgument (name + ": " + error.what());
        }
    }

    /** What the tool would write of a take. */
    MidiFile fileOf (const Take& take)
    {
        return readMidiFile (take.kind == Take::Kind::song ? MidiFileWriter::bytesOf (songOf (take), take.tempo)
                                                           : MidiFileWriter::bytesOf (patternOf (take), take.tempo));
    }

    /** Whether two notes are the same at the same time, whatever the files' resolutions. */
    bool areSame (const MidiFile& a, const MidiNote& noteOfA, const MidiFile& b, const MidiNote& noteOfB) noexcept
    {
        auto moved = noteOfB;
        moved.tick = noteOfA.tick;
        return moved == noteOfA && noteOfA.tick * b.ticksPerBeat == noteOfB.tick * a.ticksPerBeat;
    }

    /** The index of the first note that differs; past the end of both when none does. */
    std::size_t firstDifference (const MidiFile& a, const MidiFile& b) noexcept
    {
        const auto common = std::min (a.notes.size(), b.notes.size());
        std::size_t i     = 0;

        while (i < common && areSame (a, a.notes[i], b, b.notes[i]))
            ++i;

        return i < common || a.notes.size() != b.notes.size() ? i : a.notes.size() + 1;
    }

    /** "note 38 of velocity 90 begins at beat 3.250" or "nothing". */
    std::string noteText (const MidiFile& file, std::size_t index)
    {
        if (index >= file.notes.size())
            return "nothing more";

        const auto& note = file.notes[index];
        const auto beat  = static_cast<double> (note.tick) / file.ticksPerBeat;
        std::array<char, 96> text {};

        if (note.isOn)
            std::snprintf (text.data(),
                           text.size(),
                           "note %d of velocity %d at beat %.3f, channel %d",
                           note.note,
                           note.velocity,
                           beat,
                           note.channel + 1);
        else
            std::snprintf (text.data(), text.size(), "the end of note %d at beat %.3f, channel %d", note.note, beat, note.channel + 1);

        return text.data();
    }

    bool isSame (const MidiFile& a, const MidiFile& b) noexcept
    {
        return firstDifference (a, b) > a.notes.size();
    }

    /** What the file may be, but for the counter: a groove, and a song where it is long enough for one. */
    std::vector<Take> candidatesFor (const MidiFile& file, const CommandLine& line)
    {
        const auto bars = static_cast<std::int32_t> (std::min<std::uint64_t> (file.endTick / file.ticksPerBeat / beatsPerBar, SongBuilder::maxBars));

        auto groove = takeFrom (line, Take::Kind::groove);
        groove.bars = std::clamp (bars, DrumPattern::minBars, DrumPattern::maxBars);

        if (bars < SongBuilder::minBars)
            return { groove };

        auto song = takeFrom (line, Take::Kind::song);

        // A song of the length that duration and tempo make is the one that the window builds.
        if (songBarsOf (song) != bars)
            song.songBars = bars;

        return { groove, song };
    }
} // namespace

int verifyFile (const CommandLine& line)
{
    const auto take  = takeOfCode (line, "CODE");
    const auto name  = line.text ("FILE");
    const auto file  = readFile (name, bytesOfFile (name, largestFile));
    const auto ours  = fileOf (take);
    const auto place = firstDifference (file, ours);

    if (place > file.notes.size())
    {
        writeOutput ("-", "The same: " + std::to_string (ours.notes.size() / 2) + " notes\n");
        return 0;
    }

    writeOutput ("-", "Different: the file has " + noteText (file, place) + "; the take has " + noteText (ours, place) + "\n");
    return 1;
}

std::string codeOfMidiFile (const CommandLine& line, std::string_view bytes)
{
    const auto file          = readFile (line.text ("FILE"), bytes);
    const auto [first, last] = line.range ("--takes");
    auto takes               = candidatesFor (file, line);
    LongSearch terminal;

    for (std::uint64_t counter = first; counter <= last; ++counter)
    {
        const auto searched = counter - first;

        if (terminal.stop())
            throw Interrupted ("Stopped after " + std::to_string (searched) + " takes; none of them plays this file");

        terminal.show (static_cast<double> (searched) / (static_cast<double> (last - first) + 1.0));

        for (auto& take : takes)
        {
            take.counter       = static_cast<std::uint32_t> (counter);
            take.settings.seed = saltOf (take.counter);

            if (isSame (file, fileOf (take)))
                return codeOf (take).value_or ("");
        }
    }

    return {};
}

} // namespace pulsewright::cli
