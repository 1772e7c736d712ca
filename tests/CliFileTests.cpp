// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The files that the command-line tool writes, read back.

#include "CliProgram.h"
#include "PlainDrumKit.h"

#include "export/MidiFileWriter.h"
#include "generation/Genre.h"

#include <juce_audio_formats/juce_audio_formats.h>

#include <fstream>
#include <iterator>

namespace pulsewright
{

TEST (Cli, MidiFilesHaveTheNotesOfTheJson)
{
    const auto folder = scratch();
    const auto expect = [] (const fs::path& file, const std::vector<std::uint8_t>& bytes, std::size_t numNotes)
    {
        std::ifstream stream (file, std::ios::binary);
        EXPECT_EQ (std::vector<std::uint8_t> (std::istreambuf_iterator<char> (stream), {}), bytes) << file;
        EXPECT_EQ (shell ("midicsv " + quoted (file.string()) + " | grep -c '^2, .*Note_on_c, 9, '").output, std::to_string (numNotes) + "\n");
    };

    for (std::uint32_t genre = 0; genre < genreCount; ++genre)
    {
        const auto file      = folder / ("per cent 100%, blank, \u00fcmlaut 'quote' " + std::to_string (genre) + ".mid");
        const auto arguments = " --tempo 77 --genre " + std::to_string (genre) + " --midi " + quoted (file.string());

        const auto pattern = jsonFrom<DrumPattern> ("pattern --section fill --bars 3" + arguments);
        expect (file, MidiFileWriter::bytesOf (pattern, 77), pattern.hits.size());

        const auto song = jsonFrom<SongArrangement> ("song --structure " + std::to_string (genre % 4) + arguments);
        expect (file, MidiFileWriter::bytesOf (song, 77), flatten (song).size());
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
TEST (Cli, WavFilesAreWhatTheKitMakesOfTheHits)
{
    const auto folder = scratch();
    const auto file   = folder / "take.wav";

    for (int kit = 0; const auto* name : { "Studio", "808", "dusty", "Electronic", "midi only" })
    {
        const auto pattern = jsonFrom<DrumPattern> ("pattern --genre dub --density 0.8 --timing 1 --take 4 --tempo 100 --kit '" + std::string (name)
                                                    + "' --wav " + quoted (file.string()));
        const auto seconds = static_cast<double> (pattern.bars) * 4 * 0.6 + 1.0;

        juce::AudioBuffer<float> samples (2, static_cast<int> (seconds * 48000));
        const std::unique_ptr<juce::AudioFormatReader> reader (
            juce::WavAudioFormat().createReaderFor (new juce::FileInputStream (juce::File (file.string())), true));
        ASSERT_TRUE (reader != nullptr && reader->sampleRate == 48000.0 && reader->bitsPerSample == 32 && reader->usesFloatingPointData);
        ASSERT_EQ (reader->lengthInSamples, samples.getNumSamples());
        reader->read (&samples, 0, samples.getNumSamples(), 0, true, true);

        plain::DrumKit drums (48000.0);
        auto hit = pattern.hits.begin();

        for (int i = 0; i < samples.getNumSamples(); ++i)
        {
            for (; hit != pattern.hits.end() && static_cast<int> (hit->start * 0.6 * 48000.0) == i; ++hit)
                if (kit < 4)
                    drums.start (static_cast<int> (hit->note), static_cast<int> (hit->velocity), kit);

            float left = 0.0f, right = 0.0f;
            drums.render (&left, &right, 1);
            ASSERT_NEAR (samples.getSample (0, i), left, 1e-6f) << name << ", sample " << i;
            ASSERT_NEAR (samples.getSample (1, i), right, 1e-6f) << name << ", sample " << i;
        }

        EXPECT_TRUE (hit == pattern.hits.end());
        EXPECT_EQ (samples.getMagnitude (0, samples.getNumSamples()) > 0.1f, kit++ < 4);
    }

    fs::remove_all (folder);
}

} // namespace pulsewright
