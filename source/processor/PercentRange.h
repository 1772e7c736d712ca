// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The steps that percentages move in, for those who must land on them without a parameter tree.

#pragma once

#include <cmath>

namespace pulsewright
{

inline constexpr float percentInterval = 0.001f;

/** The value from 0 to 1 that a percentage parameter takes when it is set to another one.
    Single precision throughout, as in the parameter's own range: 0.48f becomes 0.48000002f.
*/
inline float snapPercent (float value) noexcept
{
    const float snapped = percentInterval * std::floor (value / percentInterval + 0.5f);
    return ! (snapped > 0.0f) ? 0.0f : snapped >= 1.0f ? 1.0f : snapped;
}

} // namespace pulsewright
