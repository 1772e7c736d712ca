// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Output.h"

#include "Options.h"

#include "generation/GenreProfile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdio>

namespace pulsewright::cli
{

namespace
{
    constexpr int columnsPerBar = 16;
    constexpr int barsPerRow    = 4;

    constexpr std::array<const char*, laneCount> laneColours { "\033[33m", "\033[31m", "\033[36m", "\033[35m" };
    constexpr const char* boldText  = "\033[1m";
    constexpr const char* dimText   = "\033[2m";
    constexpr const char* plainText = "\033[0m";

    /** How a hit of this velocity is drawn: from a ghost to an accent. */
    char symbolFor (std::uint32_t velocity) noexcept
    {
        return velocity < 55 ? '-' : velocity < 80 ? 'o' : velocity < 105 ? 'O' : '#';
    }

    std::string styled (const char* style, const std::string& text, bool inColour)
    {
        return inColour ? style + text + plainText : text;
    }

    template <typename... Values>
    std::string printed (const char* format, Values... values)
    {
        std::array<char, 160> line {};
        std::snprintf (line.data(), line.size(), format, values...);
        return line.data();
    }

    std::string counted (std::size_t count, const char* what)
    {
        return printed ("%zu %s%s", count, what, count == 1 ? "" : "s");
    }

    /** One character a sixteenth, the loudest hit of each. */
    std::string laneLine (const DrumPattern& pattern, DrumLane lane)
    {
        const auto columns = static_cast<std::size_t> (pattern.bars) * columnsPerBar;
        std::vector<std::uint32_t> loudest (columns, 0);

        for (const auto& hit : pattern.hits)
            if (hit.lane == lane)
            {
                auto& velocity = loudest[std::min (columns - 1, static_cast<std::size_t> (hit.start * 4.0 + 0.5))];
                velocity       = std::max (velocity, hit.velocity);
            }

        std::string line;
        for (const auto velocity : loudest)
            line += velocity > 0 ? symbolFor (velocity) : '.';
        return line;
    }

    std::string durationText (double beats, int tempoBpm)
    {
        const auto seconds = static_cast<int> (beats * 60.0 / tempoBpm + 0.5);
        return printed ("%d:%02d", seconds / 60, seconds % 60);
    }

    /** The length of the UTF-8 character that a text begins with; 0 when it is none, or one that moves the cursor. */
    std::size_t lengthOfShown (std::string_view text)
    {
        constexpr std::array<std::uint32_t, 5> smallest { 0, 0x20, 0xA0, 0x800, 0x10000 };

        const auto first  = static_cast<unsigned char> (text.front());
        const auto ones   = static_cast<std::size_t> (std::countl_one (first));
        const auto length = ones == 0 ? 1 : ones;

        if (ones == 1 || length >= smallest.size() || length > text.size() || first == 0x7F)
            return 0;

        std::uint32_t code = first & (0xFFu >> ones);

        for (const char c : text.substr (1, length - 1))
        {
            if ((c & 0xC0) != 0x80)
                return 0;

            code = (code << 6) | (static_cast<unsigned char> (c) & 0x3Fu);
        }

        const bool isSurrogate = code >= 0xD800 && code < 0xE000;
        return code >= smallest[length] && code < 0x110000 && ! isSurrogate ? length : 0;
    }

    //==============================================================================
    using Json = nlohmann::ordered_json;

    Json toJson (const DrumPattern& pattern)
    {
        auto hits = Json::array();

        for (const auto& hit : pattern.hits)
            hits.push_back (
                { { "start", hit.start }, { "length", hit.length }, { "note", hit.note }, { "velocity", hit.velocity }, { "lane", hit.lane } });

        return { { "name", pattern.name },
                 { "sectionType", pattern.sectionType },
                 { "bars", pattern.bars },
                 { "seed", pattern.seed },
                 { "hits", std::move (hits) } };
    }

    //==============================================================================
    /** In hits: a full kick too many is 1. */
    double inHits (Distance distance) noexcept
    {
        return static_cast<double> (distance) / GrooveTarget::unit;
    }

    /** A setting's thousandths, as they are typed. */
    std::string typed (float setting)
    {
        auto text = printed ("%.3f", static_cast<double> (setting));
        text.erase (text.find_last_not_of ('0') + 1);
        return text.append (text.ends_with ('.') ? "0" : "");
    }

    std::string inQuotes (std::string_view name)
    {
        const bool isWord = name.find (' ') == name.npos;
        return isWord ? std::string (name) : printed ("\"%s\"", std::string (name).c_str());
    }

