// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// pulsewright-cli: the same music without a host.

#include "CommandLine.h"
#include "FindCommand.h"
#include "Output.h"
#include "OutputFile.h"

#include "export/MidiFileWriter.h"
#include "generation/GenreProfile.h"
#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace pulsewright::cli
{

namespace
{
    //==============================================================================
    // What the options mean.

    /** The knobs, with the opening style and take. */
    GenerationSettings knobsOf (const CommandLine& line)
    {
        GenerationSettings settings;

        // Through the steps of the plug-in's parameters, so that the same shown values play the same music.
        auto values = settings.values();

        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = snapPercent (line.get<float> (settingOption (i)));

        settings.setValues (values);
        return settings;
    }

    GenerationSettings settingsOf (const CommandLine& line)
    {
        auto settings  = knobsOf (line);
        settings.genre = line.get<Genre> ("--genre");
        settings.seed  = line.has ("--salt") ? line.get ("--salt") : saltOf (line.get ("--take"));
        return settings;
    }

    std::int32_t tempoOf (const CommandLine& line)
    {
        return line.has ("--tempo") ? line.get<std::int32_t> ("--tempo") : profileOf (line.get<Genre> ("--genre")).tempoBpm;
    }

    DrumPattern patternOf (const CommandLine& line)
    {
        const auto settings = settingsOf (line);
        const auto pattern =
            GrooveGenerator::generate (settings, line.get<SectionType> ("--section"), line.get<std::int32_t> ("--bars"), line.get ("--seed"));

        LaneLocks locks {};
        for (const auto lane : line.indices ("--lock"))
            locks[lane] = true;

        return line.has ("--mutate") ? GrooveGenerator::mutate (settings, pattern, locks, line.get ("--mutate")) : pattern;
    }

    SongArrangement songOf (const CommandLine& line)
    {
        const auto settings = settingsOf (line);
        const auto seconds  = SongBuilder::durationSeconds (settings.genre, line.get ("--duration"));
        const auto bars     = line.has ("--bars") ? line.get<std::int32_t> ("--bars") : SongBuilder::songBars (seconds, tempoOf (line));

        return SongBuilder::buildSong (settings, bars, line.get ("--structure"));
    }

    //==============================================================================
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

    /** Writes what was asked for. @param textForPeople  makes what is printed when nothing was */
    template <typename Material>
    void give (const CommandLine& line, const Material& material, std::string (*textForPeople) (const Material&, int, bool))
    {
        const auto tempo = tempoOf (line);

        if (line.has ("--json"))
            writeOutput (line.text ("--json"), jsonText (material));

        if (line.has ("--midi"))
        {
            const auto bytes = MidiFileWriter::bytesOf (material, tempo);
            writeOutput (line.text ("--midi"), { reinterpret_cast<const char*> (bytes.data()), bytes.size() }, MidiFileWriter::cannotCompleteMessage);
        }

        if (line.has ("--wav"))
            writeSound (line.text ("--wav"), onceThrough (material), tempo, line.get<int> ("--kit"));

        if (! line.has ("--json") && ! line.has ("--midi") && ! line.has ("--wav"))
            print (textForPeople (material, tempo, isColourWanted()));
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
            case pattern: give (line, patternOf (line), gridText); break;
            case song: give (line, songOf (line), tableText); break;
            case window: makePicture (line); break;
            case find: return findGrooves (line, knobsOf (line), isColourWanted());
        }

        return 0;
    }

    //==============================================================================
    int fail (int exitCode, std::string_view message)
    {
        std::fprintf (stderr, "pulsewright-cli: %s\n", onOneLine (message).c_str());
        return exitCode;
    }

    int run (int argc, char** argv)
    {
        constexpr int writeFailed = 1, badCommandLine = 2;

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
    }
} // namespace

} // namespace pulsewright::cli

int main (int argc, char** argv) // NOLINT(bugprone-exception-escape): without memory there is nothing to say
{
    return pulsewright::cli::run (argc, argv);
}
