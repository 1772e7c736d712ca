// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "GenerationSettings.h"

#include <algorithm>
#include <cmath>

namespace pulsewright
{

void GenerationSettings::setValues (const std::array<float, numValues>& newValues) noexcept
{
    for (std::size_t i = 0; i < numValues; ++i)
        this->*allSettings[i].field = std::min (1.0f, std::max (0.0f, newValues[i])); // in this order of arguments a NaN ends at 0
}

std::array<float, GenerationSettings::numValues> GenerationSettings::values() const noexcept
{
    std::array<float, numValues> result {};

    for (std::size_t i = 0; i < numValues; ++i)
        result[i] = this->*allSettings[i].field;

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

float snapPercent (float value) noexcept
{
    const float snapped = settingInterval * std::floor (value / settingInterval + 0.5f);
    return ! (snapped > 0.0f) ? 0.0f : snapped >= 1.0f ? 1.0f : snapped;
}

namespace
{
    // Not the constant that mixes the seeds: a take and a section never share a random stream.
    constexpr std::uint32_t saltStep = 0x61C8864Fu;

    /** What an odd number has to be multiplied by to come to 1, modulo 2^32. */
    constexpr std::uint32_t inverseOf (std::uint32_t odd) noexcept
    {
        std::uint32_t inverse = odd; // right in its lowest three bits; each round doubles their number
        for (int bits = 3; bits < 32; bits *= 2)
            inverse *= 2u - odd * inverse;
        return inverse;
    }

    static_assert (inverseOf (saltStep) * saltStep == 1u);
} // namespace

std::uint32_t saltOf (std::uint32_t seedCounter) noexcept
{
    const std::uint32_t salt = GenerationSettings::defaultSalt - seedCounter * saltStep;
    return salt != 0 ? salt : 1;
}

std::optional<std::uint32_t> counterOf (std::uint32_t salt) noexcept
{
    return salt == 0 ? std::nullopt : std::optional ((GenerationSettings::defaultSalt - salt) * inverseOf (saltStep));
}

} // namespace pulsewright
