// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Options.h"

#include "generation/GenerationSettings.h"
#include "generation/SongBuilder.h"
#include "processor/kit/DrumSound.h"
#include "search/GrooveTarget.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <limits>
#include <numeric>
#include <optional>
#include <type_traits>

namespace pulsewright::cli
{

namespace
{
    //==============================================================================
    /** @param nameAt  gives the name at an index */
    template <typename NameAt>
    std::vector<std::string_view> namesUpTo (std::uint32_t count, NameAt&& nameAt)
    {
        std::vector<std::string_view> names;
        for (std::uint32_t i = 0; i < count; ++i)
            names.push_back (nameAt (i));
        return names;
    }

    template <typename Enum>
    std::vector<std::string_view> namesOf (std::uint32_t count)
    {
        return namesUpTo (count, [] (auto i) { return nameOf (static_cast<Enum> (i)); });
    }

    /** As few digits as a number needs. */
    std::string digitsOf (auto number)
    {
        std::array<char, 32> digits {};
        return { digits.data(), std::to_chars (digits.data(), digits.data() + digits.size(), number).ptr };
    }

    // clang-format off
    constexpr std::array<CommandRow, 8> rows
    {{
        { tool,    "",        "Generates drum grooves and whole songs from a seed: the same music as the plug-in, without a host." },
        { pattern, "pattern", "Generates one groove or fill." },
        { song,    "song",    "Builds a whole song." },
        { window,  "window",  "Renders the plug-in's window, without a display." },
        { find,    "find",    "Looks through takes for the grooves nearest to an example or a shape." },
        { show,    "show",    "Prints the code of the take in a preset, a saved state or a MIDI file." },
        { verify,  "verify",  "Says whether a MIDI file is the take of a code, note for note." },
        { preset,  "preset",  "Writes a take as a preset that hosts load." }
    }};

    constexpr Whole any32Bits   { 0, std::numeric_limits<std::uint32_t>::max() };
    constexpr Whole patternBars { DrumPattern::minBars, DrumPattern::maxBars };
    constexpr Whole songBars    { SongBuilder::minBars, SongBuilder::maxBars };
    constexpr Whole tempos      { 30, 300 }; // what a MIDI file takes
    constexpr Whole pixels      { 1, 4000 };
    constexpr unsigned music    = pattern | song;
    constexpr unsigned anyOne   = music | window;
    constexpr unsigned all      = anyOne | find | show | verify | preset;
    constexpr Whole places      { 1, 1000 };
    constexpr Whole threads     { 1, 1024 };
    constexpr Signs shapes      { GrooveTarget::shapeSigns, 16 };

    /** The genre's average is called by its first word. */
    std::vector<std::string_view> durationNames()
    {
        auto names = namesUpTo (songDurations.size(), [] (auto i) { return songDurations[i].name; });
        names[0]   = "genre";
        return names;
    }

