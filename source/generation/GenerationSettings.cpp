// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "GenerationSettings.h"

#include <algorithm>

namespace pulsewright
{

void GenerationSettings::setValues (const std::array<float, numValues>& values) noexcept
{
    // min (1, max (0, v)) in this argument order, so that a NaN ends at 0.
    const auto clamped = [&values] (std::size_t index) { return std::min (1.0f, std::max (0.0f, values[index])); };

    density          = clamped (0);
    energy           = clamped (1);
    syncopation      = clamped (2);
    swing            = clamped (3);
    variation        = clamped (4);
    experimental     = clamped (5);
    timing           = clamped (6);
    velocity         = clamped (7);
    kickProbability  = clamped (8);
    snareProbability = clamped (9);
    hatsProbability  = clamped (10);
    percProbability  = clamped (11);
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
