// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Another program of ours, run by the tool.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace pulsewright::cli
{

/** Runs a program that lies beside the tool, or in lib/pulsewright where the tool is installed in bin.
    @returns what it writes to its standard output
    @throws WriteFailure  when it is not there, or ends with an error
*/
std::string outputOfProgram (std::string_view name, const std::vector<std::string>& arguments);

} // namespace pulsewright::cli