    std::vector<Option> musicOptions()
    {
        const NameOrNumber genres     { { namesOf<Genre> (genreCount) } };
        const NameOrNumber sections   { { namesOf<SectionType> (sectionTypeCount) } };
        const NameOrNumber structures { { namesUpTo (songStructureCount, SongBuilder::structureName) } };
        const Name durations          { durationNames() };
        const Names lanes             { { namesOf<DrumLane> (laneCount) } };

        return
        {
            { show | verify, "FILE", "",               "The file to read",                      "",               InputFile(), {}, {}, true },
            { verify | preset, "CODE", "",              "The take's code",                       "",               Code(), {}, {}, true },
            { music,   "--code",      "CODE",           "Start from this take; other options replace its values", "none", Code() },
            { find,    "--like",      "FILE",           "What to come near: a MIDI file, or a pattern's JSON", "none", InputFile() },
            { find,    "--kick",      "SHAPE",          "Shape of the kick, a sign for each sixteenth: x for a stroke, . for none, - for either, o for a soft one, # for an accent", "any", shapes },
            { find,    "--snare",     "SHAPE",          "Shape of the snare",                    "any",            shapes },
            { find,    "--hats",      "SHAPE",          "Shape of the hats",                     "any",            shapes },
            { find,    "--perc",      "SHAPE",          "Shape of the percussion",               "any",            shapes },
            { anyOne | show, "--genre", "NAME|N",         "Style",                                 "Boom Bap",       genres },
            { find,    "--genre",     "NAME|N|all",     "Style",                                 "Boom Bap",       NameNumberOrAll { genres } },
            { pattern | find | show, "--section",   "NAME|N",         "What it is for",                        "Verse",          sections },
            { pattern, "--bars",      "N",              "Length in bars",                        "2",              patternBars },
            { find,    "--bars",      "N",              "Length in bars",                        "2; the example's, up to 8", patternBars },
            { song | show, "--structure", "NAME|N",         "Its form",                              "Classic",        structures },
            { song,    "--duration",  "TIME",           "Length, or the genre's average",        "genre",          durations, {}, "--bars" },
            { show,    "--duration",  "TIME",           "Length, or the genre's average",        "genre",          durations },
            { song,    "--bars",      "N",              "Length in bars",                        "the duration's", songBars },
            { anyOne,  "--take",      "N",              "The take, as the plug-in counts them",  "1",              any32Bits },
            { music,   "--salt",      "N",              "The number that a take is turned into", "the take's",     any32Bits, {}, "--take" },
            { pattern, "--seed",      "N",              "Seed argument, mixed with the salt",                  "0",              any32Bits },
            { pattern, "--mutate",    "N",              "Mutate it once with this seed",         "none",           any32Bits },
            { pattern, "--lock",      "LANE[,LANE...]", "Lanes that the mutation keeps",         "none",           lanes, "--mutate" },
            { music | show, "--tempo", "BPM",            "Beats per minute",                      "the genre's",    tempos },
            { find,    "--takes",     "FIRST-LAST",     "The takes to look through",             "1-1000000",      Range() },
            { show,    "--takes",     "FIRST-LAST",     "The takes that a MIDI file may be",     "0-10000",        Range() },
            { find,    "--vary",      "",               "Try a grid of density, syncopation and variation as well", "off", Switch() },
            { find,    "--top",       "N",              "How many to show",                      "10",             places },
            { find,    "--jobs",      "N",              "Threads",                               "all cores",      threads },
            { music,   "--only",      "LANE[,LANE...]", "Lanes that are played and written",     "all",            lanes }
        };
    }

    std::vector<Option> outputOptions()
    {
        const Name kits   { { kitNames.begin(), kitNames.end() } };
        const Name shells { { "bash", "zsh", "fish" } };

        return
        {
            { music | find, "--json", "FILE|-", "Write the notes as JSON; - is the standard output",           "none",     File() },
            { find,   "--save",   "DIR",    "Write each groove as a MIDI file into this folder",               "none",     Folder() },
            { music,  "--midi",   "FILE|-", "Write a Standard MIDI File",                                      "none",     File() },
            { music,  "--map",    "NOTES",  "Other notes for those in the MIDI file: 36=35,38=40",             "none",     NoteMap(), "--midi" },
            { song,   "--markers", "",      "Write the sections' names into the MIDI file",                    "off",      Switch(), "--midi" },
            { preset, "--vstpreset", "FILE|-", "Write a VST3 preset",                                          "none",     File() },
            { preset, "--lv2",    "DIR",    "Make an LV2 bundle with the preset",                              "none",     Folder() },
            { preset, "--state",  "FILE|-", "Write a state, as the standalone app loads it",                   "none",     File() },
            { preset, "--name",   "NAME",   "What hosts call it",                                              "its style and take", Text() },
            { music,  "--wav",    "FILE|-", "Play it once and write the sound; a name ending with .flac or .ogg chooses that format", "none",     File() },
            { music,  "--kit",    "NAME",   "Sound of --wav",                                                  "Studio",   kits, "--wav" },
            { window, "--png",    "FILE|-", "Where to write the picture",                                      "required", File(), {}, {}, true },
            { window, "--width",  "W",      "Width in pixels",                                                 "1120",     pixels },
            { window, "--height", "H",      "Height in pixels",                                                "840",      pixels },
            { window, "--scale",  "X",      "Scale of the picture",                                            "1",        Decimal { 0.5, 4.0 } },
            { tool,   "--completions", "SHELL", "Print a script with which a shell completes commands",        "none",     shells },
            { tool,   "--version", "",      "Print the version",                                               "",         NoValue() },
            { tool | all, "--help", "",  "Print this help",                                                 "",         NoValue() }
        };
    }
    // clang-format on

