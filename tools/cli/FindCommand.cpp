// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "FindCommand.h"

#include "InputFile.h"
#include "LongSearch.h"
#include "Output.h"
#include "OutputFile.h"
#include "TakeOptions.h"

#include "export/MidiFileReader.h"
#include "export/MidiFileWriter.h"
#include "generation/GenreProfile.h"
#include "generation/TakeCode.h"
#include "search/GrooveExample.h"
#include "search/TakeSearch.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <span>
#include <thread>

namespace pulsewright::cli
{

namespace
{
    namespace fs = std::filesystem;

    constexpr std::int32_t usualBars = 2, mostBarsOfItself = 8;
    constexpr std::size_t largestExample = 16u << 20; // bytes

    //==============================================================================
    template <typename Number>
    Number numberAt (const nlohmann::json& hit, const char* name, Number least, Number most)
    {
        const auto value = hit.at (name).get<double>();

        if (! (value >= static_cast<double> (least) && value <= static_cast<double> (most)))
            throw BadExample (std::string ("a hit's \"") + name + "\" is out of range");

        return static_cast<Number> (value);
    }

    /** A pattern as `pattern --json` writes it. Of a hit, "start" in beats is needed, and "velocity" and "lane" or "note". */
    GrooveExample exampleFromJson (const std::string& bytes)
    {
        const auto json = nlohmann::json::parse (bytes);
        GrooveExample example;

        for (const auto& each : json.at ("hits"))
        {
            DrumHit hit;
            hit.start       = numberAt (each, "start", 0.0, static_cast<double> (GrooveExample::mostBars) * beatsPerBar - 1.0);
            hit.velocity    = numberAt (each, "velocity", 0u, 127u);
            const auto lane = each.contains ("lane") ? std::optional (static_cast<DrumLane> (numberAt (each, "lane", 0u, laneCount - 1)))
                                                     : laneOfDrum (numberAt (each, "note", 0u, 127u));

            if (! lane)
                continue;

            hit.lane     = *lane;
            example.bars = std::max (example.bars, barsUpTo (hit.start));
            example.hits.push_back (hit);
        }

        if (json.contains ("bars"))
            example.bars = std::max (example.bars, numberAt (json, "bars", 1, GrooveExample::mostBars));

        if (example.hits.empty())
            throw BadExample ("it has no hits");

        return example;
    }

    GrooveExample exampleIn (const std::string& name)
    {
        try
        {
            const auto text = bytesOfFile (name, largestExample);
            const std::span bytes (reinterpret_cast<const std::uint8_t*> (text.data()), text.size());
            return isMidiFile (bytes) ? exampleInMidiFile (bytes) : exampleFromJson (text);
        }
        catch (const BadExample& error)
        {
            throw BadArgument ("--like: " + name + ": " + error.what());
        }
        catch (const nlohmann::json::exception&)
        {
            throw BadArgument ("--like: " + name + ": this is neither a MIDI file nor a pattern's JSON");
        }
    }

    //==============================================================================
    constexpr std::array<const char*, laneCount> shapeOptions { "--kick", "--snare", "--hats", "--perc" };

    GrooveTarget targetOf (const CommandLine& line)
    {
        std::optional<GrooveExample> example;
        std::int32_t bars = usualBars;
        bool hasShape     = false;

        if (line.has ("--like"))
        {
            example = exampleIn (line.text ("--like"));
            bars    = std::max (bars, example->bars);
        }

        for (const auto* option : shapeOptions)
        {
            bars     = std::max (bars, static_cast<std::int32_t> (line.text (option).size() / 16));
            hasShape = hasShape || line.has (option);
        }

        if (! example && ! hasShape)
            throw BadArgument ("What is to be found? Give --like, or a shape with --kick, --snare, --hats or --perc");

        GrooveTarget target (line.has ("--bars") ? line.get<std::int32_t> ("--bars") : std::min (bars, mostBarsOfItself));

        if (example)
            target.setExample (example->hits, example->bars);

        for (std::size_t lane = 0; lane < laneCount; ++lane)
            if (line.has (shapeOptions[lane]))
                target.setShape (static_cast<DrumLane> (lane), line.text (shapeOptions[lane]));

        return target;
    }

    /** The settings as they are, and with each of three macros at steps of a quarter. */
    std::vector<GenerationSettings> varied (const GenerationSettings& settings)
    {
        std::vector<GenerationSettings> grid { settings };

        for (const auto field : { &GenerationSettings::density, &GenerationSettings::syncopation, &GenerationSettings::variation })
            for (std::size_t i = 0, end = grid.size(); i < end; ++i)
                for (const float value : { 0.0f, 0.25f, 0.5f, 0.75f, 1.0f })
                    if (auto other = grid[i]; snapPercent (value) != settings.*field)
                    {
                        other.*field = snapPercent (value);
                        grid.push_back (other);
                    }

        return grid;
    }

