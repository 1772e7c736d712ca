// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The command-line tool as other programs call it.

#include "ReferenceCases.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <tuple>

namespace pulsewright
{

namespace
{
    namespace fs = std::filesystem;

    struct Outcome
    {
        int exitCode = -1;
        std::string output; // of both streams
    };

    std::string quoted (const std::string& text)
    {
        std::string result = "'";
        for (const char c : text)
            result.append (c == '\'' ? std::string ("'\\''") : std::string (1, c));
        return result.append ("'");
    }

    Outcome shell (const std::string& command)
    {
        Outcome outcome;
        auto* pipe = popen (("{ " + command + "; } 2>&1").c_str(), "r");
        std::array<char, 4096> part {};

        for (std::size_t n; (n = fread (part.data(), 1, part.size(), pipe)) > 0;)
            outcome.output.append (part.data(), n);

        outcome.exitCode = WEXITSTATUS (pclose (pipe));
        return outcome;
    }

    Outcome cli (const std::string& arguments)
    {
        return shell (quoted (PULSEWRIGHT_TEST_CLI) + " " + arguments);
    }

    nlohmann::json jsonFrom (const std::string& arguments)
    {
        const auto outcome = cli (arguments + " --json -");
        EXPECT_EQ (outcome.exitCode, 0) << arguments << ": " << outcome.output;
        return nlohmann::json::parse (outcome.output, nullptr, false);
    }

    DrumPattern patternFrom (const nlohmann::json& json)
    {
        DrumPattern pattern { json.at ("name"), json.at ("sectionType"), json.at ("bars"), json.at ("seed"), {} };
        for (const auto& hit : json.at ("hits"))
            pattern.hits.push_back ({ hit.at ("start"), hit.at ("length"), hit.at ("note"), hit.at ("velocity"), hit.at ("lane") });
        return pattern;
    }

    SongArrangement songFrom (const nlohmann::json& json)
    {
        SongArrangement song { json.at ("name"), json.at ("totalBars"), json.at ("seed"), {} };
        for (const auto& section : json.at ("sections"))
            song.sections.push_back ({ section.at ("name"), section.at ("startBar"), patternFrom (section.at ("pattern")) });
        return song;
    }

    fs::path scratch()
    {
        auto folder = fs::path (testing::TempDir()) / ("pulsewright-cli-" + std::to_string (getpid()));
        fs::create_directories (folder);
        return folder;
    }

    using Note = std::tuple<long, int, int>; // tick, note, velocity

    /** The note-ons that midicsv reads from a file. */
    std::vector<Note> notesReadBack (const fs::path& file)
    {
        const auto csv = shell ("midicsv " + quoted (file.string()));
        EXPECT_EQ (csv.exitCode, 0) << csv.output;

        std::vector<Note> notes;
        std::istringstream lines (csv.output);
        long tick   = 0;
        int channel = 0, note = 0, velocity = 0;

        for (std::string line; std::getline (lines, line);)
        {
            EXPECT_EQ (line.find ("rror"), line.npos) << line;
            if (std::sscanf (line.c_str(), "2, %ld, Note_on_c, %d, %d, %d", &tick, &channel, &note, &velocity) == 4)
            {
                EXPECT_EQ (channel, 9);
                notes.emplace_back (tick, note, velocity);
            }
        }

        std::sort (notes.begin(), notes.end());
        return notes;
    }

