// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "TakeOptions.h"

#include "generation/GenreProfile.h"
#include "generation/TakeCode.h"

#include <type_traits>

namespace pulsewright::cli
{

namespace
{
    Take startOf (const CommandLine& line, Take::Kind kind)
    {
        if (! line.has ("--code"))
            return Take { .kind = kind };

        const auto take = takeOfCode (line, "--code");

        if (take.kind == kind)
            return take;

        return kind == Take::Kind::song ? songBeside (take) : sectionOf (take, 0, patternOf (take));
    }
} // namespace

Take takeOfCode (const CommandLine& line, const std::string& option)
{
    try
    {
        return takeOf (line.text (option));
    }
    catch (const BadTakeCode& error)
    {
        throw BadArgument (option + ": " + error.what());
    }
}

float settingFrom (const CommandLine& line, std::size_t index)
{
    return snapPercent (line.get<float> (settingOption (index)));
}

Take takeFrom (const CommandLine& line, Take::Kind kind)
{
    auto take = startOf (line, kind);

    /** What is given, and without a code the default. */
    const auto replace = [&line, hasCode = line.has ("--code")] (const char* option, auto& value)
    {
        if (line.has (option) || (! hasCode && line.knows (option)))
            value = line.get<std::remove_reference_t<decltype (value)>> (option);
    };

    replace ("--genre", take.settings.genre);

    for (std::size_t i = 0; i < allSettings.size(); ++i)
        if (line.has (settingOption (i)) || ! line.has ("--code"))
            take.settings.*allSettings[i].field = settingFrom (line, i);

    if (line.has ("--salt"))
        take.settings.seed = line.get ("--salt");
    else
    {
        replace ("--take", take.counter);
        take.settings.seed = saltOf (take.counter);
    }

    if (const auto counter = counterOf (take.settings.seed))
        take.counter = *counter;

    if (kind == Take::Kind::groove)
    {
        replace ("--section", take.section);
        replace ("--bars", take.bars);
        replace ("--seed", take.stream);
    }
    else
    {
        replace ("--structure", take.structure);
        replace ("--duration", take.duration);

        if (line.has ("--bars") || line.has ("--duration"))
            take.songBars = line.has ("--bars") ? line.get<std::int32_t> ("--bars") : 0;
    }

    if (line.has ("--tempo"))
        take.tempo = line.get<std::int32_t> ("--tempo");
    else if (! line.has ("--code"))
        take.tempo = profileOf (take.settings.genre).tempoBpm;

    replace ("--kit", take.kit);
    return take;
}

} // namespace pulsewright::cli
