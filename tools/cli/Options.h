// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The commands and their options. The parser, the help and the shells' completions are made of these tables.

#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace pulsewright::cli
{

/** A command line that cannot be understood; the text names the choices. */
struct BadArgument : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

//==============================================================================
/** The commands, as a set of bits; `tool` is the program without one. */
enum Command : unsigned
{
    tool    = 1,
    pattern = 2,
    song    = 4,
    window  = 8,
    find    = 16
};

struct CommandRow
{
    Command command;
    std::string_view name, help;
};

/** All of them, `tool` first. */
std::span<const CommandRow> commandRows();

//==============================================================================
// What the value of an option may be.

/** One of these, ASCII case ignored. */
struct Name
{
    std::vector<std::string_view> names;
};

/** The same, or its number from 0. */
struct NameOrNumber : Name
{};

/** The same, or "all", which counts as one past the last. */
struct NameNumberOrAll : NameOrNumber
{};

/** Any of these, with commas between them. */
struct Names : Name
{};

/** A whole number, decimal or 0x. */
struct Whole
{
    std::uint32_t least, most;
};

/** A decimal number, independent of the locale. */
struct Decimal
{
    double least, most;
};

/** Two whole numbers with '-' between them, the first not above the second. */
struct Range : Whole
{};

/** A row of these signs, in whole groups. */
struct Signs
{
    std::string_view signs;
    std::size_t group;
};

/** Something to write. */
struct File
{};

/** Something to read. */
struct InputFile
{};

struct Folder
{};

/** Takes no value, and is not an action of its own. */
struct Flag
{};

/** Takes no value: the program answers and ends. */
struct NoValue
{};

using Values = std::variant<NoValue, Flag, File, InputFile, Folder, Name, NameOrNumber, NameNumberOrAll, Names, Whole, Range, Decimal, Signs>;

struct Option
{
    unsigned commands; ///< those that have it
    std::string name;  ///< with its dashes
    std::string_view type;
    std::string help;
    std::string byDefault; ///< what stands in for it: a value, or a word about it
    Values values;
    std::string needs {}, excludes {}; ///< another option
    bool isRequired = false;
};

/** All options of one command, in the order of the help. */
std::vector<Option> optionsOf (Command command);

/** The option of one of allSettings. */
std::string settingOption (std::size_t index);

/** The names that a value may have; none where it is something else. */
std::span<const std::string_view> namesIn (const Values& values);

/** What a value may be, for the help: "1 to 192", "Kick, Snare, Hats, Perc"; empty for files. */
std::string described (const Values& values);

/** The number that a text means to an option: the index of a name, or the number itself.
    @throws BadArgument  naming the option and its choices or its range
*/
double valueOf (const Option& option, std::string_view text);

/** What a range means to an option. @throws BadArgument  as valueOf() does */
struct Limits
{
    std::uint32_t first, last;
};

Limits limitsOf (const Option& option, std::string_view text);

/** The parts of a text between commas. */
std::vector<std::string_view> commaSeparated (std::string_view text);

/** "a, b and c" with `last` as " and ". */
std::string listed (std::span<const std::string_view> names, std::string_view last = ", ");

//==============================================================================
/** The help of one command, within 80 columns. */
std::string helpOf (Command command);

/** A script that completes commands, options and names. @param shell  bash, zsh or fish */
std::string completionsFor (std::string_view shell);

} // namespace pulsewright::cli
