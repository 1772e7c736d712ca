// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "generation/GenerationSettings.h"
#include "generation/GenreProfile.h"

#include <gtest/gtest.h>

#include <limits>

namespace pulsewright
{

namespace
{
    DrumPattern patternOf (int bars, std::vector<DrumHit> hits)
    {
        DrumPattern pattern;
        pattern.bars = bars;
        pattern.hits = std::move (hits);
        return pattern;
    }

    DrumHit hit (double start, std::uint32_t note, std::uint32_t velocity = 100, DrumLane lane = DrumLane::kick)
    {
        return { .start = start, .note = note, .velocity = velocity, .lane = lane };
    }
} // namespace

TEST (Names, UnknownValuesHaveNamesToo)
{
    EXPECT_EQ (nameOf (SectionType::verseVariation), "Verse Variation");
    EXPECT_EQ (nameOf (static_cast<SectionType> (9)), "Section");
    EXPECT_EQ (energyOffsetOf (static_cast<SectionType> (9)), 0.0f);
    EXPECT_EQ (nameOf (Genre (genreCount)), "Unknown");
    EXPECT_EQ (profileOf (Genre (genreCount)).tempoBpm, 120);
    EXPECT_EQ (profileOf (Genre (genreCount)).averageSongSeconds, 210);
    EXPECT_EQ (nameOf (DrumLane::perc), "Perc");
    EXPECT_EQ (note::nameOf (note::kick), "Kick");
    EXPECT_EQ (nameOf (static_cast<DrumLane> (4)), "");
}

TEST (GenerationSettings, StoresValuesInsideTheirRange)
{
    GenerationSettings settings { .kickProbability = 0.1f, .percProbability = 0.4f };
    EXPECT_EQ (settings.probabilityOf (DrumLane::kick), 0.1f);
    EXPECT_EQ (settings.probabilityOf (DrumLane::perc), 0.4f);

    auto values   = settings.values();
    auto expected = values;
    for (const auto& [index, value, stored] :
         { std::tuple { 0u, 1.7f, 1.0f }, { 1u, -0.2f, 0.0f }, { 2u, 0.3f, 0.3f }, { 3u, std::numeric_limits<float>::quiet_NaN(), 0.0f } })
        values[index] = value, expected[index] = stored;

    settings.setValues (values);
    EXPECT_EQ (settings.values(), expected);
}

struct NormaliseCase
{
    const char* name;
    int bars;
    std::vector<DrumHit> before;
    std::vector<DrumHit> after;

    friend std::ostream& operator<< (std::ostream& out, const NormaliseCase& c) { return out << c.name; }
};

class Normalise : public testing::TestWithParam<NormaliseCase>
{};

TEST_P (Normalise, SortsAndDropsDoubles)
{
    auto pattern = patternOf (GetParam().bars, GetParam().before);
    normalise (pattern);
    EXPECT_EQ (pattern.hits, GetParam().after);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P (Patterns, Normalise, testing::Values (
    NormaliseCase { "ClampsStarts",             4, { hit (16.2, 36), hit (-1.0, 38) },                       { hit (0.0, 38), hit (15.999, 36) } },
    NormaliseCase { "DoubledNoteGoes",          1, { hit (2.015, 36), hit (2.0, 36) },                       { hit (2.0, 36) } },
    NormaliseCase { "OtherNotesStay",           1, { hit (2.0, 36), hit (2.01, 38) },                        { hit (2.0, 36), hit (2.01, 38) } },
    NormaliseCase { "ComparesWithTheKeptHit",   1, { hit (1.0, 42), hit (1.015, 42), hit (1.03, 42) },       { hit (1.0, 42), hit (1.03, 42) } },
    NormaliseCase { "AnotherNoteInBetween",     1, { hit (2.0, 36), hit (2.005, 42), hit (2.015, 36) },      { hit (2.0, 36), hit (2.005, 42), hit (2.015, 36) } },
    NormaliseCase { "TheQuieterOfTwoIsKept",    1, { hit (1.0, 36, 90), hit (1.0, 36, 40) },                 { hit (1.0, 36, 40) } },
    NormaliseCase { "TheFirstOfTwoEqualsIsKept", 1, { hit (1.0, 38, 90, DrumLane::snare), hit (1.0, 38, 90) }, { hit (1.0, 38, 90, DrumLane::snare) } },
    NormaliseCase { "EqualStartsSortByNote",    1, { hit (1.0, 42), hit (1.0, 36), hit (1.0, 38) },          { hit (1.0, 36), hit (1.0, 38), hit (1.0, 42) } }),
    [] (const auto& test) { return std::string (test.param.name); });
// clang-format on

} // namespace pulsewright
