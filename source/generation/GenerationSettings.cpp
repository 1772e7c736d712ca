// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "GenerationSettings.h"

#include <algorithm>

namespace pulsewright
{

namespace
{
    using Settings = GenerationSettings;

    // The order in which values are handed over, here and in the parameters' list.
    constexpr std::array<float Settings::*, Settings::numValues> fields {
        &Settings::density,         &Settings::energy,           &Settings::syncopation,     &Settings::swing,
        &Settings::variation,       &Settings::experimental,     &Settings::timing,          &Settings::velocity,
        &Settings::kickProbability, &Settings::snareProbability, &Settings::hatsProbability, &Settings::percProbability
    };

    static_assert (fields.back() != nullptr, "numValues counts more values than there are fields");
} // namespace

void GenerationSettings::setValues (const std::array<float, numValues>& newValues) noexcept
{
    for (std::size_t i = 0; i < fields.size(); ++i)
        this->*fields[i] = std::min (1.0f, std::max (0.0f, newValues[i])); // in this order of arguments a NaN ends at 0
}

std::array<float, GenerationSettings::numValues> GenerationSettings::values() const noexcept
{
    std::array<float, numValues> result {};

    for (std::size_t i = 0; i < fields.size(); ++i)
        result[i] = this->*fields[i];

    return result;
}

float GenerationSettings::probabilityOf (DrumLane lane) const noexcept
{
    switch (lane)
    {
        case DrumLane::kick: return kickProbability;
        case DrumLane::snare: return snareProbability;
        case DrumLane::hats: return hatsProbability;
        case DrumLane::perc: return percProbability;
    }

    return 0.0f;
}

std::uint32_t saltOf (std::uint32_t seedCounter) noexcept
{
    // Not the constant that mixes the seeds: takes and sections shall not fall on one another.
    const std::uint32_t salt = GenerationSettings::defaultSalt - seedCounter * 0x61C8864Fu;
    return salt != 0 ? salt : 1;
}

} // namespace pulsewright
