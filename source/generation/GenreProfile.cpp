// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "GenreProfile.h"

#include <array>

namespace pulsewright
{

namespace
{
    constexpr auto kick  = DrumLane::kick;
    constexpr auto snare = DrumLane::snare;
    constexpr auto hats  = DrumLane::hats;
    constexpr auto perc  = DrumLane::perc;

    constexpr Chance dens { .density = 1.0 };
    constexpr Chance sync { .syncopation = 1.0 };
    constexpr Chance vari { .variation = 1.0 };

    constexpr Chance never {};
    constexpr double always = 1.0;

    constexpr BarChance evenOrOdd (Chance even, Chance odd) noexcept
    {
        return { even, odd };
    }

    using enum Stroke;

    // clang-format off

    //==============================================================================
    // Kick and snare, the first to be placed in every bar.

    constexpr Candidate boomBapBeat[] // and Jazz-Hop's
    {
        // lane  note               beat  accent  chance
        { kick,  note::kick,        0.0,   0.45,  always },
        { kick,  note::kick,        1.5,   0.0,   0.45 * dens + 0.45 },
        { kick,  note::kick,        2.5,   0.15,  0.28 * dens + 0.62 },
        { kick,  note::kick,        3.25, -0.1,   evenOrOdd (0.45 * sync, 0.9 * sync) },
        { snare, note::snare,       1.0,   0.35,  always },
        { snare, note::snare,       3.0,   0.48,  always }
    };

    constexpr Candidate trapBeat[]
    {
        // lane  note               beat  accent  chance
        { kick,  note::kick,        0.0,   0.5,   always },
        { kick,  note::kick,        1.75,  0.05,  0.45 * dens + 0.35 },
        { kick,  note::kick,        2.75,  0.2,   0.5 * sync + 0.4 },
        { kick,  note::kick,        3.5,   0.0,   evenOrOdd (Chance { 0.12 }, vari) },
        { snare, note::snare,       2.0,   0.5,   always },
        { snare, note::secondSnare, 3.75, -0.2,   evenOrOdd (never, 0.7 * vari) }
    };

    constexpr Candidate dubBeat[]
    {
        // lane  note               beat  accent  chance
        { kick,  note::kick,        0.0,   0.5,   0.9 }, // a bar of Dub may open without its kick
        { kick,  note::kick,        2.5,   0.1,   0.48 * dens + 0.22 },
        { snare, note::snare,       3.0,   0.36,  0.86 }
    };

    constexpr Candidate houseBeat[]
    {
        // lane  note               beat  accent  chance
        { kick,  note::kick,        0.0,   0.45,  always },
        { kick,  note::kick,        1.0,   0.45,  always },
        { kick,  note::kick,        2.0,   0.45,  always },
        { kick,  note::kick,        3.0,   0.45,  always },
        { snare, note::snare,       1.0,   0.25,  0.2 * dens + 0.78 },
        { snare, note::snare,       3.0,   0.3,   0.2 * dens + 0.78 }
    };

    constexpr Candidate drumAndBassBeat[]
    {
        // lane  note               beat  accent  chance
        { kick,  note::kick,        0.0,   0.5,   always },
        { kick,  note::kick,        1.75,  0.1,   0.4 * sync + 0.55 },
        { kick,  note::kick,        2.5,   0.05,  0.5 * dens + 0.35 },
        { snare, note::snare,       1.0,   0.5,   always },
        { snare, note::snare,       3.0,   0.55,  always },
        { snare, note::secondSnare, 2.75, -0.55,  0.5 * vari + 0.25, ghost }
    };

    constexpr Candidate electronicBeat[]
    {
        // lane  note               beat  accent  chance
        { kick,  note::kick,        0.0,   0.42,  always },
        { kick,  note::kick,        1.0,   0.42,  0.26 * dens + 0.72 },
        { kick,  note::kick,        2.0,   0.42,  0.26 * dens + 0.72 },
        { kick,  note::kick,        3.0,   0.42,  0.26 * dens + 0.72 },
        { snare, note::snare,       1.0,   0.3,   always },
        { snare, note::snare,       3.0,   0.36,  always },
        { kick,  note::kick,        2.75, -0.2,   0.58 * sync }
    };

    //==============================================================================
    // The layers on top of the beat.

    constexpr Candidate offBeatOpenHats[]
    {
        // lane  note               beat  accent  chance
        { hats,  note::openHat,     0.5,   0.18,  0.4 * dens + 0.55 },
        { hats,  note::openHat,     1.5,   0.18,  0.4 * dens + 0.55 },
        { hats,  note::openHat,     2.5,   0.18,  0.4 * dens + 0.55 },
        { hats,  note::openHat,     3.5,   0.18,  0.4 * dens + 0.55 }
    };

