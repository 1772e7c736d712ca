// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The player's controls as one value: everything the generator is allowed to know.

#pragma once

#include "DrumPattern.h"
#include "Genre.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

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

    bool operator== (const GenerationSettings&) const = default;
};

//==============================================================================
/** One of the player's controls. */
struct Setting
{
    /** Position of its parameter in the host's list, which also contains the choices. Never change one; a new parameter goes last. */
    int listed;

    float GenerationSettings::*field;
    const char* id;   ///< of the parameter; the command line has '-' for '_'
    const char* name; ///< as hosts show it
    bool isMacro;     ///< a style macro, which mutations nudge; else a lane's probability
    const char* help; ///< what it does
};

/** All of them, in the order of GenerationSettings::values(). A new one is a row here, last, and a field above: what is
    drawn and nudged for the others does not change. The defaults are the fields'.
*/
// clang-format off
inline constexpr std::array<Setting, GenerationSettings::numValues> allSettings
{{
    {  1, &GenerationSettings::density,          "density",                "Density",                true,  "How many optional hits are played" },
    {  2, &GenerationSettings::energy,           "energy",                 "Energy",                 true,  "Loudness, and the length of fills" },
    {  3, &GenerationSettings::syncopation,      "syncopation",            "Syncopation",            true,  "Weight of off-beat kicks and percussion" },
    {  4, &GenerationSettings::swing,            "swing",                  "Swing",                  true,  "Delay of odd sixteenths" },
    {  5, &GenerationSettings::variation,        "variation",              "Variation",              true,  "Ghost notes, rolls, change from bar to bar" },
    {  6, &GenerationSettings::experimental,     "experimental",           "Experimental",           true,  "The wandering toms, from 32 % on" },
    {  7, &GenerationSettings::timing,           "timing",                 "Timing Humanize",        true,  "Humanised timing" },
    {  8, &GenerationSettings::velocity,         "velocity",               "Velocity Humanize",      true,  "Humanised velocity" },
    { 14, &GenerationSettings::kickProbability,  "kick_probability",       "Kick Probability",       false, "Scales the chance of every kick" },
    { 15, &GenerationSettings::snareProbability, "snare_probability",      "Snare Probability",      false, "Scales the chance of every snare" },
    { 16, &GenerationSettings::hatsProbability,  "hats_probability",       "Hats Probability",       false, "Scales the chance of every hat" },
    { 17, &GenerationSettings::percProbability,  "percussion_probability", "Percussion Probability", false, "Scales the chance of all percussion" }
}};
// clang-format on

static_assert (allSettings.back().field != nullptr, "numValues counts more values than there are rows");

/** The row of a field. */
constexpr const Setting& settingOf (float GenerationSettings::*field) noexcept
{
    return *std::find_if (allSettings.begin(), allSettings.end(), [field] (const auto& setting) { return setting.field == field; });
}

inline constexpr auto numMacros =
    static_cast<std::size_t> (std::count_if (allSettings.begin(), allSettings.end(), [] (const auto& setting) { return setting.isMacro; }));

/** The steps that the controls move in. */
inline constexpr float settingInterval = 0.001f;

/** The value from 0 to 1 that a control takes when it is set to another one. Single precision throughout, as in the
    parameters' own range, which a tool without JUCE does not have: 0.48f becomes 0.48000002f.
*/
float snapPercent (float value) noexcept;

/** The salt of a take: what the plug-in's seed counter means to the generator. Never 0. */
std::uint32_t saltOf (std::uint32_t seedCounter) noexcept;

/** The counter that has this salt; no counter has 0. */
std::optional<std::uint32_t> counterOf (std::uint32_t salt) noexcept;

} // namespace pulsewright
