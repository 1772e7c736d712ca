// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The commands and their options. The parser, the help and the shells' completions are made of these tables.

#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
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
    find    = 16,
    show    = 32,
    verify  = 64,
    preset  = 128
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

/** What is written, and what is read. */
struct File
{};
struct InputFile
{};
struct Folder
{};

/** A take's code. */
struct Code
{};

/** Notes and what they become: 36=35,38=40. */
struct NoteMap
{};

/** Any text. */
struct Text
{};

/** Takes from one to another: 1-1000. */
struct Range
{};

/** A row of these signs, in whole groups. */
struct Signs
{
    std::string_view signs;
    std::size_t group;
};

/** Given or not. */
struct Switch
{};

/** Asks for an answer in place of a command. */
struct NoValue
{};

using Values = std::
    variant<NoValue, Switch, File, InputFile, Folder, Code, NoteMap, Text, Range, Name, NameOrNumber, NameNumberOrAll, Names, Whole, Decimal, Signs>;

struct Option
{
    unsigned commands; ///< those that have it
    std::string name;  ///< with its dashes; without them it has its place behind the command
    std::string_view type;
    std::string help;
    std::string byDefault; ///< what stands in for it: a value, or a word about it
    Values values;
    std::string needs {}, excludes {}; ///< another option
    bool isRequired = false;

    bool hasPlace() const noexcept { return ! name.starts_with ('-'); }
    bool hasValue() const noexcept { return ! std::holds_alternative<NoValue> (values) && ! std::holds_alternative<Switch> (values); }
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

/** The first and the last number of a range. @throws BadArgument */
std::pair<std::uint32_t, std::uint32_t> rangeOf (const Option& option, std::string_view text);

/** What each of the 128 notes becomes. @throws BadArgument */
std::array<std::uint8_t, 128> noteMapOf (const Option& option, std::string_view text);

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
