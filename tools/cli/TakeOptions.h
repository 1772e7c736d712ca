// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What a command line says of a take.

#pragma once

#include "CommandLine.h"

#include "generation/Take.h"

namespace pulsewright::cli
{

/** The take of --code or of the defaults, with what the options replace of it.
    @param kind  groove: of a song's code the first section; song: of a groove's code the song with the same settings and counter
    @throws BadArgument
*/
Take takeFrom (const CommandLine& line, Take::Kind kind);

/** The take of a code that was typed. @throws BadArgument */
Take takeOfCode (const CommandLine& line, const std::string& option);

/** A setting of the twelve as it was typed, in the steps of the plug-in's parameters. */
float settingFrom (const CommandLine& line, std::size_t index);

} // namespace pulsewright::cli
