// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "CommandLine.h"

#include "OutputFile.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace pulsewright::cli
{

namespace
{
    std::string commandsListed()
    {
        std::vector<std::string_view> names;
        for (const auto& row : commandRows().subspan (1))
            names.push_back (row.name);
        return "the commands are " + listed (names, " and ");
    }

    std::string hint()
    {
        return " (" + commandsListed() + "; --help after one lists its options)";
    }

    /** Says what is wrong with words that no option takes. */
    BadArgument notExpected (const std::vector<std::string>& words, bool hasCommand)
    {
        if (! hasCommand && ! words.front().starts_with ('-'))
            return BadArgument ("\"" + words.front() + "\" is no command; " + commandsListed());

        std::string message = words.size() == 1 ? "Not expected:" : "None of these is expected:";
        for (const auto& word : words)
            message += " " + word;
        return BadArgument (message + hint());
    }

    void addOptions (CLI::App& app, Command command, std::map<std::string, std::string>& given)
    {
        const auto options = optionsOf (command);

        for (const auto& option : options)
            if (std::holds_alternative<Switch> (option.values))
                app.add_flag_callback (option.name, [&given, name = option.name] { given[name] = ""; });
            else if (option.hasValue())
                app.add_option (option.name,
                                [&given, name = option.name] (const CLI::results_t& words)
                                {
                                    given[name] = words.front();
                                    return true;
                                })
                    ->type_name (std::string (option.type))
                    ->required (option.isRequired);

        for (const auto& option : options)
        {
            if (! option.needs.empty())
                app.get_option (option.name)->needs (app.get_option (option.needs));

            if (! option.excludes.empty())
                app.get_option (option.name)->excludes (app.get_option (option.excludes));
        }
    }
} // namespace

CommandLine::CommandLine (int argc, const char* const* argv)
{
    parse (argc, argv);

    if (chosen == tool && has ("--completions"))
        textToPrint = completionsFor (namesIn (rowOf ("--completions").values)[get ("--completions")]);
}

void CommandLine::parse (int argc, const char* const* argv)
{
    CLI::App app;
    app.allow_extras();
    app.require_subcommand (0, 1);
    app.set_version_flag ("--version", "");

    addOptions (app, tool, given);

    for (const auto& row : commandRows().subspan (1))
    {
        auto* added = app.add_subcommand (std::string (row.name));
        addOptions (*added, row.command, given);
        added->excludes (app.get_option ("--completions")); // it would have no effect
    }

    const auto choose = [this, &app]
    {
        for (const auto& row : commandRows().subspan (1))
            if (app.got_subcommand (std::string (row.name)))
                chosen = row.command;

        options = optionsOf (chosen);
    };

    try
    {
        app.parse (argc, argv);
        choose();
    }
    catch (const CLI::CallForHelp&)
    {
        choose();
        textToPrint = helpOf (chosen);
        chosen      = tool;
        return;
    }
    catch (const CLI::CallForVersion&)
    {
        textToPrint = "Pulsewright " PULSEWRIGHT_VERSION "\n";
        return;
    }
    catch (const CLI::ParseError& error)
    {
        throw BadArgument (error.what() + hint());
    }

    if (const auto words = app.remaining (true); ! words.empty())
        throw notExpected (words, chosen != tool);

    check();
}

void CommandLine::check() const
{
    if (chosen == tool && given.empty())
        throw BadArgument ("No command is given; " + commandsListed());

    std::vector<std::string> files;

    for (const auto& [name, value] : given)
        if (const auto& option = rowOf (name); std::holds_alternative<Names> (option.values))
            static_cast<void> (indices (name));
        else if (std::holds_alternative<NoteMap> (option.values))
            static_cast<void> (noteMapOf (option, value));
        else if (std::holds_alternative<Range> (option.values))
            static_cast<void> (rangeOf (option, value));
        else if (std::holds_alternative<File> (option.values))
            files.push_back (name);
        else
            static_cast<void> (valueOf (option, value));

    for (auto a = files.begin(); a != files.end(); ++a)
        for (auto b = files.begin(); b != a; ++b)
            if (areSameOutput (given.at (*a), given.at (*b)))
                throw BadArgument (*b + " and " + *a + " write to the same place, \"" + given.at (*a) + "\"; each needs one of its own");
}

bool CommandLine::knows (const std::string& option) const
{
    return std::ranges::find (options, option, &Option::name) != options.end();
}

const Option& CommandLine::rowOf (const std::string& option) const
{
    const auto found = std::ranges::find (options, option, &Option::name);

    if (found == options.end())
        throw std::logic_error (option + " is no option of this command");

    return *found;
}

double CommandLine::numberOf (const std::string& option) const
{
    const auto& found = rowOf (option);
    return valueOf (found, has (option) ? given.at (option) : found.byDefault);
}

std::vector<std::size_t> CommandLine::indices (const std::string& option) const
{
    std::vector<std::size_t> result;

    if (has (option))
        for (const auto name : commaSeparated (given.at (option)))
            result.push_back (static_cast<std::size_t> (valueOf (rowOf (option), name)));

    return result;
}

} // namespace pulsewright::cli
