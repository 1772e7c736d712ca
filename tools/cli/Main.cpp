// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// pulsewright-cli: the same music without a host.

#include "Arguments.h"
#include "FileReplacement.h"
#include "Output.h"

#include "export/MidiFileWriter.h"
#include "generation/GenreProfile.h"
#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"
#include "processor/PercentRange.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <optional>
#include <span>
#include <unistd.h>
#include <vector>

namespace pulsewright::cli
{

namespace
{
    //==============================================================================
    using Word = std::optional<std::string>;

    // The texts of the command line, as they were typed.
    struct Words
    {
        Word genre, section, bars, seed, take, salt, mutate, lock, structure, duration, tempo, kit;
        std::array<Word, GenerationSettings::numValues> settings;
        Word json, midi, wav, png, width, height, scale;
    };

    // clang-format off
    constexpr std::array<std::string_view, songDurationCount> durationNames { "genre", "2:00", "2:30", "3:00", "3:30", "4:00", "5:00" };
    constexpr std::array<std::string_view, 5> kitNames                      { "Studio", "808", "Dusty", "Electronic", "MIDI Only" };

    struct SettingOption { const char* name; const char* help; };

    constexpr std::array<SettingOption, GenerationSettings::numValues> settingOptions
    {{
        { "--density",                "How many optional hits are played, 0 to 1 [0.48]" },
        { "--energy",                 "Loudness, and the length of fills [0.58]" },
        { "--syncopation",            "Weight of off-beat kicks and percussion [0.42]" },
        { "--swing",                  "Delay of odd sixteenths [0.18]" },
        { "--variation",              "Ghost notes, rolls, change from bar to bar [0.35]" },
        { "--experimental",           "The wandering toms, from 0.32 on [0.12]" },
        { "--timing",                 "Humanised timing [0.16]" },
        { "--velocity",               "Humanised velocity [0.22]" },
        { "--kick-probability",       "Scales the chance of every kick [1]" },
        { "--snare-probability",      "... of every snare [1]" },
        { "--hats-probability",       "... of every hat [1]" },
        { "--percussion-probability", "... of all percussion [1]" }
    }};
    // clang-format on

    template <typename Enum>
    std::vector<std::string_view> namesOf (std::uint32_t count)
    {
        std::vector<std::string_view> names;
        for (std::uint32_t i = 0; i < count; ++i)
            names.push_back (nameOf (static_cast<Enum> (i)));
        return names;
    }

    std::vector<std::string_view> structureNames()
    {
        std::vector<std::string_view> names;
        for (std::uint32_t i = 0; i < songStructureCount; ++i)
            names.push_back (SongBuilder::structureName (i));
        return names;
    }

    std::string listed (std::span<const std::string_view> names)
    {
        std::string text;
        for (const auto name : names)
            text.append (text.empty() ? "" : ", ").append (name);
        return text;
    }

    //==============================================================================
    // What the words mean. A number out of range goes on as it is: the generator knows what to do with it.

    template <typename Value, typename Reader>
    Value read (const Word& word, Value otherwise, Reader&& reader)
    {
        return word ? static_cast<Value> (reader (*word)) : otherwise;
    }

    GenerationSettings settingsOf (const Words& words)
    {
        GenerationSettings settings;
        settings.genre = read (words.genre, settings.genre, [] (auto& t) { return indexOfNameOrNumber ("--genre", t, namesOf<Genre> (genreCount)); });

        // Through the steps of the plug-in's parameters, so that the same shown values play the same music.
        auto values = settings.values();

        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] = snapPercent (
                read (words.settings[i], values[i], [i] (auto& t) { return std::clamp (number (settingOptions[i].name, t), 0.0, 1.0); }));

        settings.setValues (values);

        const auto take = read (words.take, 1u, [] (auto& t) { return integerModulo32 ("--take", t); });
        settings.seed   = read (words.salt, saltOf (take), [] (auto& t) { return integerModulo32 ("--salt", t); });
        return settings;
    }

    std::int32_t tempoOf (const Words& words, Genre genre)
    {
        return read (words.tempo, profileOf (genre).tempoBpm, [] (auto& t) { return std::round (std::clamp (number ("--tempo", t), -1e9, 1e9)); });
    }

    int kitOf (const Words& words)
    {
        return read (words.kit, 0, [] (auto& t) { return indexOfName ("--kit", t, kitNames); });
    }

    LaneLocks locksOf (const Words& words)
    {
        LaneLocks locks {};

        if (words.lock)
            for (const auto lane : commaSeparated (*words.lock))
                locks[indexOfName ("--lock", lane, namesOf<DrumLane> (laneCount))] = true;

        return locks;
    }

