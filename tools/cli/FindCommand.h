// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// `find`: the takes nearest to an example or a shape.

#pragma once

#include "CommandLine.h"

namespace pulsewright::cli
{

/** Searches, and prints or writes what is found.
    @throws BadArgument, WriteFailure
    @throws Interrupted  when Ctrl-C has ended the search, after the best so far were given
*/
void findGrooves (const CommandLine& line, bool inColour);

} // namespace pulsewright::cli
