// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the command-line tool makes, and what it says to a bad command line.

#include "CliProgram.h"

#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace pulsewright
{

TEST (Cli, OptionsReachTheMusic)
{
    const auto snapped = [] (GenerationSettings settings, std::array<float, GenerationSettings::numValues> values)
    {
        std::ranges::transform (values, values.begin(), snapPercent);
        settings.setValues (values);
        return settings;
    };

    const auto settings =
        snapped ({ .genre = Genre::house, .seed = 7 }, { 0.91f, 0.82f, 0.73f, 0.64f, 0.55f, 0.46f, 0.37f, 0.28f, 0.99f, 0.98f, 0.97f, 0.96f });
    const std::string options =
        " --genre HOUSE --salt 7 --density 0.91 --energy .82 --syncopation 73e-2 --swing 0.64 --variation 0.55 --experimental 0.46 --timing 0.37"
        " --velocity 0.28 --kick-probability 0.99 --snare-probability 0.98 --hats-probability 0.97 --percussion-probability 0.96";

    const auto chorus  = GrooveGenerator::generate (settings, SectionType::highChorus, 192, 9);
    const auto mutated = GrooveGenerator::mutate (settings, chorus, { true, false, true, false }, 5);
    EXPECT_EQ (jsonFrom<DrumPattern> ("pattern --section 'high chorus' --bars 192 --seed 9" + options), chorus);
    EXPECT_EQ (jsonFrom<DrumPattern> ("pattern --section 6 --bars 0xC0 --seed +9 --mutate 5 --lock kick,HATS" + options), mutated);
    EXPECT_EQ (jsonFrom<SongArrangement> ("song --structure 2 --bars 384" + options), SongBuilder::buildSong (settings, 384, 2));
    EXPECT_EQ (jsonFrom ("song --duration 5:00 --tempo 174").at ("totalBars"), 216);
    EXPECT_EQ (jsonFrom ("song --tempo 30 --salt 0xE60B2026").at ("sections"), jsonFrom ("song --bars 28 --take 0").at ("sections"));

    auto fresh = snapped ({ .seed = saltOf (1) }, GenerationSettings().values());
    EXPECT_EQ (jsonFrom<DrumPattern> ("pattern"), GrooveGenerator::generate (fresh, SectionType::verse, 2, 0));
    EXPECT_EQ (jsonFrom<SongArrangement> ("song"), SongBuilder::buildSong (fresh, 80, 0));
    fresh.seed = saltOf (4294967295u);
    EXPECT_EQ (jsonFrom<DrumPattern> ("pattern --take 4294967295"), GrooveGenerator::generate (fresh, SectionType::verse, 2, 0));
}

TEST (Cli, BadLinesEndWithTheChoices)
{
    // clang-format off
    const std::vector<std::pair<std::string, std::string>> badLines {
        { "",                                   "No command is given; the commands are pattern, song, window, find," },
        { "tune --bars 2",                      "\"tune\" is no command; the commands are pattern, song, window, find," },
        { "one pattern two --three four",       "expected: one two --three four (" },
        { "pattern song",                       "expected: song (" },
        { "--completions bash pattern",         "excludes" },
        { "pattern --genre polka",              "Drum & Bass" },
        { "pattern --genre ''",                 "Drum & Bass" },
        { "pattern --genre 7",                  "from 0 to 6" },
        { "pattern --genre \"$(printf 'a\\nb\\033\\377\\302\\233\\303\\251')\"", "\"a\\x0ab\\x1b\\xff\\xc2\\x9b\u00e9\" is none of" },
        { "pattern --section middle",           "Pre-Chorus" },
        { "pattern --section 9",                "from 0 to 8" },
        { "pattern --mutate 1 --lock kick,cow", "Snare" },
        { "pattern --mutate 1 --lock kick,",    "Snare" },
        { "pattern --lock kick",                "--lock requires --mutate" },
        { "pattern --wav a --kit tin",          "Dusty" },
        { "pattern --kit dusty",                "--kit requires --wav" },
        { "pattern --bars two",                 "whole number from 1 to 192" },
        { "pattern --bars 2.5",                 "whole number from 1 to 192" },
        { "pattern --bars 0",                   "from 1 to 192" },
        { "pattern --bars 193",                 "from 1 to 192" },
        { "pattern --bars",                     "--bars" },
        { "pattern --seed 0x",                  "from 0 to 4294967295" },
        { "pattern --mutate inf",               "from 0 to 4294967295" },
        { "pattern --take -1",                  "from 0 to 4294967295" },
        { "pattern --take 4294967296",          "from 0 to 4294967295" },
        { "pattern --salt 0x100000000",         "from 0 to 4294967295" },
        { "pattern --take 1 --salt 2",          "excludes" },
        { "pattern --density nan",              "number from 0 to 1" },
        { "pattern --density 70",               "number from 0 to 1" },
        { "pattern --energy -0.001",            "number from 0 to 1" },
        { "pattern --hats-probability 1x",      "number from 0 to 1" },
        { "pattern --tempo 29",                 "from 30 to 300" },
        { "pattern --tempo 301",                "from 30 to 300" },
        { "pattern --tempo 97.4",               "from 30 to 300" },
        { "pattern --tempo +-90",               "from 30 to 300" },
        { "pattern --json - --midi -",          "--json and --midi write to the same place" },
        { "pattern --wav - --midi /dev/stdout", "--midi and --wav write to the same place" },
        { "pattern --json /no/a --wav /no/./a", "--json and --wav write to the same place" },
        { "song --structure rondo",             "Verse / Chorus" },
        { "song --structure 4",                 "from 0 to 3" },
        { "song --duration 3:15",               "3:30" },
        { "song --duration 2:00 --bars 16",     "excludes" },
        { "song --bars 15",                     "from 16 to 384" },
        { "song --bars 385",                    "from 16 to 384" },
        { "pattern --code PW1-X",               "46 letters after PW1" },
        { "pattern --only kick,cow",            "Snare" },
        { "pattern --map 36=35",                "--map requires --midi" },
        { "pattern --midi a --map 36",          "not like 36=35" },
        { "pattern --midi a --map 36=128",      "from 0 to 127" },
        { "song --markers",                     "--markers requires --midi" },
        { "find",                               "What is to be found?" },
        { "find --kick x...x...x...x...x",      "whole bars of 16" },
        { "find --perc ''",                     "whole bars of 16" },
        { "find --snare x...X...x...x...",      "signs x . - o #" },
        { "find --hats ................ --takes 5-4", "holds no take" },
        { "find --hats ................ --genre 7", "from 0 to 6, or all" },
        { "find --like no.mid",                 "no.mid: could not be read: No such file" },
        { "find --like /dev/zero",              "/dev/zero: is too large, more than 16 MiB" },
        { "find --like /dev/null",              "neither a MIDI file nor" },
        { "--version > /dev/null; echo '{\"hits\":[{\"start\":-1,\"velocity\":1,\"lane\":0}]}' | $T find --like /dev/stdin", "\"start\" is out of range" },
        { "show",                               "FILE is required" },
        { "verify /bin/sh $($T pattern | tail -n 1)", "no MIDI file" },
        { "show .",                             ".: could not be read: Is a directory" },
        { "show /dev/null",                     "no preset" },
        { "preset PW1-X",                       "46 letters" },
        { "preset $($T pattern | tail -n 1)",   "nothing to write" },
        { "preset $($T pattern --bars 4 | tail -n 1) --state a", "two bars" },
        { "preset $($T pattern | tail -n 1) --state a --name b", "has no name" },
        { "preset $($T song --tempo 300 | tail -n 1) --state a", "80 bars, and this one has 264" },
        { "window",                             "--png is required" },
        { "window --png a --scale 4.1",         "number from 0.5 to 4" },
        { "window --png a --width 0",           "from 1 to 4000" }
    };
    // clang-format on

    const auto folder = scratch();

    for (const auto& [line, hint] : badLines)
    {
        const auto outcome = inFolder (folder, "$T " + line);
        EXPECT_EQ (outcome.exitCode, 2) << line;
        EXPECT_NE (outcome.output.find (hint), outcome.output.npos) << line << ": " << outcome.output;
        EXPECT_EQ (std::count (outcome.output.begin(), outcome.output.end(), '\n'), 1) << outcome.output;
    }

    EXPECT_TRUE (fs::is_empty (folder));
    fs::remove_all (folder);
}

TEST (Cli, CodesBringTakesBack)
{
    const auto folder = scratch();

    // Printed, read again, and written over one of its values: the same take, and another one.
    for (const auto* line : { "pattern --genre trap --take 7 --section fill --bars 5 --swing 0.777 --tempo 141",
                              "song --genre dub --salt 1 --bars 33",
                              "song --structure club --duration 5:00 --take 4294967295" })
    {
        const auto command = std::string (line).substr (0, std::string (line).find (' '));
        const auto made    = jsonFrom (line);
        const auto code    = made.at ("code").get<std::string>();
        const auto again   = std::string (command).append (" --code ").append (code);
        EXPECT_EQ (jsonFrom (again), made) << line;
        EXPECT_EQ (jsonFrom (again + " --density 0.9"), jsonFrom (std::string (line) + " --density 0.9"));
        EXPECT_NE (cli (line).output.find ("\n" + code + "\n"), std::string::npos);
    }

    EXPECT_EQ (jsonFrom ("pattern --code $(" PULSEWRIGHT_TEST_CLI " song --take 5 | tail -n 1)").at ("name"), "Intro");
    EXPECT_FALSE (jsonFrom ("pattern --mutate 1").contains ("code") || jsonFrom ("pattern --seed 1").contains ("code")
                  || jsonFrom ("song --salt 0").contains ("code"));

    // Through each kind of preset.
    EXPECT_EQ (inFolder (folder,
                         "c=$($T pattern --genre house --take 99 --kick-probability 0.5 | tail -n 1);"
                         "$T preset $c --vstpreset a.vstpreset --lv2 a.lv2 --state a.state --name 'A \"B\" & C';"
                         "for f in a.vstpreset a.lv2/presets.ttl a.state; do test $($T show $f) = $c || echo $f; done;"
                         "$T show a.state --genre 1 2>&1 | grep -c 'MIDI files only'; $T preset $c --lv2 a.lv2 2>&1 | grep -c 'a new folder'")
                   .output,
               "1\n1\n");

    // A MIDI file is looked for among the takes, and compared with one.
    EXPECT_EQ (
        inFolder (folder,
                  "for line in 'pattern --take 5 --bars 3' 'song --genre dub --take 8' 'song --genre dub --take 9 --bars 33'; do"
                  " $T $line --midi m.mid; c=$($T $line | tail -n 1);"
                  " test \"$($T show m.mid --takes 5-9 --genre $(echo $line | grep -o dub || echo 0))\" = $c || echo $line; $T verify m.mid $c | "
                  "grep -c same;"
                  " done; $T verify m.mid $($T pattern | tail -n 1) | cut -d: -f1; $T verify m.mid $($T pattern | tail -n 1) > /dev/null; echo $?; "
                  "$T show m.mid --takes 1-2; echo $?")
            .output,
        "1\n1\n1\nDifferent\n1\npulsewright-cli: m.mid: no take of these settings plays this; --takes, and the settings as options, widen the "
        "search\n1\n");

    // Lanes, other notes and markers.
    EXPECT_EQ (
        inFolder (folder,
                  "$T song --take 3 --only snare,perc --map 38=60,40=61 --markers --midi s.mid; midicsv s.mid | awk -F', ' '"
                  "/Note_on/ && $6 > 0 { notes[$5] = 1 } /Marker_t/ { names = names $4 } END { for (n in notes) print n; print names }' | sort -n")
            .output,
        "\"Intro\"\"Verse A\"\"Pre-Chorus\"\"Chorus\"\"Verse B\"\"Breakdown\"\"Chorus High\"\"Outro\"\n45\n47\n50\n60\n61\n");

    fs::remove_all (folder);
}

TEST (Cli, FindsTakesAgain)
{
    const auto folder      = scratch();
    const std::string grep = " | grep -c '^ *0.000000  *3  *99 '";

    const std::vector<std::pair<std::string, std::string>> searches {
        { "$T pattern --genre house --take 99 --bars 3 --midi a.mid --json a.json; $T find --genre all --like a.mid" + grep, "1" },
        { "$T find --genre house --like a.json --takes 90-100 --jobs 3" + grep, "1" },
        { "$T find --genre house --like a.mid --takes 90-98" + grep, "0" },
        { "$T pattern --genre house --take 99 --density 0.75 --swing 0.9 --json b.json; $T find --vary --genre 3 --swing 0.9 --like b.json --takes "
          "1-99"
              + grep,
          "1" },

        // The command that is printed plays what was found, and so does the code.
        { "$T find --like a.mid --genre 5 --section fill --energy 0.301 --takes 1-500 --top 2 --json f.json --save d;"
          "for k in code command; do python3 -c 'import json, sys; t = json.load(open(\"f.json\"))[\"takes\"][1];"
          "print(\"pulsewright-cli pattern --code \" + t[\"code\"] if sys.argv[1] == \"code\" else t[\"command\"])' $k |"
          "sed \"s|^pulsewright-cli|$T|\" | sed 's/$/ --midi -/' | sh | cmp - d/002* && echo $k; done",
          "code\ncommand" },

        // Two halves are the whole.
        { "export LC_ALL=C; for r in 1-400 401-900; do $T find --kick x.....x...x..... --takes $r | grep pulse; done | sort | head -n 10 > merged;"
          "$T find --kick x.....x...x..... --takes 1-900 | grep pulse | cmp - merged && wc -l < merged",
          "10" },

        // A busy machine takes its time to begin.
        { "for s in 1 4 16; do timeout --preserve-status -s INT -k 9 $s $T find --like a.mid --takes 0-4294967295 --top 1 > found 2> told; r=$?;"
          " ! grep -q pulse found || break; done; echo $r; wc -l < told; grep -c pulse found",
          "130\n1\n1" },
        { "script -qec \"timeout --preserve-status -s INT -k 9 2 $T show a.mid --density 0 --takes 0-4294967295\" /dev/null > told; echo $?;"
          "tr '\\r' '\\n' < told | grep -oE 'Searching|Stopped after [0-9]+ takes' | sed 's/[1-9][0-9]*/N/'",
          "130\nSearching\nStopped after N takes" }
    };

    for (const auto& [line, answer] : searches)
        EXPECT_EQ (inFolder (folder, line).output, answer + "\n") << line;

    fs::remove_all (folder);
}

TEST (Cli, ManualPageAndCompletionsHaveEveryOption)
{
    const auto folder = scratch();

    // What is missing is printed; roff has a backslash before every minus, and fish an l in place of two.
    EXPECT_EQ (
        inFolder (folder,
                  "for c in '' pattern song window find show verify preset; do $T $c --help; done | grep -oE -e '--[a-z][a-z-]*' | sort -u > options;"
                  "test $(wc -l < options) -gt 25 || cat options; cp "
                      + quoted (PULSEWRIGHT_MANUAL_PAGE)
                      + " manual;"
                        "for shell in bash zsh fish; do $T --completions $shell > $shell; $shell -n $shell; done;"
                        "for f in manual bash zsh fish; do sed 's/\\\\//g; s/ -l / --/' $f | grep -oE -e '--[a-z][a-z-]*' | sort -u | comm "
                        "-23 options -; done")
            .output,
        "");

    const std::string bash = R"(bash -c '. ./bash; COMP_WORDS=(cli "$@"); COMP_CWORD=$#; _pulsewright_cli; echo "${COMPREPLY[*]}"' - )";
    const std::string fish = R"(fish --no-config -c 'source fish; complete -C "pulsewright-cli $argv"' )";

    const std::vector<std::pair<std::string, std::string>> offers { { bash + "pa", "pattern" },
                                                                    { bash + "--completions z", "zsh" },
                                                                    { bash + "song --st", "--structure" },
                                                                    { bash + "song --structure V", "Verse\\ /\\ Chorus" },
                                                                    { bash + "song --structure = \\'v", "Verse / Chorus" },
                                                                    { bash + "song --duration 2", "2\\:00 2\\:30" },
                                                                    { bash + "song --bars ''", "" },
                                                                    { bash + "pattern --mutate 1 --lock kick,s", "kick,Snare" },
                                                                    { bash + "window --png man", "manual" },
                                                                    { fish + "song --st | cut -f 1", "--structure" },
                                                                    { fish + "song --structure v | cut -f 1", "Verse / Chorus" },
                                                                    { fish + "window --png man", "manual" } };

    for (const auto& [line, offered] : offers)
        EXPECT_EQ (inFolder (folder, line).output, offered + "\n") << line;

    fs::remove_all (folder);
}

TEST (Cli, PrintsWithinEightyColumns)
{
    for (const auto* line : { "pattern --bars 192 --genre 'drum & bass' --section 'verse variation' --mutate 3",
                              "song --genre trap --structure 1",
                              "song --bars 384",
                              "--help",
                              "pattern --help",
                              "song --help",
                              "window --help",
                              "find --help",
                              "show --help",
                              "verify --help",
                              "preset --help" })
    {
        const auto outcome = cli (line);
        EXPECT_EQ (outcome.exitCode, 0);
        EXPECT_EQ (outcome.output.find ('\033'), outcome.output.npos) << "colour without a terminal";

        std::istringstream lines (outcome.output);
        for (std::string text; std::getline (lines, text);)
            EXPECT_LE (text.size(), 80u) << text;
    }

    EXPECT_NE (cli ("pattern --bars 1").output.find ("\n1 bar, "), std::string::npos);
    EXPECT_EQ (cli ("--version").output, "Pulsewright " PULSEWRIGHT_VERSION "\n");
}

} // namespace pulsewright
