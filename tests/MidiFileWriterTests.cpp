// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "ReferenceCases.h"

#include "export/MidiFileWriter.h"

#include <filesystem>
#include <iterator>
#include <limits>

namespace pulsewright
{

namespace
{
    using Bytes = std::vector<std::uint8_t>;

    Bytes readFile (const std::filesystem::path& path)
    {
        std::ifstream file (path, std::ios::binary);
        return Bytes (std::istreambuf_iterator<char> (file), {});
    }

    /** The second track's data, from the first delta time on. */
    Bytes drumTrackOf (const Bytes& file)
    {
        const std::string_view text (reinterpret_cast<const char*> (file.data()), file.size());
        const auto track = text.rfind ("MTrk");
        return Bytes (file.begin() + static_cast<std::ptrdiff_t> (track) + 8, file.end());
    }

    constexpr auto nan = std::numeric_limits<double>::quiet_NaN();

    DrumHit hit (double start, double length, std::uint32_t note = 36, std::uint32_t velocity = 100)
    {
        return { .start = start, .length = length, .note = note, .velocity = velocity };
    }
} // namespace

TEST (MidiFileWriter, WritesTheReferenceFile)
{
    const auto pattern = reference::generate (reference::readCases ("dub-verse-4-bars-74-bpm.json"));
    const auto path    = std::filesystem::path (testing::TempDir()) / "dub & 100% vér\u00e9.mid";

    std::string error = "untouched";
    ASSERT_TRUE (MidiFileWriter::savePatternToMidiFile (path.string(), pattern, 74, &error)) << error;
    EXPECT_EQ (error, "untouched");
    EXPECT_EQ (readFile (path), readFile (reference::dataFile ("dub-verse-4-bars-74-bpm.mid")));
    std::filesystem::remove (path);
}

struct TrackCase
{
    const char* name;
    std::vector<DrumHit> hits;
    int bars;
    Bytes track;

