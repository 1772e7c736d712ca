// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the command-line tool makes, and what it says to a bad command line.

#include "CliProgram.h"

#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"
#include "processor/PercentRange.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace pulsewright
{

TEST (Cli, OptionsReachTheMusic)
{
    GenerationSettings settings;
    settings.genre = Genre::house;
    settings.seed  = 7;
    std::array values { 0.91f, 0.82f, 0.73f, 0.64f, 0.55f, 0.46f, 0.37f, 0.28f, 0.99f, 0.98f, 0.97f, 0.96f };
    std::ranges::transform (values, values.begin(), snapPercent);
    settings.setValues (values);
    const std::string options =
        " --genre HOUSE --salt 7 --density 0.91 --energy .82 --syncopation 73e-2 --swing 0.64 --variation 0.55 --experimental 0.46 --timing 0.37"
        " --velocity 0.28 --kick-probability 0.99 --snare-probability 0.98 --hats-probability 0.97 --percussion-probability 0.96";

    const auto chorus  = GrooveGenerator::generate (settings, SectionType::highChorus, 3, 9);
    const auto mutated = GrooveGenerator::mutate (settings, chorus, { true, false, true, false }, 5);
    EXPECT_EQ (jsonFrom<DrumPattern> ("pattern --section 'high chorus' --bars 3 --seed 9" + options), chorus);
    EXPECT_EQ (jsonFrom<DrumPattern> ("pattern --section 6 --bars 3 --seed 9 --mutate 5 --lock kick,HATS" + options), mutated);
    EXPECT_EQ (jsonFrom<SongArrangement> ("song --structure 2 --bars 64" + options), SongBuilder::buildSong (settings, 64, 2));
    EXPECT_EQ (jsonFrom ("pattern --take 7").at ("seed"), jsonFrom ("pattern --salt " + std::to_string (saltOf (7))).at ("seed"));
}

TEST (Cli, NumbersOutOfRangeFollowTheMusicsOwnRules)
{
    EXPECT_EQ (jsonFrom ("pattern --bars 500").at ("bars"), 192);
    EXPECT_EQ (jsonFrom ("pattern --bars -3").at ("bars"), 1);
    EXPECT_EQ (jsonFrom ("pattern --genre 99").at ("name"), "Unknown Verse");
    EXPECT_EQ (jsonFrom ("pattern --section 9").at ("name"), "Boom Bap Section");
    EXPECT_EQ (jsonFrom ("pattern --density 1.7 --energy -2"), jsonFrom ("pattern --density 1e999 --energy 1e-999"));
    EXPECT_EQ (jsonFrom ("pattern --take 4294967298"), jsonFrom ("pattern --take 2"));
    EXPECT_EQ (jsonFrom ("pattern --salt 0xE60B2026"), jsonFrom ("pattern --take 0"));
    EXPECT_EQ (jsonFrom ("song --bars 0").at ("totalBars"), 80);
    EXPECT_EQ (jsonFrom ("song --duration 5:00 --tempo 174").at ("totalBars"), 216);
    EXPECT_TRUE (jsonFrom ("song --structure 7").at ("sections").empty());
}

TEST (Cli, BadWordsEndWithTheChoices)
{
    // clang-format off
    const std::vector<std::pair<std::string, std::string>> badLines {
        { "",                              "pattern, song and window" },
        { "tune",                          "pattern, song and window" },
        { "pattern --genre polka",         "Drum & Bass" },
        { "pattern --genre ''",            "Drum & Bass" },
        { "pattern --genre nan",           "Drum & Bass" },
        { "pattern --section middle",      "Pre-Chorus" },
        { "pattern --lock kick,cowbell",   "Snare" },
        { "pattern --lock kick,",          "Snare" },
        { "pattern --kit tin",             "Dusty" },
        { "pattern --bars two",            "whole number" },
        { "pattern --bars 2.5",            "whole number" },
        { "pattern --seed 0x",             "whole number" },
        { "pattern --take 1 --salt 2",     "excludes" },
        { "pattern --mutate inf",          "whole number" },
        { "pattern --density nan",         "number" },
        { "pattern --hats-probability 1x", "number" },
        { "pattern --tempo inf",           "number" },
        { "pattern --tempo +-90",          "number" },
        { "pattern --colour red",          "--help" },
        { "pattern --bars",                "--bars" },
        { "song --structure rondo",        "Verse / Chorus" },
        { "song --duration 3:15",          "3:30" },
        { "window",                        "--png" }
    };
    // clang-format on

    for (const auto& [line, hint] : badLines)
    {
        const auto outcome = cli (line);
        EXPECT_EQ (outcome.exitCode, 2) << line;
        EXPECT_NE (outcome.output.find (hint), outcome.output.npos) << line << ": " << outcome.output;
        EXPECT_EQ (std::count (outcome.output.begin(), outcome.output.end(), '\n'), 1) << outcome.output;
    }
}

TEST (Cli, TheManualPageHasEveryOptionOfTheHelp)
{
    const auto options = shell ("for command in '' pattern song window; do " + quoted (PULSEWRIGHT_TEST_CLI)
                                + " $command --help; done | grep -oE -e '--[a-z]+[a-z-]*' | sort -u");
    std::istringstream lines (options.output);
    int count = 0;

    for (std::string option; std::getline (lines, option); ++count) // roff has a backslash before every minus
        EXPECT_EQ (shell ("tr -d '\\\\' < " + quoted (PULSEWRIGHT_MANUAL_PAGE) + " | grep -qwF -e " + option).exitCode, 0) << option;

    EXPECT_GT (count, 25);
    EXPECT_EQ (cli ("--version").output, "Pulsewright " PULSEWRIGHT_VERSION "\n");
}

TEST (Cli, PrintsWithinEightyColumns)
{
    for (const auto* line :
         { "pattern --bars 192 --genre 'drum & bass' --section 'verse variation' --mutate 3", "song --genre trap --structure 1", "song --bars 384" })
    {
        const auto outcome = cli (line);
        EXPECT_EQ (outcome.exitCode, 0);
        EXPECT_EQ (outcome.output.find ('\033'), outcome.output.npos) << "colour without a terminal";

        std::istringstream lines (outcome.output);
        for (std::string text; std::getline (lines, text);)
            EXPECT_LE (text.size(), 80u) << text;
    }
}

} // namespace pulsewright
