// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "TakeBound.h"

#include <algorithm>
#include <limits>
#include <span>
#include <string_view>

namespace pulsewright
{

/** Where and how loud a candidate may be, whatever the dice say. */
struct TakeBound::Possible
{
    DrumLane lane;
    std::uint32_t note;
    DrumHit least, most; ///< the earliest and softest, the latest and loudest
};

namespace
{
    using Possible = TakeBound::Possible;

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

    constexpr auto nothing = std::numeric_limits<std::size_t>::max();

    /** What a played candidate adds at best, and the stroke or the column of the target that it stands for. */
    struct Addition
    {
        Distance distance;
        std::size_t place = nothing;

        void take (Addition other) noexcept
        {
            if (other.distance < distance)
                *this = other;
        }
    };

    /** An example's stroke that several candidates can match, and its price, 0 or below: each of them subtracts that much less. */
    struct Surplus
    {
        std::size_t place = nothing;
        Distance worth    = 0;
    };

    Distance massAlone (std::int32_t mass) noexcept
    {
        return Distance { mass } * GrooveTarget::reach;
    }

    Addition besideExample (const Possible& possible, const std::vector<TargetStroke>& wanted, std::int32_t bars, const Surplus& surplus)
    {
        const auto softest = GrooveTarget::massOf (possible.least.velocity), loudest = GrooveTarget::massOf (possible.most.velocity);
        const auto first = GrooveTarget::tickOf (possible.least.start, bars), last = GrooveTarget::tickOf (possible.most.start, bars);
        Addition least { massAlone (softest) };

        for (std::size_t i = 0; i < wanted.size(); ++i)
        {
            const auto& stroke = wanted[i];
            const auto nearest = first <= last ? std::clamp (stroke.tick, first, last) : stroke.tick; // across the pattern's end: anywhere
            const auto worth   = i == surplus.place ? surplus.worth : massAlone (stroke.mass);

            for (const auto mass : { softest, std::clamp (stroke.mass, softest, loudest) })
                least.take ({ GrooveTarget::between ({ nearest, mass }, stroke) - worth, i });
        }

        return least;
    }

    Addition besideShape (const Possible& possible, std::string_view signs, std::int32_t bars)
    {
        const auto at = [&] (std::size_t column) -> Addition
        {
            const char sign = signs[column];
            const auto wrong =
                std::min (GrooveTarget::misplayed (sign, possible.least.velocity), GrooveTarget::misplayed (sign, possible.most.velocity));

            return sign == '.' ? Addition { massAlone (GrooveTarget::massOf (possible.least.velocity)) }
                               : Addition { std::min<Distance> (0, wrong - GrooveTarget::missing (sign)), column };
        };

        const auto first = GrooveTarget::columnOf (possible.least.start, bars), last = GrooveTarget::columnOf (possible.most.start, bars);
        auto least = at (first);

        for (auto column = first + 1; column <= last; ++column)
            least.take (at (column));

        if (first != last)
            least.place = nothing; // it may stand for either

        return least;
    }

    Addition added (const Possible& possible, const GrooveTarget& target, const Surplus& surplus = {})
    {
        const auto& wanted = target.lane (static_cast<std::size_t> (possible.lane));

        return wanted.kind == TargetLane::Kind::any     ? Addition { 0 }
             : wanted.kind == TargetLane::Kind::example ? besideExample (possible, wanted.strokes, target.bars(), surplus)
                                                        : besideShape (possible, wanted.signs, target.bars());
    }

    /** The correction when both of two candidates are played: one place of the target can match only one of them. */
    Distance addedTogether (const Possible& a, const Possible& b, const Addition& ofA, const Addition& ofB, const GrooveTarget& target)
    {
        const auto& wanted = target.lane (static_cast<std::size_t> (a.lane));

        if (wanted.kind == TargetLane::Kind::shape)
            return -std::max (ofA.distance, ofB.distance);

        const auto worth = massAlone (wanted.strokes[ofA.place].mass);
        const Surplus surplus { ofA.place, -massAlone (GrooveTarget::massOf (std::min (a.least.velocity, b.least.velocity))) };
        const auto served = added (a, target, surplus).distance + added (b, target, surplus).distance;
        return surplus.worth + served - (worth + ofA.distance + ofB.distance);
    }

    /** Rounded down, so that a bound stays one. */
    std::int32_t inSteps (Distance distance) noexcept
    {
        return static_cast<std::int32_t> (distance >> TakeBound::shift);
    }

    /** Candidates of this bar and its neighbours may double this one. */
    bool mayBeDropped (std::span<const Possible> all, std::size_t index) noexcept
    {
        const auto first = index - std::min (index, GroovePlan::mostStrokesOfABar);
        const auto end   = std::min (all.size(), index + GroovePlan::mostStrokesOfABar);

        for (auto other = first; other < end; ++other)
            if (other != index && mayDouble (all[index], all[other]))
                return true;

        return false;
    }

    Distance allMissing (const GrooveTarget& target)
    {
        Distance sum = 0;

        for (std::size_t lane = 0; lane < laneCount; ++lane)
        {
            for (const auto& stroke : target.lane (lane).strokes)
                sum += GrooveTarget::weightOf (lane) * massAlone (stroke.mass);

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

    for (std::size_t first = 0; static_cast<std::int32_t> (weighedBars.size()) < plan.bars(); first += weighedBars.back().strokes.size())
        weighBar (plan.strokesOf (static_cast<std::int32_t> (weighedBars.size())), all, first, target);

    std::int32_t later = 0;

    for (auto bar = weighedBars.size(); bar-- > 0;)
    {
        weighedBars[bar].bestLater = later;
        for (const auto& stroke : weighedBars[bar].strokes)
            later += std::min (0, stroke.weight);
    }
}

void TakeBound::weighBar (std::span<const OfferedStroke> offered, std::span<const Possible> all, std::size_t first, const GrooveTarget& target)
{
    auto& weighed = weighedBars.emplace_back().strokes;
    std::vector<Addition> additions;

    for (std::size_t i = 0; i < offered.size(); ++i)
    {
        const auto& self  = all[first + i];
        const auto weight = GrooveTarget::weightOf (static_cast<std::size_t> (self.lane));
        auto addition     = added (self, target);
        WeighedStroke mine { .limit = static_cast<std::int32_t> (offered[i].limit), .weight = 0 };

        if (mayBeDropped (all, first + i))
            addition = { std::min<Distance> (addition.distance, 0) };

        for (std::size_t other = 0; other < i && mine.rival < 0 && addition.place != nothing; ++other)
            if (const auto& rival = all[first + other];
                additions[other].place == addition.place && rival.lane == self.lane && ! weighed[other].isRival && weighed[other].rival < 0)
                if (const auto together = addedTogether (rival, self, additions[other], addition, target); together > 0)
                {
                    mine.rival             = static_cast<std::int32_t> (other);
                    mine.together          = inSteps (weight * together);
                    weighed[other].isRival = true;
                }

        mine.weight = inSteps (weight * addition.distance);
        weighed.push_back (mine);
        additions.push_back (addition);
    }
}

} // namespace pulsewright