    friend std::ostream& operator<< (std::ostream& out, const TrackCase& c) { return out << c.name; }
};

class DrumTrack : public testing::TestWithParam<TrackCase>
{};

TEST_P (DrumTrack, HasTheseBytes)
{
    EXPECT_EQ (drumTrackOf (MidiFileWriter::buildMidiFileBytes (GetParam().hits, GetParam().bars, 120, "")), GetParam().track);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P (Tracks, DrumTrack, testing::Values (
    TrackCase { "Empty",               {},                                     -7, { 0, 0xFF, 3, 0,  0x9E, 0, 0xFF, 0x2F, 0 } },
    TrackCase { "AtLeastOneTick",      { hit (0, 0) },                          1, { 0, 0xFF, 3, 0,  0, 0x99, 36, 100,  1, 0x89, 36, 0,  0x9D, 0x7F, 0xFF, 0x2F, 0 } },
    TrackCase { "NegativeStartIsZero", { hit (-1, 0.5) },                       1, { 0, 0xFF, 3, 0,  0, 0x99, 36, 100,  1, 0x89, 36, 0,  0x9D, 0x7F, 0xFF, 0x2F, 0 } },
    TrackCase { "NoNumbersAreZero",    { hit (nan, nan) },                      1, { 0, 0xFF, 3, 0,  0, 0x99, 36, 100,  1, 0x89, 36, 0,  0x9D, 0x7F, 0xFF, 0x2F, 0 } },
    TrackCase { "LastTickThereIs",     { hit (1e300, 1e300) },                  1, { 0, 0xFF, 3, 0,  0x8F, 0xFF, 0xFF, 0xFF, 0x7E, 0x99, 36, 100,  1, 0x89, 36, 0,  0, 0xFF, 0x2F, 0 } },
    TrackCase { "HalfATickRoundsUp",   { hit (0.5 / 960, 1.0 / 960) },          1, { 0, 0xFF, 3, 0,  1, 0x99, 36, 100,  1, 0x89, 36, 0,  0x9D, 0x7E, 0xFF, 0x2F, 0 } },
    TrackCase { "ReleasedBeforeNext",  { hit (1.0 / 960, 1), hit (0, 1.0 / 960) }, 1,
                { 0, 0xFF, 3, 0,  0, 0x99, 36, 100,  1, 0x89, 36, 0,  0, 0x99, 36, 100,  0x87, 0x40, 0x89, 36, 0,  0x96, 0x3F, 0xFF, 0x2F, 0 } },
    TrackCase { "EqualsKeepTheirOrder", { hit (0, 0, 38), hit (0, 0, 36) },     1, { 0, 0xFF, 3, 0,  0, 0x99, 38, 100,  0, 0x99, 36, 100,  1, 0x89, 38, 0,  0, 0x89, 36, 0,  0x9D, 0x7F, 0xFF, 0x2F, 0 } },
    TrackCase { "PastTheEndIsKept",    { hit (3.999, 0.11) },                   1, { 0, 0xFF, 3, 0,  0x9D, 0x7F, 0x99, 36, 100,  0x6A, 0x89, 36, 0,  0, 0xFF, 0x2F, 0 } },
    TrackCase { "LowEightBitsOnly",    { hit (0, 1, 0x124, 0x1C8) },            1, { 0, 0xFF, 3, 0,  0, 0x99, 0x24, 0xC8,  0x87, 0x40, 0x89, 0x24, 0,  0x96, 0x40, 0xFF, 0x2F, 0 } }),
    [] (const auto& test) { return std::string (test.param.name); });
// clang-format on

TEST (MidiFileWriter, TemposAreClampedNamesAreBytesAndSectionsHaveTheirPlace)
{
    SongArrangement song { .name = "Two", .totalBars = 16, .seed = 1, .sections = { { .name = "B", .startBar = 8, .pattern = {} } } };
    song.sections[0].pattern.hits = { hit (1.5, 0.11) };

    const auto empty = [] (int bpm, const std::string& name = "") { return MidiFileWriter::buildMidiFileBytes ({}, 1, bpm, name); };
    const std::pair<Bytes, Bytes> files[] { { empty (120), { 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20 } },
                                            { empty (20), { 0xFF, 0x51, 0x03, 0x1E, 0x84, 0x80 } },
                                            { empty (400), { 0xFF, 0x51, 0x03, 0x03, 0x0D, 0x40 } },
                                            { empty (174), { 0xFF, 0x51, 0x03, 0x05, 0x42, 0xFB } }, // 344827.6 is cut, not rounded
                                            { empty (120, std::string (200, '\xC3')), { 0xFF, 0x03, 0x81, 0x48, 0xC3 } },
                                            // 8 bars and one and a half beats are 32160 ticks.
                                            { MidiFileWriter::bytesOf (song, 120), { 'T', 'w', 'o', 0x81, 0xFB, 0x20, 0x99, 36, 100 } } };

    for (const auto& [bytes, part] : files)
        EXPECT_NE (std::search (bytes.begin(), bytes.end(), part.begin(), part.end()), bytes.end()) << testing::PrintToString (part);
}

TEST (MidiFileWriter, SaysWhyAFileCannotBeWritten)
{
    for (const auto& [path, reason] : { std::pair<std::string, std::string> { testing::TempDir(), "Could not open the destination file." },
                                        { testing::TempDir() + "no/such/folder/a.mid", "Could not open the destination file." },
                                        { "", "Could not open the destination file." },
                                        { "/dev/full", "The MIDI file could not be written completely." } })
    {
        std::string error;
        EXPECT_FALSE (MidiFileWriter::savePatternToMidiFile (path, {}, 120, &error)) << path;
        EXPECT_FALSE (MidiFileWriter::saveSongToMidiFile (path, {}, 120)) << path; // the error text may be absent
        EXPECT_EQ (error, reason);
    }
}

} // namespace pulsewright