    std::vector<Option> settingOptions()
    {
        const auto defaults = GenerationSettings().values();
        std::vector<Option> options;

        for (std::size_t i = 0; i < allSettings.size(); ++i)
            options.push_back ({ music | find | show, settingOption (i), "X", allSettings[i].help, digitsOf (defaults[i]), Decimal { 0.0, 1.0 } });

        return options;
    }

    //==============================================================================
    constexpr char lowerCase (char c) noexcept
    {
        return c >= 'A' && c <= 'Z' ? static_cast<char> (c - 'A' + 'a') : c;
    }

    bool equalsIgnoringCase (std::string_view a, std::string_view b) noexcept
    {
        return std::ranges::equal (a, b, {}, lowerCase, lowerCase);
    }

    /** All of a text as a number; nothing where it is none. @param format  a base, or how a decimal may look */
    template <typename Number, typename Format>
    std::optional<double> parsed (std::string_view text, Format format)
    {
        Number value {};
        const auto [end, error] = std::from_chars (text.data(), text.data() + text.size(), value, format);
        return error == std::errc() && end == text.data() + text.size() ? std::optional (static_cast<double> (value)) : std::nullopt;
    }

    //==============================================================================
    /** A value that is no single number: it is read elsewhere, or not at all. */
    template <typename Kind>
    concept NotRead = std::is_empty_v<Kind>;

    constexpr std::string_view allOfThem = "all";

    /** Reads one value; nothing where it cannot be read. */
    struct Reader
    {
        std::string_view text;

        std::optional<double> operator() (const Whole& range) const
        {
            const bool isHex = text.starts_with ("0x") || text.starts_with ("0X");
            return inRange (range, isHex ? parsed<std::uint64_t> (text.substr (2), 16) : parsed<std::uint64_t> (text, 10));
        }

        std::optional<double> operator() (const Decimal& range) const { return inRange (range, parsed<double> (text, std::chars_format::general)); }

        std::optional<double> operator() (const Name& one) const
        {
            const auto found = std::ranges::find_if (one.names, [this] (auto name) { return equalsIgnoringCase (name, text); });
            return found != one.names.end() ? std::optional<double> (found - one.names.begin()) : std::nullopt;
        }

        std::optional<double> operator() (const NameOrNumber& one) const
        {
            const auto number = (*this) (Whole { 0, static_cast<std::uint32_t> (one.names.size() - 1) });
            return number ? number : (*this) (static_cast<const Name&> (one));
        }

        std::optional<double> operator() (const NameNumberOrAll& one) const
        {
            return equalsIgnoringCase (text, allOfThem) ? static_cast<double> (one.names.size()) : (*this) (static_cast<const NameOrNumber&> (one));
        }

        std::optional<double> operator() (const Signs& kind) const
        {
            const bool areAllSigns = text.find_first_not_of (kind.signs) == text.npos;
            return areAllSigns && ! text.empty() && text.size() % kind.group == 0 ? std::optional (0.0) : std::nullopt;
        }

        std::optional<double> operator() (const NotRead auto&) const { return 0.0; }

    private:
        static std::optional<double> inRange (const auto& range, std::optional<double> value)
        {
            const bool isInside = value && *value >= static_cast<double> (range.least) && *value <= static_cast<double> (range.most);
            return isInside ? value : std::nullopt;
        }
    };

    struct Describer
    {
        std::string operator() (const Whole& range) const { return digitsOf (range.least) + " to " + digitsOf (range.most); }
        std::string operator() (const Decimal& range) const { return digitsOf (range.least) + " to " + digitsOf (range.most); }
        std::string operator() (const Name& one) const { return listed (one.names); }
        std::string operator() (const NotRead auto&) const { return {}; }

        std::string operator() (const NameOrNumber& one) const
        {
            return listed (one.names) + ", or their numbers from 0 to " + digitsOf (one.names.size() - 1);
        }