    DrumPattern patternOf (const Words& words, const GenerationSettings& settings)
    {
        const auto type  = read (words.section,
                                SectionType::verse,
                                [] (auto& t) { return indexOfNameOrNumber ("--section", t, namesOf<SectionType> (sectionTypeCount)); });
        const auto bars  = read (words.bars, 2, [] (auto& t) { return integer ("--bars", t); });
        const auto seed  = read (words.seed, 0u, [] (auto& t) { return integerModulo32 ("--seed", t); });
        const auto locks = locksOf (words);

        auto pattern = GrooveGenerator::generate (settings, type, bars, seed);

        if (words.mutate)
            pattern = GrooveGenerator::mutate (settings, pattern, locks, integerModulo32 ("--mutate", *words.mutate));

        return pattern;
    }

    SongArrangement songOf (const Words& words, const GenerationSettings& settings, std::int32_t tempo)
    {
        const auto structure = read (words.structure, 0u, [] (auto& t) { return indexOfNameOrNumber ("--structure", t, structureNames()); });
        const auto duration  = read (words.duration, 0u, [] (auto& t) { return indexOfName ("--duration", t, durationNames); });
        const auto bars      = read (words.bars,
                                SongBuilder::songBars (SongBuilder::durationSeconds (settings.genre, duration), tempo),
                                [] (auto& t) { return integer ("--bars", t); });

        return SongBuilder::buildSong (settings, bars, structure);
    }

    //==============================================================================
    bool isColourWanted()
    {
        const auto* noColour = std::getenv ("NO_COLOR");
        const auto* terminal = std::getenv ("TERM");
        return isatty (STDOUT_FILENO) == 1 && (noColour == nullptr || *noColour == 0) && terminal != nullptr && std::string_view (terminal) != "dumb";
    }

