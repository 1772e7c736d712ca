// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Reads the reference cases of tests/data, which an independent model of the generator made.

#pragma once

#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace pulsewright::reference
{

inline std::filesystem::path dataFile (const std::string& name)
{
    return std::filesystem::path (PULSEWRIGHT_TEST_DATA) / name;
}

inline nlohmann::json readCases (const std::string& name)
{
    std::ifstream file (dataFile (name));

    if (! file)
        throw std::runtime_error ("Missing reference file " + name);

    return nlohmann::json::parse (file);
}

inline GenerationSettings settingsOf (const nlohmann::json& c)
{
    GenerationSettings settings;
    settings.genre = static_cast<Genre> (c.at ("genre").get<std::uint32_t>());
    settings.seed  = c.at ("salt").get<std::uint32_t>();

    if (const auto values = c.find ("settings"); values != c.end())
    {
        constexpr std::array names { "density", "energy",   "syncopation", "swing", "variation", "experimental",
                                     "timing",  "velocity", "kick",        "snare", "hats",      "perc" };
        std::array<float, names.size()> all {};
        std::ranges::transform (names, all.begin(), [&] (const char* name) { return values->at (name).get<float>(); });
        settings.setValues (all);
    }

    return settings;
}

/** The pattern that a case's genre, section, bars, seed and salt ask for. */
inline DrumPattern generate (const nlohmann::json& c)
{
    return GrooveGenerator::generate (settingsOf (c), static_cast<SectionType> (c.at ("section").get<std::uint32_t>()), c.at ("bars"), c.at ("seed"));
}

/** Starts agree to a millionth of a beat, everything else exactly. */
inline void expectHits (const std::vector<DrumHit>& hits, const nlohmann::json& expected)
{
    for (std::size_t i = 0; i < std::min (hits.size(), expected.size()); ++i)
    {
        SCOPED_TRACE ("hit " + std::to_string (i));
        EXPECT_NEAR (hits[i].start, expected[i][0].get<double>(), 1e-6);
        EXPECT_EQ (hits[i].length, expected[i][1].get<double>());
        EXPECT_EQ (hits[i].note, expected[i][2].get<std::uint32_t>());
        EXPECT_EQ (hits[i].velocity, expected[i][3].get<std::uint32_t>());
        EXPECT_EQ (static_cast<std::uint32_t> (hits[i].lane), expected[i][4].get<std::uint32_t>());
    }
}

inline void expectPattern (const DrumPattern& pattern, const nlohmann::json& expected)
{
    EXPECT_EQ (pattern.name, expected.at ("name").get<std::string>());
    EXPECT_EQ (static_cast<std::uint32_t> (pattern.sectionType), expected.at ("sectionType").get<std::uint32_t>());
    EXPECT_EQ (pattern.bars, expected.at ("bars").get<int>());
    EXPECT_EQ (pattern.seed, expected.at ("seed").get<std::uint32_t>());
    ASSERT_EQ (pattern.hits.size(), expected.at ("hits").size());
    expectHits (pattern.hits, expected.at ("hits"));
}

inline void expectSong (const SongArrangement& song, const nlohmann::json& expected)
{
    EXPECT_EQ (song.name, expected.at ("name").get<std::string>());
    EXPECT_EQ (song.totalBars, expected.at ("totalBars").get<std::uint32_t>());
    EXPECT_EQ (song.seed, expected.at ("seed").get<std::uint32_t>());
    ASSERT_EQ (song.sections.size(), expected.at ("sections").size());

    for (std::size_t i = 0; i < song.sections.size(); ++i)
    {
        const auto& section = song.sections[i];
        const auto& e       = expected.at ("sections")[i];
        SCOPED_TRACE (section.name);

        EXPECT_EQ (section.name, e.at ("name").get<std::string>());
        EXPECT_EQ (section.pattern.name, section.name);
        EXPECT_EQ (section.startBar, e.at ("startBar").get<std::uint32_t>());
        EXPECT_EQ (section.pattern.bars, e.at ("bars").get<int>());
        EXPECT_EQ (static_cast<std::uint32_t> (section.pattern.sectionType), e.at ("sectionType").get<std::uint32_t>());
        EXPECT_EQ (section.pattern.seed, e.at ("seed").get<std::uint32_t>());
        ASSERT_EQ (section.pattern.hits.size(), e.at ("hitCount").get<std::size_t>());
        expectHits (section.pattern.hits, e.at ("firstHits"));
    }
}

} // namespace pulsewright::reference
