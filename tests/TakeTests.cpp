// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "RandomTake.h"

#include "generation/SongBuilder.h"
#include "generation/TakeCode.h"

#include <gtest/gtest.h>

namespace pulsewright
{

namespace
{
    /** What is wrong with a code; empty when nothing is. */
    std::string complaintAbout (const std::string& code)
    {
        try
        {
            static_cast<void> (takeOf (code));
            return {};
        }
        catch (const BadTakeCode& error)
        {
            return error.what();
        }
    }
} // namespace

TEST (TakeCode, BringsEveryTakeBack)
{
    std::mt19937 random (1);

    for (int i = 0; i < 2000; ++i)
    {
        const auto take = randomTake (random);
        const auto code = codeOf (take);
        ASSERT_TRUE (code.has_value());
        ASSERT_EQ (takeOf (*code), take) << *code;

        auto sent = "\r\n " + *code + "\n";
        for (auto& c : sent)
            c = c == '-' && random() % 2 == 0 ? ' ' : static_cast<char> (random() % 2 == 0 ? std::tolower (c) : c);
        ASSERT_EQ (takeOf (sent), take) << sent;
    }

    for (int thousandth = 0; thousandth <= 1000; ++thousandth)
    {
        auto take           = openingTake (0);
        take.settings.swing = snapPercent (static_cast<float> (thousandth) / 1000.0f);
        ASSERT_EQ (takeOf (codeOf (take).value()).settings.swing, take.settings.swing) << thousandth;
    }
}

// Codes that are out in the world: what they mean never changes.
TEST (TakeCode, KeepsItsMeaning)
{
    EXPECT_EQ (codeOf (openingTake (0)), "PW1-Q8SFZ-XJZ69-0PUZS-RW050-50505-PQYQQ-8SQQQ-QQQQQ-MZVZRL");

    auto song                     = openingTake (4000000000u);
    song.kind                     = Take::Kind::song;
    song.settings.genre           = Genre::electronic;
    song.settings.density         = snapPercent (1.0f);
    song.settings.percProbability = 0.0f;
    song.structure                = 3;
    song.duration                 = 6;
    song.tempo                    = 300;
    song.kit                      = 4;
    EXPECT_EQ (codeOf (song), "PW1-N05FZ-XJZ69-0PUZS-RW050-505QQ-QQQRD-P6WU6-EGQQQ-77UJT2");
    EXPECT_EQ (songOf (song).totalBars, 376u);

    auto section    = openingTake (7);
    section.section = SectionType::highChorus;
    section.bars    = 13;
    section.stream  = 106;
    EXPECT_EQ (codeOf (section), "PW1-Q8SFZ-XJZ69-0PUZS-RW050-50505-XP3CQ-8SQQQ-QQQUQ-TRH7RV");
    EXPECT_EQ (patternOf (section), songOf (section).sections[6].pattern) << "the label too";
    EXPECT_EQ (sectionOf (songBeside (section), 6, patternOf (section)), section);
    EXPECT_EQ (counterOf (section.settings.seed), section.counter);
}

TEST (TakeCode, FindsTypingErrors)
{
    const std::string letters = "QPZRY9X8GF2TVDW0S3JN54KHCE6MUA7L";
    std::mt19937 random (2);

    for (int i = 0; i < 500; ++i)
    {
        const auto code = codeOf (randomTake (random)).value();
        std::string typed (code);
        std::vector<std::size_t> places;

        // One to four letters, or two neighbours: in the middle of a group.
        const auto wrong = random() % 5;

        for (std::size_t n = 0; wrong < 4 && n <= wrong; ++n)
        {
            const auto place = 4 + 6 * (random() % 9) + random() % 5;
            places.push_back (place);
            typed[place] = letters[(letters.find (code[place]) + 1 + random() % 31) % 32];
        }

        if (const auto place = 4 + 6 * (random() % 9) + random() % 4; wrong == 4)
            std::swap (typed[place], typed[place + 1]);

        const auto complaint = complaintAbout (typed);
        ASSERT_EQ (complaint.empty(), typed == code) << code << " typed " << typed;

        if (places.size() == 1)
        {
            const auto place = "letter " + std::to_string ((places[0] - 4) % 6 + 1) + " of group " + std::to_string ((places[0] - 4) / 6 + 1);
            ASSERT_NE (complaint.find (place + ", \"" + typed[places[0]] + "\", may have been \"" + code[places[0]] + "\""), std::string::npos)
                << complaint;
        }
    }
}

TEST (TakeCode, SaysWhatIsNoCode)
{
    std::mt19937 random (3);
    Take take       = randomTake (random);
    const auto code = codeOf (take).value();

    const std::vector<std::pair<std::string, std::string>> cases {
        { "", "not a take's code" },
        { "PW", "not a take's code" },
        { "pw0" + code.substr (3), "not a take's code" },
        { code.substr (3), "not a take's code" },
        { "PW2-" + code.substr (4) + "-MORE", "later version" },
        { "PW1-", "46 letters after PW1, this one has 0" },
        { code.substr (0, code.size() - 1), "this one has 45" },
        { code + code, "this one has 95" },
        { code.substr (0, 5) + "O" + code.substr (6), "letter 2 of group 1, \"O\", is in no code" },
        { code.substr (0, 10) + std::string (1, '\0') + code.substr (11), "letter 1 of group 2, a sign that is no letter" },
        { code.substr (0, code.size() - 1) + "o", "letter 6 of group 9" },
        { std::string (1 << 20, 'P'), "not a take's code" },
        { "PW1" + std::string (1 << 20, 'Q'), "this one has 1048576" },
        { std::string (1 << 20, '-') + code, "" },
        { code.substr (0, 3) + "\u2013\u00a0" + code.substr (4), "" }
    };

    for (const auto& [text, complaint] : cases)
        if (complaint.empty())
            EXPECT_EQ (complaintAbout (text), "");
        else
            EXPECT_NE (complaintAbout (text).find (complaint), std::string::npos) << text.substr (0, 80) << ": " << complaintAbout (text);

    // What a counter, a step of the settings or the fields do not hold.
    const auto hasNone = [&] (auto change)
    {
        auto changed = openingTake (0);
        change (changed);
        return ! codeOf (changed).has_value();
    };

    EXPECT_TRUE (hasNone ([] (Take& t) { t.settings.seed = 5; }));
    EXPECT_TRUE (hasNone ([] (Take& t) { t.settings.swing = 0.12345f; }));
    EXPECT_TRUE (hasNone ([] (Take& t) { t.stream = 1; }));
    EXPECT_TRUE (hasNone ([] (Take& t) { t.stream = 108; }));
    EXPECT_TRUE (hasNone ([] (Take& t) { t.bars = 193; }));
    EXPECT_TRUE (hasNone ([] (Take& t) { t.tempo = 29; }));
}

} // namespace pulsewright