        std::string operator() (const NameNumberOrAll& one) const
        {
            return (*this) (static_cast<const NameOrNumber&> (one)) + ", or " + std::string (allOfThem);
        }

        std::string operator() (const Signs& kind) const
        {
            std::string signs;
            for (const char sign : kind.signs)
                signs.append (1, sign).append (" ");
            return signs + "in whole bars of " + digitsOf (kind.group);
        }
    };
} // namespace

//==============================================================================
std::span<const CommandRow> commandRows()
{
    return rows;
}

std::vector<Option> optionsOf (Command command)
{
    std::vector<Option> options;

    for (const auto& group : { musicOptions(), settingOptions(), outputOptions() })
        std::ranges::copy_if (group, std::back_inserter (options), [command] (const auto& option) { return (option.commands & command) != 0; });

    return options;
}

std::string settingOption (std::size_t index)
{
    std::string option = std::string ("--") + allSettings[index].id;
    std::ranges::replace (option, '_', '-');
    return option;
}

std::span<const std::string_view> namesIn (const Values& values)
{
    const auto* names = std::visit (
        [] (const auto& kind) -> const Name*
        {
            if constexpr (std::is_base_of_v<Name, std::decay_t<decltype (kind)>>)
                return &kind;
            else
                return nullptr;
        },
        values);
    return names != nullptr ? std::span (names->names) : std::span<const std::string_view>();
}

std::string described (const Values& values)
{
    return std::visit (Describer(), values);
}

double valueOf (const Option& option, std::string_view text)
{
    const bool isNumber = std::holds_alternative<Whole> (option.values) || std::holds_alternative<Decimal> (option.values);
    const auto digits   = text.substr (isNumber && text.starts_with ('+') ? 1 : 0);

    if (const auto value = std::visit (Reader { digits }, option.values))
        return *value;

    const auto* kind = std::holds_alternative<Whole> (option.values)   ? "\" is not a whole number from "
                     : std::holds_alternative<Decimal> (option.values) ? "\" is not a number from "
                     : std::holds_alternative<Signs> (option.values)   ? "\" is not made of the signs "
                                                                       : "\" is none of ";
    throw BadArgument (option.name + ": \"" + std::string (text) + kind + described (option.values));
}

std::pair<std::uint32_t, std::uint32_t> rangeOf (const Option& option, std::string_view text)
{
    const auto dash = text.find ('-');
    const Option number { option.commands, option.name, {}, {}, {}, any32Bits };
    const auto numberIn = [&] (std::string_view part) { return static_cast<std::uint32_t> (valueOf (number, part)); };

    const auto first = numberIn (text.substr (0, dash));
    const auto last  = dash == text.npos ? first : numberIn (text.substr (dash + 1));

    if (last < first)
        throw BadArgument (option.name + ": \"" + std::string (text) + "\" holds no take: the first is above the last");

    return { first, last };
}

std::array<std::uint8_t, 128> noteMapOf (const Option& option, std::string_view text)
{
    std::array<std::uint8_t, 128> map {};
    std::iota (map.begin(), map.end(), std::uint8_t { 0 });

    const Option note { option.commands, option.name, {}, {}, {}, Whole { 0, 127 } };

    for (const auto pair : commaSeparated (text))
    {
        const auto sign = pair.find ('=');

        if (sign == pair.npos)
            throw BadArgument (option.name + ": \"" + std::string (pair) + "\" is not like 36=35");

        map[static_cast<std::size_t> (valueOf (note, pair.substr (0, sign)))] = static_cast<std::uint8_t> (valueOf (note, pair.substr (sign + 1)));
    }

    return map;
}

std::vector<std::string_view> commaSeparated (std::string_view text)
{
    std::vector<std::string_view> parts;

    for (std::size_t comma = 0; comma != text.npos;)
    {
        comma = text.find (',');
        parts.push_back (text.substr (0, comma));
        text.remove_prefix (comma == text.npos ? 0 : comma + 1);
    }

    return parts;
}

std::string listed (std::span<const std::string_view> names, std::string_view last)
{
    std::string text;

    for (std::size_t i = 0; i < names.size(); ++i)
        text.append (i == 0 ? "" : i + 1 == names.size() ? last : ", ").append (names[i]);

    return text;
}

} // namespace pulsewright::cli
