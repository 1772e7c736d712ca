// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The command-line tool as other programs call it: started by a shell, with its exit status and what it prints.

#pragma once

#include "generation/SongArrangement.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace pulsewright
{

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE (DrumHit, start, length, note, velocity, lane)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE (DrumPattern, name, sectionType, bars, seed, hits)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE (SongSection, name, startBar, pattern)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE (SongArrangement, name, totalBars, seed, sections)

namespace fs = std::filesystem;

struct Outcome
{
    int exitCode = -1;
    std::string output; // of both streams
};

inline std::string quoted (const std::string& text)
{
    std::string result = "'";
    for (const char c : text)
        result.append (c == '\'' ? std::string ("'\\''") : std::string (1, c));
    return result.append ("'");
}

inline Outcome shell (const std::string& command)
{
    Outcome outcome;
    auto* pipe = popen (("{ " + command + "; } 2>&1").c_str(), "r");
    std::array<char, 4096> part {};

    for (std::size_t n; (n = fread (part.data(), 1, part.size(), pipe)) > 0;)
        outcome.output.append (part.data(), n);

    outcome.exitCode = WEXITSTATUS (pclose (pipe));
    return outcome;
}

inline Outcome cli (const std::string& arguments)
{
    return shell (quoted (PULSEWRIGHT_TEST_CLI) + " " + arguments);
}

/** Runs a script in a folder; $T is the tool. */
inline Outcome inFolder (const fs::path& folder, const std::string& script)
{
    return shell ("cd " + quoted (folder.string()) + "; T=" + quoted (PULSEWRIGHT_TEST_CLI) + "; " + script);
}

template <typename Result = nlohmann::json>
Result jsonFrom (const std::string& arguments)
{
    const auto outcome = cli (arguments + " --json -");
    EXPECT_EQ (outcome.exitCode, 0) << arguments << ": " << outcome.output;
    return nlohmann::json::parse (outcome.output, nullptr, false);
}

inline fs::path scratch()
{
    auto folder = fs::path (testing::TempDir()) / ("pulsewright-cli-" + std::to_string (getpid()));
    fs::create_directories (folder);
    return folder;
}

} // namespace pulsewright