    std::vector<Note> notesOf (const std::vector<DrumHit>& hits)
    {
        std::vector<Note> notes;
        for (const auto& hit : hits)
            notes.emplace_back (static_cast<long> (hit.start * 960.0 + 0.5), hit.note, hit.velocity);
        std::sort (notes.begin(), notes.end());
        return notes;
    }
} // namespace

TEST (Cli, GivesTheReferencePatterns)
{
    const auto cases = reference::readCases ("patterns.json");

    for (const auto& c : cases.at ("patterns"))
    {
        std::string arguments = "pattern";
        for (const auto* key : { "genre", "section", "bars", "seed", "salt" })
            arguments += " --" + std::string (key) + " " + c.at (key).dump();

        const std::map<std::string, std::string> longNames { { "kick", "kick-probability" },
                                                             { "snare", "snare-probability" },
                                                             { "hats", "hats-probability" },
                                                             { "perc", "percussion-probability" } };
        for (const auto& [key, value] : c.at ("settings").items())
            arguments += " --" + (longNames.contains (key) ? longNames.at (key) : key) + " " + value.dump();

        SCOPED_TRACE (arguments);
        reference::expectPattern (patternFrom (jsonFrom (arguments)), c.at ("pattern"));
    }
}

TEST (Cli, GivesTheReferenceMutationsAndSongs)
{
    const auto cases = reference::readCases ("patterns.json");

    for (const auto& c : cases.at ("mutations"))
    {
        std::string locks;
        for (std::uint32_t lane = 0; lane < laneCount; ++lane)
            if (c.at ("locks")[lane] == 1)
                locks += (locks.empty() ? " --lock " : ",") + std::string (nameOf (static_cast<DrumLane> (lane)));

        const auto pattern = jsonFrom ("pattern --genre HOUSE --section verse --take 1 --mutate " + c.at ("mutateSeed").dump() + locks);
        reference::expectPattern (patternFrom (pattern), c.at ("pattern"));
    }

    for (const auto& c : reference::readCases ("songs.json"))
    {
        std::string arguments = "song";
        for (const auto* key : { "genre", "structure", "bars", "salt" })
            arguments += " --" + std::string (key) + " " + c.at (key).dump();
        reference::expectSong (songFrom (jsonFrom (arguments)), c);
    }
}

TEST (Cli, NumbersOutOfRangeFollowTheMusicsOwnRules)
{
    EXPECT_EQ (jsonFrom ("pattern --bars 500").at ("bars"), 192);
    EXPECT_EQ (jsonFrom ("pattern --bars -3").at ("bars"), 1);
    EXPECT_EQ (jsonFrom ("pattern --genre 7").at ("name"), "Unknown Verse");
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
    std::ifstream file (PULSEWRIGHT_MANUAL_PAGE);
    std::string page (std::istreambuf_iterator<char> (file), {});
    page.erase (std::remove (page.begin(), page.end(), '\\'), page.end()); // before a minus, in roff

    std::set<std::string> options;
    const std::regex option ("--[a-z][a-z-]+");

    for (const auto* line : { "--help", "pattern --help", "song --help", "window --help" })
    {
        const auto help = cli (line);
        EXPECT_EQ (help.exitCode, 0);
        for (std::sregex_iterator found (help.output.begin(), help.output.end(), option), end; found != end; ++found)
            options.insert (found->str());
    }

    EXPECT_GT (options.size(), 30u);
    for (const auto& name : options)
        EXPECT_TRUE (std::regex_search (page, std::regex (name + "\\b(?!-)"))) << name;

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

TEST (Cli, MidiFilesHaveTheNotesOfTheJson)
{
    const auto folder = scratch();

    for (int genre = 0; genre < 7; ++genre)
    {
        const auto file      = folder / ("per cent 100%, blank, \u00fcmlaut 'quote' " + std::to_string (genre) + ".mid");
        const auto arguments = " --genre " + std::to_string (genre) + " --midi " + quoted (file.string());

        const auto pattern = patternFrom (jsonFrom ("pattern --section fill --bars 3" + arguments));
        EXPECT_EQ (notesReadBack (file), notesOf (pattern.hits));

        const auto song = songFrom (jsonFrom ("song --structure " + std::to_string (genre % 4) + arguments));
        EXPECT_GT (flatten (song).size(), 100u);
        EXPECT_EQ (notesReadBack (file), notesOf (flatten (song)));
    }

    fs::remove_all (folder);
}

TEST (Cli, TargetsThatCannotBeWrittenLeaveNothing)
{
    const auto folder = scratch();

    for (const auto* output : { "--midi", "--json", "--wav" })
    {
        const auto expectFailure = [&] (const fs::path& target, const char* message)
        {
            const auto outcome = cli ("pattern " + std::string (output) + " " + quoted (target.string()));
            EXPECT_EQ (outcome.exitCode, 1) << output << " " << target;
            EXPECT_NE (outcome.output.find (message), outcome.output.npos) << outcome.output;
        };

        expectFailure (folder, "Could not open the destination file.");
        expectFailure (folder / "no" / "such" / "folder.mid", "Could not open the destination file.");
        expectFailure ("/proc/nothing.mid", "Could not open the destination file.");
        expectFailure ("/dev/full", "The MIDI file could not be written completely.");
        EXPECT_TRUE (fs::is_empty (folder));
    }

    // A full disk in the middle of it: the old file stands, and nothing is left beside it.
    const auto target = folder / "kept.mid";
    std::ofstream (target) << "precious";
    const auto outcome = shell ("ulimit -f 1; trap '' XFSZ; " + quoted (PULSEWRIGHT_TEST_CLI) + " song --midi " + quoted (target.string()));
    EXPECT_EQ (outcome.exitCode, 1) << outcome.output;
    EXPECT_NE (outcome.output.find ("The MIDI file could not be written completely."), outcome.output.npos);
    EXPECT_EQ (fs::file_size (target), 8u);
    EXPECT_EQ (std::distance (fs::directory_iterator (folder), {}), 1);

    // A link stays a link, its file is replaced.
    fs::create_symlink ("kept.mid", folder / "link.mid");
    EXPECT_EQ (cli ("pattern --midi " + quoted ((folder / "link.mid").string())).exitCode, 0);
    EXPECT_TRUE (fs::is_symlink (folder / "link.mid"));
    EXPECT_GT (fs::file_size (target), 100u);

    // So is the file behind a link that leads nowhere yet; a pipe is written into.
    fs::create_symlink ("made.mid", folder / "dangling.mid");
    EXPECT_EQ (cli ("pattern --midi " + quoted ((folder / "dangling.mid").string())).exitCode, 0);
    EXPECT_TRUE (fs::is_symlink (folder / "dangling.mid") && fs::is_regular_file (folder / "made.mid"));
    EXPECT_EQ (cli ("pattern --midi /dev/stdout | head -c 4").output, "MThd");
    EXPECT_TRUE (fs::is_symlink ("/dev/stdout"));

    fs::remove_all (folder);
}

//==============================================================================
namespace
{
    /** The samples of a stereo float file, left and right in turn. */
    std::vector<float> samplesOf (const fs::path& file)
    {
        std::ifstream stream (file, std::ios::binary);
        const std::string bytes (std::istreambuf_iterator<char> (stream), {});
        const auto format = bytes.find ("fmt ");
        const auto data   = bytes.find ("data");
        EXPECT_TRUE (format != bytes.npos && data != bytes.npos);

        const auto field = [&bytes] (std::size_t place, std::size_t size)
        {
            std::uint32_t value = 0;
            std::memcpy (&value, bytes.data() + place, size);
            return value;
        };

        EXPECT_EQ (field (format + 10, 2), 2u);     // channels
        EXPECT_EQ (field (format + 12, 4), 48000u); // hertz
        EXPECT_EQ (field (format + 22, 2), 32u);    // bits

        std::vector<float> samples (field (data + 4, 4) / sizeof (float));
        std::memcpy (samples.data(), bytes.data() + data + 8, samples.size() * sizeof (float));
        return samples;
    }
} // namespace

TEST (Cli, WavFilesSoundWhereTheHitsAre)
{
    const auto folder = scratch();
    const auto file   = folder / "take.wav";

    // How long a kick of each kit sounds, in seconds: to -82 dB, or two and a half.
    const std::vector<std::pair<const char*, double>> kits { { "Studio", 1.58 },
                                                             { "808", 2.5 },
                                                             { "dusty", 1.12 },
                                                             { "Electronic", 1.58 },
                                                             { "midi only", 0.0 } };

    for (const auto& [kit, kickSeconds] : kits)
    {
        SCOPED_TRACE (kit);
        const auto pattern = jsonFrom ("pattern --genre dub --density 0.8 --timing 1 --take 4 --tempo 100 --kit '" + std::string (kit) + "' --wav "
                                       + quoted (file.string()));
        const auto samples = samplesOf (file);
        const auto frames  = samples.size() / 2;
        ASSERT_EQ (frames, static_cast<std::size_t> (8 * 0.6 * 48000) + 48000);

        const auto level = [&] (std::size_t from, std::size_t to)
        {
            float peak = 0.0f;
            for (auto i = 2 * from; i < 2 * std::min (to, frames); ++i)
                peak = std::max (peak, std::abs (samples[i]));
            return peak;
        };

        if (std::string (kit) == "midi only")
        {
            EXPECT_EQ (level (0, frames), 0.0f);
            continue;
        }

        EXPECT_GT (level (0, frames), 0.1f);
        EXPECT_LT (level (0, frames), 1.0f);

        const auto firstHit = pattern.at ("hits")[0].at ("start").get<double>() * 0.6 * 48000.0;
        EXPECT_EQ (level (0, static_cast<std::size_t> (firstHit)), 0.0f);
        EXPECT_GT (level (static_cast<std::size_t> (firstHit), static_cast<std::size_t> (firstHit) + 100), 0.0f);

        // A stroke of noise that no other stroke masks is an edge in the sound, at its sample.
        double lastNoise = -1.0, lastEnd = 0.0;
        int edges = 0;

        for (const auto& hit : pattern.at ("hits"))
        {
            const auto seconds = hit.at ("start").get<double>() * 0.6;
            const bool isKick  = hit.at ("note") == note::kick;
            lastEnd            = std::max (lastEnd, seconds + (isKick ? kickSeconds : 0.8));

            if (isKick)
                continue;

            if (seconds - lastNoise > 0.25)
            {
                const auto frame = static_cast<std::size_t> (seconds * 48000.0);
                const auto bend  = [&] (std::size_t f) { return std::abs (samples[2 * f] - 2 * samples[2 * f - 2] + samples[2 * f - 4]); };
                EXPECT_GT (bend (frame), 4.0f * bend (frame - 1)) << "hit at " << frame;
                ++edges;
            }

            lastNoise = seconds;
        }

        EXPECT_GT (edges, 3);

        // Silence where every voice has ended; the long kick of the 808 outlasts the added second.
        const auto silentFrom = static_cast<std::size_t> (lastEnd * 48000.0);
        EXPECT_EQ (silentFrom < frames, std::string (kit) != "808");
        EXPECT_EQ (level (silentFrom, frames), 0.0f);
        EXPECT_EQ (level (frames - 100, frames) > 0.0f, std::string (kit) == "808");
    }

    fs::remove_all (folder);
}

} // namespace pulsewright
