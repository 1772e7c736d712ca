// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Codes and the files that hosts know: presets and saved states.

#pragma once

#include "CommandLine.h"

#include <string>

namespace pulsewright::cli
{

/** Writes the presets that the command line asks for. @throws BadArgument, WriteFailure */
void writePresets (const CommandLine& line);

/** The code of the take that a preset or a saved state plays: a .vstpreset, an LV2 preset, the app's settings, or a bare
    state. Of a file with several presets all codes, one a line. Of a MIDI file that of the first take that plays it, empty when there is none.
    @throws BadArgument  when the file cannot be read, or is none of these
    @throws Interrupted  when Ctrl-C has ended the search through takes
*/
std::string codeInFile (const CommandLine& line);

} // namespace pulsewright::cli
