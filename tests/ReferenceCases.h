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
        auto all = settings.values();
        std::ranges::transform (allSettings, all.begin(), [&] (const auto& setting) { return values->value (setting.id, settings.*setting.field); });
        settings.setValues (all);
    }

    return settings;
}

/** The pattern that a case's genre, section, bars, seed and salt ask for. */
inline DrumPattern generate (const nlohmann::json& c)
{
    return GrooveGenerator::generate (settingsOf (c), static_cast<SectionType> (c.at ("section").get<std::uint32_t>()), c.at ("bars"), c.at ("seed"));
}

/** Hits as the cases have them. Starts that agree to a millionth of a beat are taken as the case's own. */
inline nlohmann::json jsonOf (const std::vector<DrumHit>& hits, const nlohmann::json& expected)
{
    auto result = nlohmann::json::array();
    for (const auto& hit : hits)
    {
        result.push_back ({ hit.start, hit.length, hit.note, hit.velocity, hit.lane });
        if (const auto i = result.size() - 1; i < expected.size() && std::abs (expected[i][0].get<double>() - hit.start) <= 1e-6)
            result[i][0] = expected[i][0];
    }
    return result;
}

inline void expectSame (const nlohmann::json& made, const nlohmann::json& expected)
{
    EXPECT_EQ (nlohmann::json::diff (expected, made), nlohmann::json::array()); // what to change in the one to get the other
}

inline void expectPattern (const DrumPattern& p, const nlohmann::json& expected)
{
    expectSame ({ { "name", p.name },
                  { "sectionType", p.sectionType },
                  { "bars", p.bars },
                  { "seed", p.seed },
                  { "hits", jsonOf (p.hits, expected.at ("hits")) } },
                expected);
}

inline void expectSong (const SongArrangement& song, const nlohmann::json& expected)
{
    EXPECT_EQ (song.name, expected.at ("name").get<std::string>());
    EXPECT_EQ (song.totalBars, expected.at ("totalBars").get<std::uint32_t>());
    EXPECT_EQ (song.seed, expected.at ("seed").get<std::uint32_t>());
    ASSERT_EQ (song.sections.size(), expected.at ("sections").size());

    for (std::size_t i = 0; i < song.sections.size(); ++i)
    {
        const auto& [name, startBar, p] = song.sections[i];
        const auto& e                   = expected.at ("sections")[i];
        const std::vector<DrumHit> firstHits (p.hits.begin(),
                                              p.hits.begin() + static_cast<std::ptrdiff_t> (std::min (p.hits.size(), e.at ("firstHits").size())));
        EXPECT_EQ (p.name, name);
        expectSame ({ { "name", name },
                      { "startBar", startBar },
                      { "bars", p.bars },
                      { "sectionType", p.sectionType },
                      { "seed", p.seed },
                      { "hitCount", p.hits.size() },
                      { "firstHits", jsonOf (firstHits, e.at ("firstHits")) } },
                    e);
    }
}

} // namespace pulsewright::reference
