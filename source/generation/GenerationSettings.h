// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The player's controls as one value: everything the generator is allowed to know.

#pragma once

#include "DrumPattern.h"
#include "Genre.h"

#include <array>
#include <cstdint>

namespace pulsewright
{

/** A snapshot of the controls, each 0 to 1.

    The fields are single precision and stay so in every sum that is compared with a threshold:
    a variation of 0.62f is not above 0.62f, and a seed must play the same song on every machine.
*/
struct GenerationSettings
{
    static constexpr std::size_t numValues = 12;

    /** Used until a seed counter has chosen another salt; the salt of counter 0. */
    static constexpr std::uint32_t defaultSalt = 0xE60B2026u;

    Genre genre = Genre::boomBap;

    float density      = 0.48f; ///< how many optional hits survive
    float energy       = 0.58f; ///< loudness, and the length of fills
    float syncopation  = 0.42f; ///< weight of off-beat kicks and percussion
    float swing        = 0.18f; ///< delay of odd sixteenths
    float variation    = 0.35f; ///< ghost notes, rolls and change from bar to bar
    float experimental = 0.12f; ///< the wandering tom figure
    float timing       = 0.16f; ///< depth of the timing humanisation
    float velocity     = 0.22f; ///< depth of the velocity humanisation

    float kickProbability  = 1.0f; ///< scales the chance of every hit on the lane
    float snareProbability = 1.0f;
    float hatsProbability  = 1.0f;
    float percProbability  = 1.0f;

    std::uint32_t seed = defaultSalt; ///< salt mixed into every generation seed

    /** Stores the twelve values in field order, density first, each clamped to 0..1. A NaN becomes 0. */
    void setValues (const std::array<float, numValues>& newValues) noexcept;

    /** The twelve values in the same order. */
    std::array<float, numValues> values() const noexcept;

    /** The probability that belongs to a lane, 0 to 1. */
    float probabilityOf (DrumLane lane) const noexcept;
};

/** The salt of a take: what the plug-in's seed counter means to the generator. Never 0. */
std::uint32_t saltOf (std::uint32_t seedCounter) noexcept;

} // namespace pulsewright
