// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// pulsewright-cli: the same music without a host.

#include "CommandLine.h"
#include "FindCommand.h"
#include "Interruption.h"
#include "MidiTakes.h"
#include "Output.h"
#include "OutputFile.h"
#include "Presets.h"
#include "TakeOptions.h"

#include "export/MidiFileWriter.h"
#include "generation/GrooveGenerator.h"
#include "generation/TakeCode.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace pulsewright::cli
{

namespace
{
    int fail (int exitCode, std::string_view message)
    {
        std::fprintf (stderr, "pulsewright-cli: %s\n", onOneLine (message).c_str());
        return exitCode;
    }

    //==============================================================================
    bool isPlayed (const CommandLine& line, const DrumHit& hit)
    {
        const auto lanes = line.indices ("--only");
        return lanes.empty() || std::ranges::find (lanes, static_cast<std::size_t> (hit.lane)) != lanes.end();
    }

    DrumPattern withChosenLanes (const CommandLine& line, DrumPattern pattern)
    {
        std::erase_if (pattern.hits, [&line] (const auto& hit) { return ! isPlayed (line, hit); });
        return pattern;
    }

    SongArrangement withChosenLanes (const CommandLine& line, SongArrangement song)
    {
        for (auto& section : song.sections)
            section.pattern = withChosenLanes (line, std::move (section.pattern));
        return song;
    }

    DrumPattern mutated (const CommandLine& line, const GenerationSettings& settings, const DrumPattern& pattern)
    {
        LaneLocks locks {};
        for (const auto lane : line.indices ("--lock"))
            locks[lane] = true;

        return GrooveGenerator::mutate (settings, pattern, locks, line.get ("--mutate"));
    }

    Made<DrumPattern> makePattern (const CommandLine& line)
    {
        const auto take    = takeFrom (line, Take::Kind::groove);
        const auto pattern = patternOf (take);

        if (line.has ("--mutate"))
            return { take, {}, withChosenLanes (line, mutated (line, take.settings, pattern)) };

        return { take, codeOf (take), withChosenLanes (line, pattern) };
    }

    Made<SongArrangement> makeSong (const CommandLine& line)
    {
        const auto take = takeFrom (line, Take::Kind::song);
        return { take, codeOf (take), withChosenLanes (line, songOf (take)) };
    }

    //==============================================================================
    void renumber (const std::array<std::uint8_t, 128>& map, DrumPattern& pattern)
    {
        for (auto& hit : pattern.hits)
            hit.note = map[hit.note & 0x7Fu];
    }

    void renumber (const std::array<std::uint8_t, 128>& map, SongArrangement& song)
    {
        for (auto& section : song.sections)
            renumber (map, section.pattern);
    }

    template <typename Material>
    std::vector<std::uint8_t> midiBytes (const CommandLine& line, Material material, std::int32_t tempo)
    {
        if (line.has ("--map"))
            renumber (line.noteMap ("--map"), material);

        if constexpr (std::is_same_v<Material, SongArrangement>)
            if (line.has ("--markers"))
                return MidiFileWriter::bytesWithMarkersOf (material, tempo);

        return MidiFileWriter::bytesOf (material, tempo);
    }

    bool isColourWanted()
    {
        const auto* noColour = std::getenv ("NO_COLOR");
        const auto* terminal = std::getenv ("TERM");
        return isStandardOutputTerminal() && (noColour == nullptr || *noColour == 0) && terminal != nullptr && std::string_view (terminal) != "dumb";
    }

    void print (std::string_view text)
    {
        writeOutput ("-", text);
    }

    /** A song that plays a pattern once, from its first beat to its last. */
    SongArrangement onceThrough (const DrumPattern& pattern)
    {
        SongArrangement song;
        song.name      = pattern.name;
        song.totalBars = static_cast<std::uint32_t> (pattern.bars);
        song.seed      = pattern.seed;
        song.sections.push_back ({ pattern.name, 0, pattern });
        return song;
    }

    const SongArrangement& onceThrough (const SongArrangement& song)
    {
        return song;
    }

    /** Writes what was asked for; without an output option it prints it for people. */
    template <typename Material>
    void give (const CommandLine& line, const Made<Material>& made)
    {
        if (line.has ("--json"))
            writeOutput (line.text ("--json"), jsonText (made));

        if (line.has ("--midi"))
        {
            const auto bytes = midiBytes (line, made.material, made.take.tempo);
            writeOutput (line.text ("--midi"), { reinterpret_cast<const char*> (bytes.data()), bytes.size() }, MidiFileWriter::cannotCompleteMessage);
        }

        if (line.has ("--wav"))
            writeSound (line.text ("--wav"), onceThrough (made.material), made.take.tempo, static_cast<int> (made.take.kit));

        if (! line.has ("--json") && ! line.has ("--midi") && ! line.has ("--wav"))
            print (textForPeople (made, isColourWanted()));
    }

    int showCode (const CommandLine& line)
    {
        const auto code = codeInFile (line);

        if (code.empty())
            return fail (1, line.text ("FILE") + ": no take of these settings plays this; --takes, and the settings as options, widen the search");

        print (code + "\n");
        return 0;
    }

    void makePicture (const CommandLine& line)
    {
        writeWindowPicture (line.text ("--png"),
                            { .width  = line.get<int> ("--width"),
                              .height = line.get<int> ("--height"),
                              .scale  = line.get<float> ("--scale"),
                              .genre  = line.get<int> ("--genre"),
                              .take   = line.get ("--take") });
    }

    /** @returns the exit status */
    int perform (const CommandLine& line)
    {
        switch (line.command())
        {
            case tool: print (line.answer()); break;
            case pattern: give (line, makePattern (line)); break;
            case song: give (line, makeSong (line)); break;
            case window: makePicture (line); break;
            case find: findGrooves (line, isColourWanted()); break;
            case show: return showCode (line);
            case verify: return verifyFile (line);
            case preset: writePresets (line); break;
        }

        return 0;
    }

    //==============================================================================

    int run (int argc, char** argv)
    {
        constexpr int writeFailed = 1, badCommandLine = 2, interrupted = 130;

        try
        {
            prepareProcessForWriting();
            return perform (CommandLine (argc, argv));
        }
        catch (const BadArgument& error)
        {
            return fail (badCommandLine, error.what());
        }
        catch (const WriteFailure& error)
        {
            return fail (writeFailed, error.what());
        }
        catch (const Interrupted& end)
        {
            return fail (interrupted, end.what());
        }
    }
} // namespace

} // namespace pulsewright::cli

int main (int argc, char** argv) // NOLINT(bugprone-exception-escape): without memory there is nothing to say
{
    return pulsewright::cli::run (argc, argv);
}
