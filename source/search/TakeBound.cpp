// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "TakeBound.h"

#include <algorithm>
#include <cstdlib>

namespace pulsewright
{

namespace
{
    /** Where and how loud a candidate may be, whatever the dice say. */
    struct Possible
    {
        DrumLane lane;
        std::uint32_t note;
        DrumHit least, most; ///< the earliest and softest, the latest and loudest
    };

    Possible possibilitiesOf (const GroovePlan& plan, const OfferedStroke& stroke, std::int32_t bar)
    {
        constexpr std::uint32_t highestDraw = 0xFFFFFFu;
        return { stroke.lane, stroke.note, plan.hitOf (stroke, bar, 0, 0), plan.hitOf (stroke, bar, highestDraw, highestDraw) };
    }

    /** Whether one of two may be dropped because they double one another. */
    bool mayDouble (const Possible& a, const Possible& b) noexcept
    {
        constexpr double apart = 0.021; // beats; normalise() says 0.02
        return a.note == b.note && a.least.start < b.most.start + apart && b.least.start < a.most.start + apart;
    }

    Distance lowest (Distance value, Distance other) noexcept
    {
        return std::min (value, other);
    }

    /** What a played candidate adds in a lane with an example, where every stroke of it counts as missing already. */
    Distance besideExample (const Possible& possible, const std::vector<TargetStroke>& wanted, std::int32_t bars)
    {
        const auto softest = GrooveTarget::massOf (possible.least.velocity), loudest = GrooveTarget::massOf (possible.most.velocity);
        const auto first = GrooveTarget::tickOf (possible.least.start, bars), last = GrooveTarget::tickOf (possible.most.start, bars);
        auto least = Distance { softest } * GrooveTarget::reach;

        for (const auto& stroke : wanted)
        {
            const auto nearest = first <= last ? std::clamp (stroke.tick, first, last) : stroke.tick; // across the pattern's end: anywhere
            const auto missing = Distance { stroke.mass } * GrooveTarget::reach;

            for (const auto mass : { softest, std::clamp (stroke.mass, softest, loudest) })
                least = lowest (least, GrooveTarget::between ({ nearest, mass }, stroke) - missing);
        }

        return least;
    }

    Distance besideShape (const Possible& possible, std::string_view signs, std::int32_t bars)
    {
        const auto cost = [&] (char sign) -> Distance
        {
            if (sign == '.')
                return Distance { GrooveTarget::massOf (possible.least.velocity) } * GrooveTarget::reach;

            const auto wrong =
                lowest (GrooveTarget::misplayed (sign, possible.least.velocity), GrooveTarget::misplayed (sign, possible.most.velocity));
            return lowest (0, wrong - GrooveTarget::missing (sign));
        };

        const auto last = GrooveTarget::columnOf (possible.most.start, bars);
        auto column     = GrooveTarget::columnOf (possible.least.start, bars);
        auto least      = cost (signs[column]);

        while (column < last)
            least = lowest (least, cost (signs[++column]));

        return least;
    }

    Distance added (const Possible& possible, const GrooveTarget& target)
    {
        const auto lane    = static_cast<std::size_t> (possible.lane);
        const auto& wanted = target.lane (lane);

        return wanted.kind == TargetLane::Kind::any     ? 0
             : wanted.kind == TargetLane::Kind::example ? GrooveTarget::weightOf (lane) * besideExample (possible, wanted.strokes, target.bars())
                                                        : GrooveTarget::weightOf (lane) * besideShape (possible, wanted.signs, target.bars());
    }

    /** Rounded down, so that a bound stays one. */
    std::int32_t inSteps (Distance distance) noexcept
    {
        return static_cast<std::int32_t> (distance >> TakeBound::shift);
    }

    Distance allMissing (const GrooveTarget& target)
    {
        Distance sum = 0;

        for (std::size_t lane = 0; lane < laneCount; ++lane)
        {
            for (const auto& stroke : target.lane (lane).strokes)
                sum += GrooveTarget::weightOf (lane) * stroke.mass * GrooveTarget::reach;

            for (const char sign : target.lane (lane).signs)
                sum += GrooveTarget::weightOf (lane) * GrooveTarget::missing (sign);
        }

        return sum;
    }
} // namespace

TakeBound::TakeBound (const GroovePlan& plan, const GrooveTarget& target) : base (inSteps (allMissing (target)))
{
    std::vector<Possible> all;

    for (std::int32_t bar = 0; bar < plan.bars(); ++bar)
        for (const auto& stroke : plan.strokesOf (bar))
            all.push_back (possibilitiesOf (plan, stroke, bar));

    std::size_t next = 0;

    for (std::int32_t bar = 0; bar < plan.bars(); ++bar)
    {
        auto& weighed = weighedBars.emplace_back();

        for (const auto& stroke : plan.strokesOf (bar))
        {
            // Candidates of this bar and its neighbours, which may be the same stroke as this one.
            const auto& self  = all[next];
            const auto from   = next - std::min (next, GroovePlan::mostStrokesOfABar);
            const auto to     = std::min (all.size(), next + GroovePlan::mostStrokesOfABar);
            bool mayBeDropped = false;
            for (auto other = from; other < to; ++other)
                mayBeDropped = mayBeDropped || (other != next && mayDouble (self, all[other]));

            const auto weight = added (self, target);
            weighed.strokes.push_back ({ static_cast<std::int32_t> (stroke.limit), inSteps (mayBeDropped ? lowest (weight, 0) : weight) });
            ++next;
        }
    }

    std::int32_t later = 0;

    for (auto bar = weighedBars.rbegin(); bar != weighedBars.rend(); ++bar)
    {
        bar->bestLater = later;
        for (const auto& stroke : bar->strokes)
            later += std::min (0, stroke.weight);
    }
}

} // namespace pulsewright
