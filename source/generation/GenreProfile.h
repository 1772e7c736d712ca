// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What a drummer of each genre plays in a bar, written as tables of candidate hits.

#pragma once

#include "DrumPattern.h"
#include "Genre.h"

#include "NonBlocking.h"

#include <span>
#include <string_view>

namespace pulsewright
{

//==============================================================================
/** The settings that a chance may depend on, each 0 to 1. */
struct Mood
{
    double density     = 0.0; ///< adjusted to the section
    double syncopation = 0.0;
    double variation   = 0.0;
};

/** A linear function of the mood: the probability of a candidate before its lane's own. */
struct Chance
{
    double constant    = 0.0;
    double density     = 0.0;
    double syncopation = 0.0;
    double variation   = 0.0;

    constexpr double in (const Mood& mood) const noexcept
    {
        return density * mood.density + syncopation * mood.syncopation + variation * mood.variation + constant;
    }

    friend constexpr Chance operator* (double factor, Chance c) noexcept
    {
        return { factor * c.constant, factor * c.density, factor * c.syncopation, factor * c.variation };
    }

    friend constexpr Chance operator+ (Chance c, double more) noexcept
    {
        c.constant += more;
        return c;
    }
};

/** A chance that may differ between even and odd bars of the pattern, counted from 0. */
struct BarChance
{
    Chance evenBar, oddBar;

    constexpr BarChance (Chance everyBar) noexcept : evenBar (everyBar), oddBar (everyBar) {} // NOLINT(google-explicit-constructor): for the tables
    constexpr BarChance (double everyBar) noexcept : BarChance (Chance { everyBar }) {}       // NOLINT(google-explicit-constructor)
    constexpr BarChance (Chance even, Chance odd) noexcept : evenBar (even), oddBar (odd) {}
};

//==============================================================================
/** How the loudness of a candidate starts out. */
enum class Stroke
{
    normal,
    ghost, ///< 27 softer and never above 70
    soft   ///< from the candidate's own base velocity instead of the lane's
};

/** A hit that a bar is offered; the generator's dice decide whether it is played. */
struct Candidate
{
    DrumLane lane;
    std::uint32_t note;
    double beat;   ///< from the start of the bar
    double accent; ///< -1 to 1, the velocity 22 softer to 22 louder
    BarChance chance;
    Stroke stroke    = Stroke::normal;
    int baseVelocity = 0; ///< of a soft stroke only
};

/** The rule for the closed hats, which run on a grid of eight or sixteen steps a bar. */
struct ClosedHats
{
    Chance onBeat, offBeat;
    double onBeatScale = 1.0, offBeatScale = 1.0; ///< applied to the chance's value
    bool alwaysSixteenths = false;
};

/** All that is known of a genre. The order of the candidates is part of the music: each one draws from the dice. */
struct GenreProfile
{
    std::string_view name;
    int tempoBpm;
    int averageSongSeconds;
    ClosedHats closedHats;
    bool hasHatRolls = false;
    std::span<const Candidate> kicksAndSnares {};
    std::span<const Candidate> openHats {};
    std::span<const Candidate> ghostSnares {};
    std::span<const Candidate> percussion {};
};

/** The profile of a genre; a value that is none of them gets a plain one, "Unknown", at 120 BPM. */
const GenreProfile& profileOf (Genre genre) PULSEWRIGHT_NONBLOCKING;

} // namespace pulsewright
