// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Output.h"

#include "Options.h"

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

    /** Where the music came from. */
    void addTake (Json& json, const Take& take, const std::optional<std::string>& code)
    {
        if (code)
            json["code"] = *code;

        auto settings = Json::object();
        for (const auto& setting : allSettings)
            settings[setting.id] = take.settings.*setting.field;

        json["genre"]    = nameOf (take.settings.genre);
        json["settings"] = std::move (settings);
        json["tempo"]    = take.tempo;

        if (take.settings.seed == saltOf (take.counter)) // not so for the salt 0
            json["take"] = take.counter;
    }

    std::string codeLine (const std::optional<std::string>& code)
    {
        return "\n" + code.value_or ("No code: --mutate, --seed or --salt 0 makes music that no take number makes.") + "\n";
    }

    //==============================================================================
    /** A setting's thousandths, as they are typed. */
    std::string typed (float setting)
    {
        auto text = printed ("%.3f", static_cast<double> (setting));
        text.erase (text.find_last_not_of ('0') + 1);
        return text.append (text.ends_with ('.') ? "0" : "");
    }

    std::string inQuotes (std::string_view name)
    {
        const char* quote = name.find (' ') == name.npos ? "" : "\"";
        return std::string (quote).append (name).append (quote);
    }

    /** The command that makes a groove again. */
    std::string commandOf (const Take& take)
    {
        std::string text = "pulsewright-cli pattern";
        const auto add   = [&text] (const std::string& option, const std::string& value)
        { text.append (" ").append (option).append (" ").append (value); };

        add ("--genre", inQuotes (nameOf (take.settings.genre)));
        add ("--take", std::to_string (take.counter));

        if (take.section != Take().section)
            add ("--section", inQuotes (nameOf (take.section)));

        if (take.bars != Take().bars)
            add ("--bars", std::to_string (take.bars));

        for (std::size_t i = 0; i < allSettings.size(); ++i)
            if (const auto field = allSettings[i].field; take.settings.*field != snapPercent (GenerationSettings().*field))
                add (settingOption (i), typed (take.settings.*field));

        return text;
    }
} // namespace

std::string textForPeople (const Made<DrumPattern>& made, bool inColour)
{
    const auto& pattern = made.material;
    auto text           = styled (boldText, pattern.name, inColour)
              + printed ("\n%s, %s, %d BPM, seed %u\n",
                         counted (static_cast<std::size_t> (pattern.bars), "bar").c_str(),
                         counted (pattern.hits.size(), "note").c_str(),
                         made.take.tempo,
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

    return text + styled (dimText, "\n      - ghost   o soft   O strong   # accent\n", inColour) + codeLine (made.code);
}

std::string textForPeople (const Made<SongArrangement>& made, bool inColour)
{
    const auto& song    = made.material;
    const auto tempoBpm = made.take.tempo;
    auto text           = styled (boldText, song.name, inColour)
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

    return text + codeLine (made.code);
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

std::string jsonText (const Made<DrumPattern>& made)
{
    auto json = toJson (made.material);
    addTake (json, made.take, made.code);
    return json.dump() + "\n";
}

std::string jsonText (const Made<SongArrangement>& made)
{
    const auto& song = made.material;
    auto sections    = Json::array();

    for (const auto& section : song.sections)
        sections.push_back ({ { "name", section.name }, { "startBar", section.startBar }, { "pattern", toJson (section.pattern) } });

    Json json { { "name", song.name }, { "totalBars", song.totalBars }, { "seed", song.seed }, { "sections", std::move (sections) } };
    addTake (json, made.take, made.code);
    return json.dump() + "\n";
}

std::string jsonText (std::uint64_t searched, std::span<const FoundGroove> nearest)
{
    auto takes = Json::array();

    for (const auto& [distance, groove] : nearest)
    {
        Json json;

        if (groove.code)
            json["code"] = *groove.code;

        json["genre"]    = nameOf (groove.take.settings.genre);
        json["take"]     = groove.take.counter;
        json["distance"] = distance;
        json["command"]  = commandOf (groove.take);
        json["pattern"]  = toJson (groove.material);
        takes.push_back (std::move (json));
    }

    const Json json { { "searched", searched }, { "takes", std::move (takes) } };
    return json.dump() + "\n";
}

std::string listText (std::span<const FoundGroove> nearest, bool inColour)
{
    auto text = styled (dimText, printed ("%12s %5s %10s %10s  %s", "distance", "style", "take", "seed", "command"), inColour) + "\n";

    for (const auto& [distance, groove] : nearest)
        text.append (printed ("%12.6f %5u %10u %10u  ",
                              distance,
                              static_cast<unsigned> (groove.take.settings.genre),
                              groove.take.counter,
                              groove.material.seed))
            .append (commandOf (groove.take))
            .append ("\n");

    return nearest.empty() ? text : text + "\n" + textForPeople (nearest.front().groove, inColour);
}

} // namespace pulsewright::cli
