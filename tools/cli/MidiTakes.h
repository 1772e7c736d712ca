// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// MIDI files and the takes that they hold. A file has no settings, so it is compared with what takes play.

#pragma once

#include "CommandLine.h"

#include <string>
#include <string_view>

namespace pulsewright::cli
{

/** Compares a file with the take of a code, event for event, and prints the outcome.
    @returns 0 for the same notes, 1 for others
    @throws BadArgument  when the file or the code cannot be read
*/
int verifyFile (const CommandLine& line);

/** The code of the first take, with the settings that the options give, whose groove or song is this file. Empty when there
    is none.
    @param bytes  of the file
    @throws BadArgument  when it cannot be read
    @throws Interrupted  when Ctrl-C has ended the search
*/
std::string codeOfMidiFile (const CommandLine& line, std::string_view bytes);

} // namespace pulsewright::cli
