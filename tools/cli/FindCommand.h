// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// `find`: the takes nearest to an example or a shape.

#pragma once

#include "CommandLine.h"

namespace pulsewright::cli
{

/** Searches, and prints or writes what is found.
    @returns the exit status: 0, or 130 when Ctrl-C has ended the search, with the best so far given
    @throws BadArgument, WriteFailure
*/
int findGrooves (const CommandLine& line, bool inColour);

} // namespace pulsewright::cli
