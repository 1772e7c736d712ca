// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The files that the command-line tool writes, read back.

#include "CliProgram.h"

#include "generation/Genre.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <tuple>

namespace pulsewright
{

namespace
{
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

TEST (Cli, MidiFilesHaveTheNotesOfTheJson)
{
    const auto folder = scratch();

    for (std::uint32_t genre = 0; genre < genreCount; ++genre)
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
