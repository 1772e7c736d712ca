// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Options.h"

#include <algorithm>

namespace pulsewright::cli
{

namespace
{
    constexpr std::size_t columns = 80, helpColumn = 30;

    /** Breaks a text at its blanks; lines after the first begin at a column. */
    std::string wrapped (std::string_view text, std::size_t column)
    {
        std::string result;

        while (text.size() > columns - column)
        {
            const auto lineEnd = text.rfind (' ', columns - column);
            result.append (text.substr (0, lineEnd)).append ("\n").append (column, ' ');
            text.remove_prefix (lineEnd + 1);
        }

        return result.append (text).append ("\n");
    }

    /** A name on the left, and what it is on the right; below it when the name is long. */
    std::string entry (const std::string& name, const std::string& text)
    {
        const bool isLong = name.size() + 4 > helpColumn;
        return "  " + name + (isLong ? "\n" + std::string (helpColumn, ' ') : std::string (helpColumn - 2 - name.size(), ' '))
             + wrapped (text, helpColumn);
    }

    /** What has its place behind a command: " FILE CODE". */
    std::string places (Command command)
    {
        std::string text;
        for (const auto& option : optionsOf (command))
            text.append (option.hasPlace() ? " " : "").append (option.hasPlace() ? option.name : "");
        return text;
    }

    std::string entry (const Option& option)
    {
        auto text = option.help;

        if (const auto values = described (option.values); ! values.empty())
            text += (namesIn (option.values).empty() ? ", " : ": ") + values;

        if (! option.byDefault.empty())
            text += " [" + option.byDefault + "]";

        return entry (option.name + (option.type.empty() ? "" : " ") + std::string (option.type), text);
    }
} // namespace

std::string helpOf (Command command)
{
    const auto rows = commandRows();
    const auto row  = *std::ranges::find (rows, command, &CommandRow::command);

    auto text = wrapped (row.help, 0) + "\nUsage: pulsewright-cli " + std::string (command == tool ? "COMMAND" : row.name) + places (command)
              + " [OPTION]...\n";

    if (command == tool)
    {
        text += "\nCommands:\n";
        for (const auto& other : rows.subspan (1))
            text += entry (std::string (other.name), std::string (other.help));
    }

    text += "\nOptions [default]:\n";
    for (const auto& option : optionsOf (command))
        text += entry (option);

    if (command == tool)
        text += "\nWithout an output option a pattern is printed as a grid and a song as a table.\n"
                "Exit status: 0; 1 when something could not be written, verify finds a difference\n"
                "or show finds no take; 2 for a bad command line; 130 after Ctrl-C.\n";

    return text;
}

} // namespace pulsewright::cli