    /** The command that makes a groove again. */
    std::string commandOf (const FoundTake& found, const TakeQuery& query)
    {
        const auto& settings = query.settings[found.settings];
        const auto& pattern  = found.pattern;
        auto text            = "pulsewright-cli pattern --genre " + inQuotes (nameOf (settings.genre)) + " --take " + std::to_string (found.take);

        if (pattern.sectionType != DrumPattern().sectionType)
            text.append (" --section ").append (inQuotes (nameOf (pattern.sectionType)));

        if (pattern.bars != DrumPattern().bars)
            text.append (" --bars ").append (std::to_string (pattern.bars));

        for (std::size_t i = 0; i < allSettings.size(); ++i)
            if (const auto field = allSettings[i].field; settings.*field != snapPercent (GenerationSettings().*field))
                text.append (" ").append (settingOption (i)).append (" ").append (typed (settings.*field));

        return text;
    }
} // namespace

std::string gridText (const DrumPattern& pattern, int tempoBpm, bool inColour)
{
    auto text = styled (boldText, pattern.name, inColour)
              + printed ("\n%s, %s, %d BPM, seed %u\n",
                         counted (static_cast<std::size_t> (pattern.bars), "bar").c_str(),
                         counted (pattern.hits.size(), "note").c_str(),
                         tempoBpm,
                         pattern.seed);

    std::array<std::string, laneCount> lines;
    for (std::uint32_t lane = 0; lane < laneCount; ++lane)
        lines[lane] = laneLine (pattern, static_cast<DrumLane> (lane));

    for (int firstBar = 0; firstBar < pattern.bars; firstBar += barsPerRow)
    {
        const int endBar = std::min (pattern.bars, firstBar + barsPerRow);
        auto header      = printed ("\n%5s ", "");

        for (int bar = firstBar; bar < endBar; ++bar)
            header += printed ("|%-16d", bar + 1);

        text += styled (dimText, header, inColour) + "\n";

        for (std::uint32_t lane = 0; lane < laneCount; ++lane)
        {
            text += printed ("%-5s ", std::string (nameOf (static_cast<DrumLane> (lane))).c_str());

            for (int bar = firstBar; bar < endBar; ++bar)
                text.append ("|").append (
                    styled (laneColours[lane], lines[lane].substr (static_cast<std::size_t> (bar) * columnsPerBar, columnsPerBar), inColour));

            text += "|\n";
        }
    }

    return text + styled (dimText, "\n      - ghost   o soft   O strong   # accent\n", inColour);
}

std::string tableText (const SongArrangement& song, int tempoBpm, bool inColour)
{
    auto text = styled (boldText, song.name, inColour)
              + printed ("\n%s at %d BPM, seed %u\n\n", durationText (song.lengthInBeats(), tempoBpm).c_str(), tempoBpm, song.seed);

    text += styled (dimText, printed (" %4s  %-12s  %-15s  %4s  %5s  %s", "bar", "section", "type", "bars", "notes", "notes a bar"), inColour) + "\n";

    for (const auto& section : song.sections)
    {
        const auto& pattern  = section.pattern;
        const auto perBar    = static_cast<double> (pattern.hits.size()) / pattern.bars;
        const auto barLength = std::min<std::size_t> (20, static_cast<std::size_t> (perBar / 2.0 + 0.5));

        text += printed (" %4u  %-12s  %-15s  %4d  %5zu  %4.1f ",
                         section.startBar + 1,
                         section.name.c_str(),
                         std::string (nameOf (pattern.sectionType)).c_str(),
                         pattern.bars,
                         pattern.hits.size(),
                         perBar)
              + styled (laneColours[0], std::string (barLength, '='), inColour) + "\n";
    }

    return text;
}

std::string onOneLine (std::string_view message)
{
    std::string text;

    while (! message.empty())
    {
        const auto shown = lengthOfShown (message);
        text.append (shown > 0 ? std::string (message.substr (0, shown)) : printed ("\\x%02x", static_cast<unsigned char> (message.front())));
        message.remove_prefix (std::max<std::size_t> (shown, 1));
    }

    return text;
}

std::string jsonText (const DrumPattern& pattern)
{
    return toJson (pattern).dump() + "\n";
}

std::string jsonText (const SongArrangement& song)
{
    auto sections = Json::array();

    for (const auto& section : song.sections)
        sections.push_back ({ { "name", section.name }, { "startBar", section.startBar }, { "pattern", toJson (section.pattern) } });

    const Json json { { "name", song.name }, { "totalBars", song.totalBars }, { "seed", song.seed }, { "sections", std::move (sections) } };
    return json.dump() + "\n";
}

std::string jsonText (const TakesFound& found, const TakeQuery& query)
{
    auto takes = Json::array();

    for (const auto& take : found.takes)
        takes.push_back ({ { "genre", nameOf (query.settings[take.settings].genre) },
                           { "take", take.take },
                           { "distance", inHits (take.distance) },
                           { "command", commandOf (take, query) },
                           { "pattern", toJson (take.pattern) } });

    const Json json { { "searched", found.searched }, { "takes", std::move (takes) } };
    return json.dump() + "\n";
}

std::string listText (const TakesFound& found, const TakeQuery& query, bool inColour)
{
    auto text = styled (dimText, printed ("%12s %5s %10s %10s  %s", "distance", "style", "take", "seed", "command"), inColour) + "\n";

    for (const auto& take : found.takes)
        text += printed ("%12.6f %5u %10u %10u  ",
                         inHits (take.distance),
                         static_cast<unsigned> (query.settings[take.settings].genre),
                         take.take,
                         take.pattern.seed)
              + commandOf (take, query) + "\n";

    if (found.takes.empty())
        return text;

    const auto& nearest = found.takes.front();
    return text + "\n" + gridText (nearest.pattern, profileOf (query.settings[nearest.settings].genre).tempoBpm, inColour);
}

} // namespace pulsewright::cli
