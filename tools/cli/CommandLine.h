// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A command line, taken apart and checked against the tables of Options.h.

#pragma once

#include "Options.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace pulsewright::cli
{

class CommandLine
{
public:
    /** @throws BadArgument  in one line that names the valid choices */
    CommandLine (int argc, const char* const* argv);

    /** The command that is to be done; `tool` when there is only answer() to print. */
    Command command() const noexcept { return chosen; }

    /** The help, the version or what else was asked for in place of a command. */
    const std::string& answer() const noexcept { return textToPrint; }

    /** Whether the command has an option. */
    bool knows (const std::string& option) const;

    /** Whether an option was given. */
    bool has (const std::string& option) const { return given.contains (option); }

    /** What was given, as it was typed; empty when nothing was. */
    std::string text (const std::string& option) const { return has (option) ? given.at (option) : std::string(); }

    /** What was given, or the default that the table names: a number, or the index of a name. */
    template <typename Value = std::uint32_t>
    Value get (const std::string& option) const
    {
        return static_cast<Value> (numberOf (option));
    }

    /** What a range stands for; its default where none is given. */
    std::pair<std::uint32_t, std::uint32_t> range (const std::string& option) const
    {
        return rangeOf (rowOf (option), has (option) ? text (option) : rowOf (option).byDefault);
    }

    /** What a map of notes stands for; the option has to be given. */
    std::array<std::uint8_t, 128> noteMap (const std::string& option) const { return noteMapOf (rowOf (option), text (option)); }

    /** The indices of several names. */
    std::vector<std::size_t> indices (const std::string& option) const;

private:
    const Option& rowOf (const std::string& option) const;
    double numberOf (const std::string& option) const;
    void parse (int argc, const char* const* argv);
    void check() const;

    Command chosen = tool;
    std::string textToPrint;
    std::vector<Option> options;
    std::map<std::string, std::string> given;
};

} // namespace pulsewright::cli
