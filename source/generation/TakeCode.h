// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A take as a short text that people can send; docs/take-code.md describes it for other programs.

#pragma once

#include "Take.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace pulsewright
{

/** How many of allSettings a code carries: those of its first version. */
inline constexpr std::size_t numCodedSettings = 12;

/** A text that is no take's code; the message says what is wrong with it, and where. */
struct BadTakeCode : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/** The code: "PW1-" and 46 letters and digits, in eight groups of five and one of six. Pure; any thread.
    @returns nothing for a take that has none: another seed than a counter gives, or a value outside its range
*/
std::optional<std::string> codeOf (const Take& take);

/** The take of a code. Case, blanks, dashes and line breaks do not matter. Pure; any thread.
    @throws BadTakeCode  for what is no code, for a typing error and for a code of a later version
*/
Take takeOf (std::string_view code);

} // namespace pulsewright
