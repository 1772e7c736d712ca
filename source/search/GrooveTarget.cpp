// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "GrooveTarget.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace pulsewright
{

namespace
{
    constexpr std::int32_t early         = GrooveTarget::ticksPerBeat / 16; // before the end: nothing that is generated lies there
    constexpr std::size_t columnsPerBeat = 4;

    /** Of two strokes of a lane so close together, in ticks, a fold keeps the louder one. */
    constexpr std::int32_t sameStroke = GrooveTarget::ticksPerBeat / 16;

    Distance massAlone (const TargetStroke& stroke) noexcept
    {
        return Distance { stroke.mass } * GrooveTarget::reach;
    }

    bool isEarlier (const TargetStroke& a, const TargetStroke& b) noexcept
    {
        return a.tick < b.tick;
    }

    /** The cheapest alignment of two sequences in the order of time. Strokes that are `reach` ticks or more apart
        are never paired, so that a row holds only the strokes within reach of one.
    */
    Distance distanceBetween (const std::vector<TargetStroke>& played, const std::vector<TargetStroke>& wanted, std::vector<Distance>& row)
    {
        std::size_t low = 0, high = 0; // the wanted strokes within reach
        row.assign (wanted.size() + 1, 0);

        for (const auto& stroke : played)
        {
            for (; high < wanted.size() && wanted[high].tick < stroke.tick + GrooveTarget::reach; ++high)
                row[high + 1] = row[high] + massAlone (wanted[high]);

            while (low < high && wanted[low].tick <= stroke.tick - GrooveTarget::reach)
                ++low;

            Distance paired = row[low]; // of the row before, one to the left
            row[low] += massAlone (stroke);

            for (auto i = low; i < high; ++i)
            {
                const auto above = row[i + 1];
                row[i + 1] =
                    std::min ({ above + massAlone (stroke), row[i] + massAlone (wanted[i]), paired + GrooveTarget::between (stroke, wanted[i]) });
                paired = above;
            }
        }

        for (; high < wanted.size(); ++high)
            row[high + 1] = row[high] + massAlone (wanted[high]);

        return row[wanted.size()];
    }

    void sortInTime (std::vector<TargetStroke>& strokes)
    {
        if (! std::is_sorted (strokes.begin(), strokes.end(), isEarlier))
            std::stable_sort (strokes.begin(), strokes.end(), isEarlier);
    }

    void keepTheLouder (std::vector<TargetStroke>& strokes)
    {
        std::size_t kept = 0;

        for (const auto& stroke : strokes)
            if (kept > 0 && stroke.tick - strokes[kept - 1].tick < sameStroke)
                strokes[kept - 1] = stroke.mass > strokes[kept - 1].mass ? stroke : strokes[kept - 1];
            else
                strokes[kept++] = stroke;

        strokes.resize (kept);
    }
} // namespace

Distance GrooveTarget::between (const TargetStroke& a, const TargetStroke& b) noexcept
{
    const auto apart = std::min (reach, std::abs (a.tick - b.tick));
    return Distance { std::abs (a.mass - b.mass) } * reach + Distance { std::min (a.mass, b.mass) } * 2 * apart;
}

std::int32_t GrooveTarget::tickOf (double start, std::int32_t bars) noexcept
{
    const auto length = bars * beatsPerBar * ticksPerBeat;
    const auto tick   = static_cast<std::int32_t> (std::floor (start * ticksPerBeat + 0.5));
    return tick > length - early ? tick - length : tick;
}

std::size_t GrooveTarget::columnOf (double start, std::int32_t bars) noexcept
{
    const auto columns = static_cast<std::size_t> (bars) * beatsPerBar * columnsPerBeat;
    return std::min (columns - 1, static_cast<std::size_t> (start * columnsPerBeat + 0.5));
}

Distance GrooveTarget::missing (char sign) noexcept
{
    constexpr std::uint32_t usual = 100;
    return sign == 'x' ? Distance { massOf (usual) } * reach
         : sign == 'o' ? Distance { massOf (loudestSoft) } * reach
         : sign == '#' ? Distance { massOf (softestAccent) } * reach
                       : 0;
}

Distance GrooveTarget::misplayed (char sign, std::uint32_t loudest) noexcept
{
    if (sign == 'o' && loudest > loudestSoft)
        return Distance { loudest - loudestSoft } * reach;

    if (sign == '#' && loudest < softestAccent)
        return Distance { softestAccent - loudest } * reach;

    return 0;
}

//==============================================================================
void GrooveTarget::setExample (const std::vector<DrumHit>& hits, std::int32_t exampleBars)
{
    const double length = static_cast<double> (numBars) * beatsPerBar, exampleLength = static_cast<double> (exampleBars) * beatsPerBar;
    const bool isFolded = exampleBars > numBars;

    for (std::size_t index = 0; index < laneCount; ++index)
    {
        auto& lane = lanes[index];
        lane       = { .kind = TargetLane::Kind::example, .strokes = {}, .signs = {} };

        const double step = isFolded ? length : exampleLength;

        for (const auto& hit : hits)
            if (static_cast<std::size_t> (hit.lane) == index)
                for (int copy = 0; std::fmod (hit.start, length) + copy * step < length; ++copy)
                    lane.strokes.push_back ({ tickOf (std::fmod (hit.start, length) + copy * step, numBars), massOf (hit.velocity) });

        sortInTime (lane.strokes);

        if (isFolded)
            keepTheLouder (lane.strokes);
    }
}

void GrooveTarget::setShape (DrumLane laneToSet, std::string_view signs)
{
    auto& lane = lanes[static_cast<std::size_t> (laneToSet)];
    lane       = { .kind = TargetLane::Kind::shape, .strokes = {}, .signs = {} };

    for (std::size_t column = 0; column < static_cast<std::size_t> (numBars) * beatsPerBar * columnsPerBeat; ++column)
        lane.signs += signs[column % signs.size()];
}

Distance GrooveTarget::distanceOfShape (const TargetLane& wanted, std::size_t lane, const DrumPattern& pattern, Scratch& scratch) const
{
    auto& loudest = scratch.loudest;
    loudest.assign (wanted.signs.size(), 0);
    Distance sum = 0;

    for (const auto& hit : pattern.hits)
        if (static_cast<std::size_t> (hit.lane) == lane)
        {
            const auto column = columnOf (hit.start, numBars);
            loudest[column]   = std::max (loudest[column], hit.velocity);

            if (wanted.signs[column] == '.')
                sum += Distance { massOf (hit.velocity) } * reach;
        }

    for (std::size_t column = 0; column < loudest.size(); ++column)
        sum += loudest[column] == 0 ? missing (wanted.signs[column]) : misplayed (wanted.signs[column], loudest[column]);

    return sum;
}

Distance GrooveTarget::distanceTo (const DrumPattern& pattern, Scratch& scratch) const
{
    for (auto& strokes : scratch.strokes)
        strokes.clear();

    for (const auto& hit : pattern.hits)
        if (const auto lane = static_cast<std::size_t> (hit.lane); lane < laneCount)
            scratch.strokes[lane].push_back ({ tickOf (hit.start, numBars), massOf (hit.velocity) });

    Distance sum = 0;

    for (std::size_t lane = 0; lane < laneCount; ++lane)
    {
        const auto& wanted = lanes[lane];
        sortInTime (scratch.strokes[lane]);

        sum += wanted.kind == TargetLane::Kind::any     ? 0
             : wanted.kind == TargetLane::Kind::example ? weightOf (lane) * distanceBetween (scratch.strokes[lane], wanted.strokes, scratch.row)
                                                        : weightOf (lane) * distanceOfShape (wanted, lane, pattern, scratch);
    }

    return sum;
}

} // namespace pulsewright
