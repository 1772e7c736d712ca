// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Scripts for shells. Each offers the commands, the options of the command that was typed, names, and files.

#include "Options.h"

#include <algorithm>

namespace pulsewright::cli
{

namespace
{
    //==============================================================================
    template <typename... Parts>
    std::string joined (const Parts&... parts)
    {
        std::string text;
        (text.append (parts), ...);
        return text;
    }

    /** A text with a mark before each of certain characters. */
    std::string marked (std::string_view text, std::string_view characters, std::string_view mark)
    {
        std::string result;
        for (const char c : text)
            result.append (characters.find (c) != characters.npos ? mark : "").append (1, c);
        return result;
    }

    /** In single quotes, which all of these shells read alike. */
    std::string quoted (std::string_view text)
    {
        return joined ("'", marked (text, "'", "'\\'"), "'");
    }

    /** What a function makes of each name, with blanks between. */
    template <typename Function>
    std::string each (std::span<const std::string_view> names, Function&& function)
    {
        std::string text;
        for (const auto name : names)
            text.append (text.empty() ? "" : " ").append (function (name));
        return text;
    }

    bool isFile (const Option& option)
    {
        return std::holds_alternative<File> (option.values) || std::holds_alternative<InputFile> (option.values)
            || std::holds_alternative<Folder> (option.values);
    }

    /** Whether a file's name may stand behind the command, without an option. */
    bool takesFile (Command command)
    {
        return std::ranges::any_of (optionsOf (command), [] (const auto& option) { return option.hasPlace() && isFile (option); });
    }

    /** Those with dashes: what a shell offers by name. */
    std::vector<Option> namedOptionsOf (Command command)
    {
        auto options = optionsOf (command);
        std::erase_if (options, [] (const auto& option) { return option.hasPlace(); });
        return options;
    }

    //==============================================================================
    // A word may be typed in quotes, with backslashes or in another case. What is offered is escaped as bash does it
    // for files, also the colon, which would part a word.
    constexpr auto bashFunction = R"sh(
_pulsewright_cli()
{
    local current=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD-1]} command= kept= files= choices=() choice typed
    [[ $COMP_CWORD -lt 2 || ${COMP_WORDS[1]} == -* ]] || command=${COMP_WORDS[1]}
    [ "$option" != = ] || option=${COMP_WORDS[COMP_CWORD-2]}
    [ "$current" != = ] || current=
    typed=${current//\\/}
    typed=${typed#[\"\']}
    COMPREPLY=()

    _pulsewright_cli_choices "$command" "$option"
    case $option,$typed in --lock,*,*)
        kept=${typed%,*},
        typed=${typed##*,} ;;
    esac

    for choice in "${choices[@]}"; do
        [[ ${choice,,} == "${typed,,}"* ]] || continue
        if [[ $current != [\"\']* ]]; then
            printf -v choice %q "$choice"
            choice=${choice//:/\\:}
        fi
        COMPREPLY+=("$kept$choice")
    done

    if [ -n "$files" ]; then
        compopt -o filenames 2> /dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$typed")
    fi
}
complete -F _pulsewright_cli pulsewright-cli
)sh";

    /** A branch for each option that takes a value, and one for the words that are offered elsewhere. */
    std::string bashBranches (const CommandRow& row)
    {
        std::string branches;
        std::vector<std::string_view> words;

        if (row.command == tool)
            for (const auto& other : commandRows().subspan (1))
                words.push_back (other.name);

        const auto options = namedOptionsOf (row.command);

        for (const auto& option : options)
        {
            words.push_back (option.name);

            if (option.hasValue())
                branches += joined ("        ",
                                    row.name,
                                    ":",
                                    option.name,
                                    isFile (option) ? ") files=yes" : joined (") choices=(", each (namesIn (option.values), quoted), ")"),
                                    " ;;\n");
        }

        const auto* file = takesFile (row.command) ? "; [[ $typed == -* ]] || files=yes" : "";
        return joined (branches, "        ", row.name, ":*) choices=(", each (words, quoted), ")", file, " ;;\n");
    }

    std::string forBash()
    {
        std::string branches;
        for (const auto& row : commandRows())
            branches += bashBranches (row);

        return joined ("# Completes pulsewright-cli in bash.\n\n_pulsewright_cli_choices()\n{\n    case $1:$2 in\n",
                       branches,
                       "    esac\n}\n",
                       bashFunction);
    }

    //==============================================================================
    std::string zshAction (const Option& option)
    {
        const auto names = each (namesIn (option.values), [] (auto name) { return marked (name, " &/:", "\\"); });

        return isFile (option)                               ? "_files"
             : std::holds_alternative<Names> (option.values) ? joined ("_sequence compadd - ", names)
             : names.empty()                                 ? " "
                                                             : joined ("(", names, ")");
    }

    std::string zshArguments (Command command)
    {
        std::string arguments = takesFile (command) ? " \\\n        ':file:_files'" : "";

        for (const auto& option : namedOptionsOf (command))
        {
            const auto help  = joined ("[", marked (option.help, "[]:", "\\"), "]");
            const auto value = joined (":", option.type, ":", zshAction (option));
            arguments += joined (" \\\n        ", quoted (joined (option.name, option.hasValue() ? "=" : "", help, option.hasValue() ? value : "")));
        }

        return arguments;
    }

    std::string forZsh()
    {
        std::string commands, branches;

        for (const auto& row : commandRows().subspan (1))
        {
            commands += joined (" ", row.name, "\\:\"", row.help, "\"");
            branches += joined ("    ", row.name, ")\n        _arguments", zshArguments (row.command), " ;;\n");
        }

        return joined ("#compdef pulsewright-cli\n# Completes pulsewright-cli in zsh.\n\nlocal curcontext=$curcontext state line\n\n_arguments -C",
                       zshArguments (tool),
                       " \\\n        ",
                       quoted (joined ("1:command:((", commands, "))")),
                       " \\\n        '*::option:->option'\n\n[[ $state = option ]] || return\n\ncase $line[1] in\n",
                       branches,
                       "esac\n");
    }

    //==============================================================================
    std::string fishLine (const CommandRow& row, const Option& option)
    {
        const auto names = each (namesIn (option.values), quoted);
        const auto when  = row.command == tool ? std::string ("__fish_use_subcommand") : joined ("__fish_seen_subcommand_from ", row.name);
        const auto value = isFile (option) ? " -r -F" : ! names.empty() ? joined (" -x -a ", quoted (names)) : option.hasValue() ? " -x" : "";

        return joined ("complete -c pulsewright-cli -n ", quoted (when), " -l ", option.name.substr (2), " -d ", quoted (option.help), value, "\n");
    }

    std::string forFish()
    {
        std::string script = "# Completes pulsewright-cli in fish.\n\ncomplete -c pulsewright-cli -f\n";

        for (const auto& row : commandRows())
        {
            if (row.command != tool)
                script += joined ("complete -c pulsewright-cli -n __fish_use_subcommand -a ", row.name, " -d ", quoted (row.help), "\n");

            if (takesFile (row.command))
                script += joined ("complete -c pulsewright-cli -n ", quoted (joined ("__fish_seen_subcommand_from ", row.name)), " -F\n");

            for (const auto& option : namedOptionsOf (row.command))
                script += fishLine (row, option);
        }

        return script;
    }
} // namespace

std::string completionsFor (std::string_view shell)
{
    return shell == "bash" ? forBash() : shell == "zsh" ? forZsh() : forFish();
}

} // namespace pulsewright::cli