    TakeQuery queryOf (const CommandLine& line)
    {
        const auto genre         = line.get ("--genre");
        const auto [first, last] = line.range ("--takes");
        GenerationSettings knobs;

        for (std::size_t i = 0; i < allSettings.size(); ++i)
            knobs.*allSettings[i].field = settingFrom (line, i);

        TakeQuery query;

        for (std::uint32_t each = 0; each < genreCount; ++each)
            if (each == genre || genre == genreCount)
            {
                auto settings        = knobs;
                settings.genre       = static_cast<Genre> (each);
                const auto ofOneTake = line.has ("--vary") ? varied (settings) : std::vector { settings };
                query.settings.insert (query.settings.end(), ofOneTake.begin(), ofOneTake.end());
            }

        query.section   = line.get<SectionType> ("--section");
        query.firstTake = first;
        query.lastTake  = last;
        query.top       = line.get ("--top");
        query.jobs      = line.has ("--jobs") ? line.get ("--jobs") : std::max (1u, std::thread::hardware_concurrency());
        return query;
    }

    //==============================================================================
    /** Generates the take again to check the result and to get its name and seed. */
    FoundGroove played (const FoundTake& found, const TakeQuery& query)
    {
        Take take { .counter = found.take, .settings = query.settings[found.settings], .section = query.section, .bars = found.pattern.bars };
        take.settings.seed = saltOf (take.counter);
        take.tempo         = profileOf (take.settings.genre).tempoBpm;

        auto pattern = patternOf (take);

        if (pattern.hits != found.pattern.hits)
            throw WriteFailure ("Take " + std::to_string (take.counter) + " does not play what was found; please report this");

        return { static_cast<double> (found.distance) / GrooveTarget::unit, { take, codeOf (take), std::move (pattern) } };
    }

    std::vector<FoundGroove> allPlayed (const TakesFound& found, const TakeQuery& query)
    {
        std::vector<FoundGroove> grooves;
        for (const auto& take : found.takes)
            grooves.push_back (played (take, query));
        return grooves;
    }

    void makeFolder (const std::string& folder)
    {
        std::error_code error;
        fs::create_directories (folder, error);

        if (! fs::is_directory (folder))
            throw WriteFailure (folder + ": The folder could not be made (" + error.message() + ")");
    }

    void saveAll (const std::string& folder, std::span<const FoundGroove> grooves)
    {
        for (std::size_t i = 0; i < grooves.size(); ++i)
        {
            const auto& [take, code, pattern] = grooves[i].groove;
            const auto bytes                  = MidiFileWriter::bytesOf (pattern, take.tempo);

            std::array<char, 32> place {};
            std::snprintf (place.data(), place.size(), "%03zu ", i + 1);
            const auto name = std::string (place.data())
                                  .append (nameOf (take.settings.genre))
                                  .append (" take ")
                                  .append (std::to_string (take.counter))
                                  .append (".mid");
            writeOutput ((fs::path (folder) / name).string(),
                         { reinterpret_cast<const char*> (bytes.data()), bytes.size() },
                         MidiFileWriter::cannotCompleteMessage);
        }
    }

    TakesFound search (const TakeQuery& query, const GrooveTarget& target)
    {
        LongSearch terminal;
        return findTakes (query, target, terminal.stop(), [&terminal] (double share) { terminal.show (share); });
    }

    /** When the output file cannot be written, the result is printed instead, so that a long search is not lost. */
    void give (const CommandLine& line, std::uint64_t searched, std::span<const FoundGroove> nearest, bool inColour)
    {
        try
        {
            if (line.has ("--save"))
                saveAll (line.text ("--save"), nearest);

            if (line.has ("--json"))
                return writeOutput (line.text ("--json"), jsonText (searched, nearest));
        }
        catch (const WriteFailure&)
        {
            writeOutput ("-", listText (nearest, inColour));
            throw;
        }

        writeOutput ("-", listText (nearest, inColour));
    }
} // namespace

void findGrooves (const CommandLine& line, bool inColour)
{
    const auto target = targetOf (line);
    const auto query  = queryOf (line);

    if (line.has ("--save"))
        makeFolder (line.text ("--save")); // before the search: what cannot be written shows at once

    const auto found = search (query, target);
    give (line, found.searched, allPlayed (found, query), inColour);

    if (! found.isWhole)
        throw Interrupted ("Stopped after " + std::to_string (found.searched) + " grooves; these are the nearest of them");
}

} // namespace pulsewright::cli
