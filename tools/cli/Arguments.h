// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Words and numbers of the command line, each with a plain word for what cannot be read.

#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace pulsewright::cli
{

/** A command line that cannot be understood; the text is one line that names the choices. */
struct BadArgument : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/** Where a name stands in a list, ASCII case ignored. @throws BadArgument naming the list */
std::uint32_t indexOfName (std::string_view option, std::string_view text, std::span<const std::string_view> names);

/** The same for options that also take a number, which may lie outside the list. */
std::uint32_t indexOfNameOrNumber (std::string_view option, std::string_view text, std::span<const std::string_view> names);

/** A decimal integer, saturated to 32 bits. @throws BadArgument */
std::int32_t integer (std::string_view option, std::string_view text);

/** A decimal or 0x integer modulo 2^32, with or without a sign. @throws BadArgument */
std::uint32_t integerModulo32 (std::string_view option, std::string_view text);

/** A finite decimal number, independent of the locale. @throws BadArgument */
double number (std::string_view option, std::string_view text);

/** The parts of a text between commas. */
std::vector<std::string_view> commaSeparated (std::string_view text);

} // namespace pulsewright::cli
