// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "ReferenceCases.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace pulsewright
{

namespace
{
    GenerationSettings everyControlAt (float value)
    {
        GenerationSettings settings;
        settings.setValues ({ value, value, value, value, value, value, 0, 0, 1, 1, 1, 1 });
        return settings;
    }
} // namespace

TEST (GrooveGenerator, PlaysTheReferencePatterns)
{
    const auto cases = reference::readCases ("patterns.json").at ("patterns");
    ASSERT_EQ (cases.size(), 31u);

    for (const auto& c : cases)
    {
        SCOPED_TRACE (c.at ("pattern").at ("name").get<std::string>() + ", salt " + std::to_string (c.at ("salt").get<std::uint32_t>()));
        reference::expectPattern (reference::generate (c), c.at ("pattern"));
    }
}

TEST (GrooveGenerator, PlaysTheReferenceMutations)
{
    const auto cases = reference::readCases ("patterns.json").at ("mutations");
    ASSERT_EQ (cases.size(), 3u);

    for (const auto& c : cases)
    {
        LaneLocks locks {};
        std::ranges::transform (c.at ("locks"), locks.begin(), [] (int isLocked) { return isLocked != 0; });

        SCOPED_TRACE (c.at ("locks").dump());
        reference::expectPattern (GrooveGenerator::mutate (reference::settingsOf (c), reference::generate (c), locks, c.at ("mutateSeed")),
                                  c.at ("pattern"));
    }
}

TEST (GrooveGenerator, SaltsAreTheReferenceSalts)
{
    for (const auto& c : reference::readCases ("salts.json"))
        EXPECT_EQ (saltOf (c.at ("counter")), c.at ("salt").get<std::uint32_t>());
}

TEST (GrooveGenerator, LockedLanesSurviveMutation)
{
    const auto settings = everyControlAt (0.8f);
    const auto previous = GrooveGenerator::generate (settings, SectionType::fill, 4, 0);
    const auto locked   = GrooveGenerator::mutate (settings, previous, { true, true, true, true }, 7);

    EXPECT_EQ (locked.hits, previous.hits);
    EXPECT_EQ (GrooveGenerator::mutate (settings, locked, {}, 8).name, "Boom Bap Fill Mutated Mutated");
}

TEST (GrooveGenerator, ControlsThatAreNotNumbersOrInfiniteCountAsTheirLimits)
{
    constexpr auto nan      = std::numeric_limits<float>::quiet_NaN();
    constexpr auto infinity = std::numeric_limits<float>::infinity();

    for (const auto& [control, value, countsAs] : { std::tuple { &GenerationSettings::energy, nan, 0.0f },
                                                    { &GenerationSettings::energy, infinity, 1.0f },
                                                    { &GenerationSettings::density, nan, 0.0f },
                                                    { &GenerationSettings::velocity, infinity, 1e30f } })
    {
        auto settings     = everyControlAt (0.8f);
        auto expected     = settings;
        settings.*control = value;
        expected.*control = countsAs;

        const auto pattern = GrooveGenerator::generate (settings, SectionType::fill, 4, 0);
        EXPECT_EQ (pattern, GrooveGenerator::generate (expected, SectionType::fill, 4, 0)) << value;
        EXPECT_TRUE (std::ranges::any_of (pattern.hits, [] (const auto& hit) { return hit.velocity > 20; })) << value;
    }
}

} // namespace pulsewright