    void print (const std::string& text)
    {
        if (std::fwrite (text.data(), 1, text.size(), stdout) != text.size() || std::fflush (stdout) != 0)
            throw WriteFailure (MidiFileWriter::cannotCompleteMessage);
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

    template <typename Material>
    void give (const Words& words, const Material& material, std::int32_t tempo, int kit, const std::function<std::string()>& textForPeople)
    {
        if (words.json == "-")
            print (jsonText (material));
        else if (words.json)
            writeFile (*words.json, jsonText (material));

        if (words.midi)
        {
            const auto bytes = MidiFileWriter::bytesOf (material, tempo);
            writeFile (*words.midi, { reinterpret_cast<const char*> (bytes.data()), bytes.size() });
        }

        if (words.wav)
            writeWav (*words.wav, onceThrough (material), tempo, kit);

        if (! words.json && ! words.midi && ! words.wav)
            print (textForPeople());
    }

    void makePattern (const Words& words)
    {
        const auto settings = settingsOf (words);
        const auto tempo    = tempoOf (words, settings.genre);
        const auto kit      = kitOf (words);
        const auto pattern  = patternOf (words, settings);
        give (words, pattern, tempo, kit, [&] { return gridText (pattern, tempo, isColourWanted()); });
    }

    void makeSong (const Words& words)
    {
        const auto settings = settingsOf (words);
        const auto tempo    = tempoOf (words, settings.genre);
        const auto kit      = kitOf (words);
        const auto song     = songOf (words, settings, tempo);
        give (words, song, tempo, kit, [&] { return tableText (song, tempo, isColourWanted()); });
    }

    void makePicture (const Words& words)
    {
        const auto size = [] (const char* option) { return [option] (auto& t) { return std::clamp (integer (option, t), 1, 4000); }; };

        WindowPicture picture;
        picture.width  = read (words.width, picture.width, size ("--width"));
        picture.height = read (words.height, picture.height, size ("--height"));
        picture.scale  = read (words.scale, picture.scale, [] (auto& t) { return std::clamp (number ("--scale", t), 0.5, 4.0); });
        picture.genre  = read (words.genre, picture.genre, [] (auto& t) { return indexOfNameOrNumber ("--genre", t, namesOf<Genre> (genreCount)); });
        picture.take   = read (words.take, picture.take, [] (auto& t) { return integerModulo32 ("--take", t); });
        writeWindowPicture (*words.png, picture);
    }

    //==============================================================================
    void addGenreOption (CLI::App& command, Words& words)
    {
        command.add_option ("--genre", words.genre, "Style, or its number: " + listed (namesOf<Genre> (genreCount)))->type_name ("NAME|N");
    }

    void addCommonOptions (CLI::App& command, Words& words)
    {
        addGenreOption (command, words);

        auto* take = command.add_option ("--take", words.take, "The take, as the plug-in counts them [1]")->type_name ("N");
        command.add_option ("--salt", words.salt, "The 32-bit salt itself, decimal or 0x, instead of a take")->type_name ("N")->excludes (take);

        for (std::size_t i = 0; i < settingOptions.size(); ++i)
            command.add_option (settingOptions[i].name, words.settings[i], settingOptions[i].help)->type_name ("X")->group ("Settings");

        command.add_option ("--tempo", words.tempo, "Beats per minute; a file takes 30 to 300 [the genre's]")->type_name ("BPM");
        command.add_option ("--kit", words.kit, "Sound of --wav: " + listed (kitNames) + " [Studio]")->type_name ("NAME");
        command.add_option ("--json", words.json, "Write the material as JSON; - is the standard output")->type_name ("FILE|-")->group ("Output");
        command.add_option ("--midi", words.midi, "Write a Standard MIDI File")->type_name ("FILE")->group ("Output");
        command.add_option ("--wav", words.wav, "Play it once through the plug-in's kit and write the sound")->type_name ("FILE")->group ("Output");
    }

    CLI::App* addPatternCommand (CLI::App& app, Words& words)
    {
        auto* command = app.add_subcommand ("pattern", "Generate one groove or fill");
        addCommonOptions (*command, words);
        command->add_option ("--section", words.section, "What it is for, or its number: " + listed (namesOf<SectionType> (sectionTypeCount)))
            ->type_name ("NAME|N");
        command->add_option ("--bars", words.bars, "Length, 1 to 192 [2]")->type_name ("N");
        command->add_option ("--seed", words.seed, "Seed beside the salt [0, as the plug-in's]")->type_name ("N");
        command->add_option ("--mutate", words.mutate, "Mutate it once with this seed")->type_name ("N");
        command->add_option ("--lock", words.lock, "Lanes that the mutation keeps: " + listed (namesOf<DrumLane> (laneCount)))
            ->type_name ("LANE[,LANE...]");
        return command;
    }

    CLI::App* addSongCommand (CLI::App& app, Words& words)
    {
        auto* command = app.add_subcommand ("song", "Build a whole song");
        addCommonOptions (*command, words);
        command->add_option ("--structure", words.structure, "Its form, or the number: " + listed (structureNames()))->type_name ("NAME|N");
        command->add_option ("--duration", words.duration, "genre (its average), 2:00, 2:30, 3:00, 3:30, 4:00 or 5:00 [genre]")->type_name ("TIME");
        command->add_option ("--bars", words.bars, "Length in bars, 16 to 384, instead of a duration")->type_name ("N");
        return command;
    }

    void addWindowCommand (CLI::App& app, Words& words)
    {
        auto* command = app.add_subcommand ("window", "Render the plug-in's window, without a display");
        command->add_option ("--png", words.png, "Where to write the picture")->type_name ("FILE")->required();
        command->add_option ("--width", words.width, "Width in pixels, 900 to 1500 in a host [1120]")->type_name ("W");
        command->add_option ("--height", words.height, "Height, 720 to 1050 in a host [840]")->type_name ("H");
        command->add_option ("--scale", words.scale, "Pixels a pixel, 0.5 to 4 [1]")->type_name ("X");
        addGenreOption (*command, words);
        command->add_option ("--take", words.take, "The take that a project was saved at [1]")->type_name ("N");
    }

    //==============================================================================
    int fail (int exitCode, const std::string& message)
    {
        std::fprintf (stderr, "pulsewright-cli: %s\n", message.c_str());
        return exitCode;
    }

    int run (int argc, char** argv)
    {
        constexpr int writeFailed = 1, badCommandLine = 2;

        CLI::App app ("Generates drum grooves and whole songs from a seed: the same music as the plug-in, without a host.");
        app.name ("pulsewright-cli");
        app.require_subcommand (1);
        app.set_version_flag ("--version", "Pulsewright " PULSEWRIGHT_VERSION, "Print the version and exit");
        app.footer ("Without an output option a pattern is printed as a grid and a song as a table.\n"
                    "Exit status: 0, 1 when a file could not be written, 2 for a bad command line.");

        Words words;

        const auto* pattern = addPatternCommand (app, words);
        const auto* song    = addSongCommand (app, words);
        addWindowCommand (app, words);

        try
        {
            app.parse (argc, argv);
            const auto& make = pattern->parsed() ? makePattern : song->parsed() ? makeSong : makePicture;
            make (words);
            return 0;
        }
        catch (const CLI::Success& helpWanted)
        {
            return app.exit (helpWanted);
        }
        catch (const CLI::ParseError& error)
        {
            return fail (badCommandLine,
                         std::string (error.what()) + " (the commands are pattern, song and window; --help after one lists its options)");
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
