// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "KitTables.h"

#include <algorithm>
#include <cmath>

namespace pulsewright
{

namespace
{
    /** Samples until a stroke is over: it falls below what is audible, or is too old. */
    std::int64_t lifetimeOf (double rate, double secondsPerSample)
    {
        // Sample n is played at the age of n steps; the stroke ends after the first one that fails.
        const auto isTheLast = [=] (std::int64_t n)
        {
            const double age = advanced (0.0, secondsPerSample, n);
            return std::exp (-rate * age) < DrumSound::inaudibleLevel || age + secondsPerSample > DrumSound::longestSeconds;
        };

        std::int64_t low = 0, high = static_cast<std::int64_t> (DrumSound::longestSeconds / secondsPerSample) + 2;

        while (low < high)
        {
            const auto middle = low + (high - low) / 2;

            if (isTheLast (middle))
                high = middle;
            else
                low = middle + 1;
        }

        return low + 1;
    }
} // namespace

double advanced (double time, double step, std::int64_t count) PULSEWRIGHT_NONBLOCKING
{
    constexpr auto exponentBits = std::uint64_t { 0x7FF } << 52, oneUp = std::uint64_t { 1 } << 52;

    while (count > 0)
    {
        const double once  = time + step;
        const double twice = once + step;
        const double grown = twice - once;
        double leaps       = 0.0;

        // Between two powers of two all doubles are equally far apart: every sum grows by the same amount. Ties
        // round to even, so steps may alternate; two equal steps exclude that.
        if (time > 0.0 && once - time == grown)
        {
            const auto end    = __builtin_bit_cast(double, (__builtin_bit_cast(std::uint64_t, time) & exponentBits) + oneUp); // the next power of two
            const auto wanted = static_cast<double> (count);
            // The 2.0 is two steps of safety margin.
            leaps = time + grown * (wanted + 2.0) < end ? wanted : std::floor (std::min ((end - time) / grown - 2.0, wanted));
        }

        if (leaps >= 1.0)
        {
            time += leaps * grown; // exact: multiples of the same unit
            count -= static_cast<std::int64_t> (leaps);
        }
        else
        {
            time = once;
            --count;
        }
    }

    return time;
}

KitTables::KitTables (double sampleRate) : sampleInterval (1.0 / std::min (1e12, std::max (1.0, sampleRate)))
{
    for (int kit = 0; kit < midiOnly; ++kit)
        for (int note = 0; note < 128; ++note)
            if (const double rate = DrumSound::of (note, kit).decayRate; numCurves == 0 || curveOf (rate).rate != rate)
                curves.at (numCurves++).rate = rate; // `at` throws when there are more decay rates than curves

    for (std::size_t i = 0; i < numCurves; ++i)
    {
        auto& curve    = curves[i];
        curve.lifetime = lifetimeOf (curve.rate, sampleInterval);

        for (std::size_t k = 0; k < curve.powers.size(); ++k)
            curve.powers[k] = static_cast<float> (std::exp (-curve.rate * static_cast<double> (k) * sampleInterval));
    }

    for (std::size_t k = 0; k < sweep.size(); ++k)
        sweep[k] = std::exp (-DrumSound::sweepRate * static_cast<double> (k) * sampleInterval);
}

const DecayCurve& KitTables::curveOf (double rate) const PULSEWRIGHT_NONBLOCKING
{
    std::size_t i = 0;

    while (i + 1 < numCurves && curves[i].rate != rate)
        ++i;

    return curves[i];
}

} // namespace pulsewright