    constexpr Candidate ghostSnareFigure[]
    {
        // lane  note               beat  accent  chance
        { snare, note::secondSnare, 0.75, -0.6,   0.48 * vari + 0.18, ghost },
        { snare, note::secondSnare, 2.75, -0.6,   0.52 * vari + 0.24, ghost }
    };

    constexpr Candidate dubPercussion[]
    {
        // lane  note               beat  accent  chance
        { perc,  note::sideStick,   1.75, -0.2,   0.45 * dens + 0.2 },
        { perc,  note::highTom,     3.5,  -0.1,   0.5 * vari }
    };

    constexpr Candidate clubPercussion[] // House and Electronic
    {
        // lane  note               beat  accent  chance
        { perc,  note::sideStick,   1.5,  -0.1,   0.56 * sync },
        { perc,  note::sideStick,   3.5,   0.0,   0.62 * sync }
    };

    constexpr Candidate jazzHopPercussion[]
    {
        // lane  note               beat  accent  chance               stroke, base velocity
        { perc,  note::sideStick,   1.5,   0.0,   0.45 * dens + 0.4,   soft, 61 },
        { perc,  note::sideStick,   3.5,   0.05,  0.4 * dens + 0.5 }
    };

    //==============================================================================
    constexpr ClosedHats steadyHats      { .onBeat = 0.22 * dens + 0.76, .offBeat = 0.22 * dens + 0.76 };
    constexpr ClosedHats sixteenthHats   { .onBeat = 0.22 * dens + 0.76, .offBeat = 0.22 * dens + 0.76, .alwaysSixteenths = true };
    constexpr ClosedHats jazzHopHats     { .onBeat = 0.22 * dens + 0.76, .offBeat = 0.22 * dens + 0.76, .onBeatScale = 0.72, .offBeatScale = 0.9 };
    constexpr ClosedHats betweenBeatHats { .onBeat = Chance { 0.18 },    .offBeat = 0.35 * dens + 0.52 }; // Dub breathes between the beats

    constexpr std::array<GenreProfile, genreCount> profiles
    {{
        { .name = "Boom Bap",    .tempoBpm =  90, .averageSongSeconds = 210, .closedHats = steadyHats,
          .kicksAndSnares = boomBapBeat, .ghostSnares = ghostSnareFigure },

        { .name = "Trap",        .tempoBpm = 140, .averageSongSeconds = 165, .closedHats = sixteenthHats, .hasHatRolls = true,
          .kicksAndSnares = trapBeat },

        { .name = "Dub",         .tempoBpm =  74, .averageSongSeconds = 270, .closedHats = betweenBeatHats,
          .kicksAndSnares = dubBeat, .percussion = dubPercussion },

        { .name = "House",       .tempoBpm = 124, .averageSongSeconds = 240, .closedHats = steadyHats,
          .kicksAndSnares = houseBeat, .openHats = offBeatOpenHats, .percussion = clubPercussion },

        { .name = "Drum & Bass", .tempoBpm = 174, .averageSongSeconds = 240, .closedHats = sixteenthHats,
          .kicksAndSnares = drumAndBassBeat, .ghostSnares = ghostSnareFigure },

        { .name = "Jazz-Hop",    .tempoBpm =  84, .averageSongSeconds = 195, .closedHats = jazzHopHats,
          .kicksAndSnares = boomBapBeat, .ghostSnares = ghostSnareFigure, .percussion = jazzHopPercussion },

        { .name = "Electronic",  .tempoBpm = 128, .averageSongSeconds = 225, .closedHats = steadyHats,
          .kicksAndSnares = electronicBeat, .openHats = offBeatOpenHats, .percussion = clubPercussion }
    }};

    static_assert (! profiles.back().name.empty(), "a genre has no profile: one for each in Genre.h, in the same order");

    constexpr GenreProfile unknownProfile { .name = "Unknown", .tempoBpm = 120, .averageSongSeconds = 210, .closedHats = steadyHats };

    // clang-format on
} // namespace

const GenreProfile& profileOf (Genre genre) PULSEWRIGHT_NONBLOCKING
{
    const auto index = static_cast<std::size_t> (genre);
    return index < profiles.size() ? profiles[index] : unknownProfile;
}

std::string_view nameOf (Genre genre) noexcept
{
    return profileOf (genre).name;
}

} // namespace pulsewright
