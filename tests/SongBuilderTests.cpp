// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "ReferenceCases.h"

#include <limits>

namespace pulsewright
{

TEST (SongBuilder, PlaysTheReferenceSongs)
{
    const auto cases = reference::readCases ("songs.json");
    ASSERT_EQ (cases.size(), 5u);

    for (const auto& c : cases)
    {
        SCOPED_TRACE (c.at ("name").get<std::string>());
        reference::expectSong (SongBuilder::buildSong (reference::settingsOf (c), c.at ("bars"), c.at ("structure")), c);
    }
}

TEST (SongBuilder, SharesOutTheBars)
{
    struct Case
    {
        std::int32_t asked;
        std::uint32_t structure;
        std::vector<std::int32_t> bars;
    };

    // clang-format off
    const std::vector<Case> cases {
        {   80, 0, { 7, 13, 7, 13, 13, 7, 13, 7 } },   // the remainders go to the earliest of equals
        {  384, 3, { 48, 144, 144, 48 } },
        {   64, 2, { 8, 8, 8, 16, 16, 8 } },
        {    1, 3, { 2, 6, 6, 2 } },                   // never shorter than 16
        { 1000, 1, { 38, 77, 77, 77, 77, 38 } },       // nor longer than 384
        { std::numeric_limits<std::int32_t>::max(), 3, { 48, 144, 144, 48 } },
        { std::numeric_limits<std::int32_t>::min(), 0, { 7, 13, 7, 13, 13, 7, 13, 7 } }, // the genre's own length
        {   16, 4, { 1, 3, 1, 3, 3, 1, 3, 1 } }        // one past the last structure is Classic
    };
    // clang-format on

    for (const auto& c : cases)
    {
        SCOPED_TRACE (std::to_string (c.asked) + " bars, structure " + std::to_string (c.structure));
        const auto song = SongBuilder::buildSong ({}, c.asked, c.structure);

        std::vector<std::int32_t> bars;
        std::uint32_t end = 0;
        for (const auto& section : song.sections)
        {
            EXPECT_EQ (section.startBar, end);
            bars.push_back (section.pattern.bars);
            end += static_cast<std::uint32_t> (section.pattern.bars);
        }

        EXPECT_EQ (bars, c.bars);
        EXPECT_EQ (song.totalBars, end);
    }
}

TEST (SongBuilder, UnknownStructuresGiveAnEmptySong)
{
    EXPECT_EQ (SongBuilder::buildSong ({}, 64, 4), SongBuilder::buildSong ({}, 64, 0));

    const auto empty = SongBuilder::buildSong ({}, 64, 7);
    EXPECT_TRUE (empty.sections.empty());
    EXPECT_EQ (empty.name, "Boom Bap 64 Bar Classic Song");
    EXPECT_TRUE (flatten (empty).empty());
}

TEST (SongBuilder, DurationsBecomeBars)
{
    EXPECT_EQ (SongBuilder::songBars (210, 90), 80);
    EXPECT_EQ (SongBuilder::songBars (120, 140), 72); // 17.5 groups of four: halves go up
    EXPECT_EQ (SongBuilder::songBars (300, 174), 216);
    EXPECT_EQ (SongBuilder::songBars (0, 0), 16);
    EXPECT_EQ (SongBuilder::songBars (100000, 300), 384);
    EXPECT_EQ (SongBuilder::songBars (2147483647, 2147483647), 384);

    constexpr std::int32_t dubSeconds[] { 270, 120, 150, 180, 210, 240, 300, 270 }; // the genre's own outside the choices
    for (std::uint32_t choice = 0; choice <= songDurations.size(); ++choice)
        EXPECT_EQ (SongBuilder::durationSeconds (Genre::dub, choice), dubSeconds[choice]) << choice;

    EXPECT_EQ (SongBuilder::buildSong ({}, 0, 0).totalBars, 80u); // the genre's own length
}

TEST (SongArrangement, FlattensInOrderOfTime)
{
    // Sections out of order, and hits that start together: these keep the order of their sections.
    SongArrangement song;
    song.sections.resize (2);
    song.sections[0].startBar     = 2;
    song.sections[0].pattern.hits = { { .start = 1.5, .note = 38 } };
    song.sections[1].pattern.hits = { { .start = 0.25, .note = 36 }, { .start = 9.5, .note = 42 } };

    std::vector<std::pair<double, std::uint32_t>> played;
    for (const auto& hit : flatten (song))
        played.emplace_back (hit.start, hit.note);

    EXPECT_EQ (played, (std::vector<std::pair<double, std::uint32_t>> { { 0.25, 36 }, { 9.5, 38 }, { 9.5, 42 } }));
}

} // namespace pulsewright
