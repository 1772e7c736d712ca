// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "GroovePlan.h"

#include "GenreProfile.h"

#include <algorithm>
#include <cmath>

namespace pulsewright
{

namespace
{
    //==============================================================================
    constexpr std::uint32_t goldenRatio = 0x9E3779B9u; // 2^32 divided by the golden ratio
    constexpr std::uint32_t hashFactor  = 0x7FEB352Du;

    constexpr std::uint32_t scramble (std::uint32_t x) noexcept
    {
        x = (x ^ (x >> 16)) * hashFactor;
        return x ^ (x >> 15);
    }

    //==============================================================================
    struct LaneFeel
    {
        int baseVelocity;
        double looseness; ///< how much of the timing humanisation the lane follows
        double hitLength; ///< in beats
    };

    // clang-format off
    constexpr std::array<LaneFeel, laneCount> laneFeels
    {{
        // velocity  looseness  length
        { 91,        0.25,      0.11 }, // kick: the anchor
        { 88,        0.48,      0.11 }, // snare
        { 66,        0.82,      0.07 }, // hats
        { 64,        1.0,       0.11 }  // perc
    }};

    constexpr std::array<std::uint32_t, 4> fillNotes { note::lowTom, note::midTom, note::highTom, note::snare };
    // clang-format on

    constexpr double swingBeats     = 0.085; // delay of an odd sixteenth at full swing
    constexpr double accentVelocity = 22.0;
    constexpr double energyVelocity = 48.0;

    /** How many of the 2^24 draws lie below a probability. What is no number lies below none. */
    std::uint32_t drawsBelow (double probability) noexcept
    {
        return probability > 0.0 ? static_cast<std::uint32_t> (std::ceil (std::min (1.0, probability) * 0x1p24)) : 0;
    }

    constexpr int tomsApart (const GenerationSettings& settings) noexcept
    {
        return settings.experimental > 0.72f ? 3 : 5; // sixteenths
    }

    bool playsToms (const GenerationSettings& settings) noexcept
    {
        return settings.experimental > 0.32f;
    }

    /** Bars alternate; the toms wander through as many as they are apart. */
    std::int32_t periodOf (const GenerationSettings& settings) noexcept
    {
        return playsToms (settings) ? 2 * tomsApart (settings) : 2;
    }

    bool leadsIntoChange (SectionType type) noexcept
    {
        return type == SectionType::preChorus || type == SectionType::verseVariation || type == SectionType::highChorus;
    }

    //==============================================================================
    /** Goes through the recipe: offers each bar its candidates in a fixed order. */
    class Drummer
    {
    public:
        Drummer (const GenerationSettings& settingsToUse, SectionType typeToPlay, std::vector<OfferedStroke>& strokesToFill)
            : settings (settingsToUse),
              profile (profileOf (settingsToUse.genre)),
              type (typeToPlay),
              strokes (strokesToFill),
              energy (inSection (settingsToUse.energy, energyOffsetOf (typeToPlay))),
              density (inSection (settingsToUse.density, 0.55f * energyOffsetOf (typeToPlay))),
              mood { density, settingsToUse.syncopation, settingsToUse.variation },
              energyLift (static_cast<int> (std::round ((static_cast<double> (energy) - 0.5) * energyVelocity)))
        {}

        void offerBar (int barToOffer, bool isLastBar)
        {
            const auto first = strokes.size();
            bar              = barToOffer;

            offerAll (profile.kicksAndSnares);
            offerClosedHats();
            offerAll (profile.openHats);
            offerHatRoll();
            offerAll (profile.ghostSnares);
            offerAll (profile.percussion);
            offerExperimentalToms();
            offerFill (isLastBar);

            rank (std::span (strokes).subspan (first));
        }

    private:
        /** A control moved by the section, in single precision: it is compared with thresholds. A NaN counts as 0. */
        static float inSection (float value, float offset) noexcept { return std::clamp ((std::isnan (value) ? 0.0f : value) + offset, 0.0f, 1.0f); }

        /** Strokes of one note in two lanes keep the recipe's order: where all else is equal the first one stays. */
        static void rank (std::span<OfferedStroke> ofBar)
        {
            std::array<const OfferedStroke*, GroovePlan::mostStrokesOfABar> inTime {};

            for (std::size_t count = 0; count < ofBar.size(); ++count)
            {
                const auto& stroke = ofBar[count];
                auto place         = count;

                for (; place > 0; --place)
                {
                    const auto& other     = *inTime[place - 1];
                    const bool keepsOrder = other.note == stroke.note && other.lane != stroke.lane;

                    if (other.beat <= stroke.beat || keepsOrder)
                        break;

                    inTime[place] = &other;
                }

                inTime[place] = &stroke;
            }

            for (std::size_t place = 0; place < ofBar.size(); ++place)
                ofBar[static_cast<std::size_t> (inTime[place] - ofBar.data())].rank = static_cast<std::uint8_t> (place);
        }

        bool isOddBar() const noexcept { return bar % 2 == 1; }

        void offerAll (std::span<const Candidate> candidates)
        {
            for (const auto& candidate : candidates)
                offer (candidate);
        }

        void offerClosedHats()
        {
            const auto& hats           = profile.closedHats;
            const bool playsSixteenths = type != SectionType::breakdown && (hats.alwaysSixteenths || density > 0.56f);
            const int stepsPerBar      = playsSixteenths ? 16 : 8;
            const int stepsPerBeat     = stepsPerBar / beatsPerBar;

            const double onBeatChance  = hats.onBeatScale * hats.onBeat.in (mood);
            const double offBeatChance = hats.offBeatScale * hats.offBeat.in (mood);

            for (int step = 0; step < stepsPerBar; ++step)
            {
                const bool isOnBeat = step % stepsPerBeat == 0;

                offer ({ .lane   = DrumLane::hats,
                         .note   = note::closedHat,
                         .beat   = static_cast<double> (step) / stepsPerBeat,
                         .accent = isOnBeat ? 0.14 : -0.2,
                         .chance = isOnBeat ? onBeatChance : offBeatChance });
            }
        }

        void offerHatRoll()
        {
            const bool rolls = profile.hasHatRolls && (isOddBar() || settings.variation > 0.62f);

            if (! rolls)
                return;

            const double firstBeat = isOddBar() ? 3.5 : 1.5;
            const int rollStrokes  = settings.energy > 0.68f ? 4 : 3; // the player's energy, not the section's
            const auto chance      = Chance { .constant = 0.45, .variation = 0.5 };

            for (int stroke = 0; stroke < rollStrokes; ++stroke)
            {
                const bool isLast = stroke == rollStrokes - 1;

                offer ({ .lane   = DrumLane::hats,
                         .note   = note::closedHat,
                         .beat   = firstBeat + 0.125 * stroke,
                         .accent = isLast ? 0.2 : -0.28,
                         .chance = chance });
            }
        }

        void offerExperimentalToms()
        {
            if (! playsToms (settings))
                return;

            const int sixteenthsApart = tomsApart (settings);
            const double chance       = 0.75 * static_cast<double> (settings.experimental) + 0.15;

            // Starting elsewhere in each bar, the figure wanders against the beat.
            for (int sixteenth = (2 * bar) % sixteenthsApart; sixteenth < 16; sixteenth += sixteenthsApart)
            {
                const bool isEven = sixteenth % 2 == 0;

                offer ({ .lane         = DrumLane::perc,
                         .note         = isEven ? note::midTom : note::lowTom,
                         .beat         = 0.25 * sixteenth,
                         .accent       = 0.0,
                         .chance       = chance,
                         .stroke       = Stroke::soft,
                         .baseVelocity = 60 });
            }
        }

        void offerFill (bool isLastBar)
        {
            const bool fills = type == SectionType::fill || (leadsIntoChange (type) && isLastBar);

            if (! fills)
                return;

            const int fillStrokes = 3 + static_cast<int> (5.0f * energy);

            for (int stroke = 0; stroke < fillStrokes; ++stroke)
            {
                const bool isLast = stroke == fillStrokes - 1;

                // The last stroke is played as a snare's, with its touch, whatever note the roll has reached.
                offer ({ .lane   = isLast ? DrumLane::snare : DrumLane::perc,
                         .note   = fillNotes[static_cast<std::size_t> (stroke) % fillNotes.size()],
                         .beat   = 2.5 + stroke * 1.5 / fillStrokes,
                         .accent = static_cast<double> (stroke) / fillStrokes,
                         .chance = 0.96 });
            }
        }

        void offer (const Candidate& candidate)
        {
            const auto laneIndex = static_cast<std::size_t> (candidate.lane);

            if (laneIndex >= laneFeels.size())
                return;

            const auto& feel   = laneFeels[laneIndex];
            const auto& chance = isOddBar() ? candidate.chance.oddBar : candidate.chance.evenBar;

            const double laneChance   = static_cast<double> (settings.probabilityOf (candidate.lane));
            const double beat         = static_cast<double> (bar) * beatsPerBar + candidate.beat;
            const bool isOddSixteenth = static_cast<int> (beat * 4.0 + 0.5) % 2 == 1;
            const int base            = candidate.stroke == Stroke::soft ? candidate.baseVelocity : feel.baseVelocity;

            strokes.push_back ({ .limit     = drawsBelow (laneChance * chance.in (mood)),
                                 .note      = candidate.note,
                                 .lane      = candidate.lane,
                                 .velocity  = base + energyLift + static_cast<int> (candidate.accent * accentVelocity),
                                 .isGhost   = candidate.stroke == Stroke::ghost,
                                 .rank      = 0,
                                 .beat      = candidate.beat,
                                 .swing     = isOddSixteenth ? static_cast<double> (settings.swing) * swingBeats : 0.0,
                                 .looseness = feel.looseness,
                                 .length    = feel.hitLength });
        }

        const GenerationSettings& settings;
        const GenreProfile& profile;
        const SectionType type;
        std::vector<OfferedStroke>& strokes;

        const float energy;  ///< of the section
        const float density; ///< of the section
        const Mood mood;
        const int energyLift; ///< added to every velocity

        int bar = 0;
    };
} // namespace

//==============================================================================
GroovePlan::GroovePlan (const GenerationSettings& settings, SectionType type, std::int32_t bars)
    : numBars (std::clamp (bars, DrumPattern::minBars, DrumPattern::maxBars)),
      lastStart (DrumPattern::lastStartIn (numBars)),
      timing (static_cast<double> (settings.timing)),
      velocity (static_cast<double> (settings.velocity)),
      period (periodOf (settings)),
      hasLastBar (leadsIntoChange (type))
{
    constexpr std::size_t usualStrokesOfABar = 32;

    const auto different = std::min (numBars, period);
    const auto offers    = static_cast<std::size_t> (different) + 1; // the last bar's too
    strokes.reserve (offers * usualStrokesOfABar);
    ends.reserve (offers);
    Drummer drummer (settings, type, strokes);

    const auto offer = [&] (std::int32_t bar, bool isLastBar)
    {
        drummer.offerBar (bar, isLastBar);
        ends.push_back (strokes.size());
    };

    for (std::int32_t bar = 0; bar < different; ++bar)
        offer (bar, false);

    if (hasLastBar)
        offer (numBars - 1, true);
}

std::span<const OfferedStroke> GroovePlan::strokesOf (std::int32_t bar) const noexcept
{
    const bool isOwn = hasLastBar && bar == numBars - 1;
    const auto index = isOwn ? ends.size() - 1 : static_cast<std::size_t> (bar % period);
    const auto first = index == 0 ? 0 : ends[index - 1];
    return std::span (strokes).subspan (first, ends[index] - first);
}

std::size_t GroovePlan::mostDraws() const noexcept
{
    std::size_t draws = 0;

    for (std::int32_t bar = 0; bar < numBars; ++bar)
        draws += 3 * strokesOf (bar).size();

    return draws;
}

std::size_t GroovePlan::usualHits() const noexcept
{
    std::uint64_t likely = 0; // in 2^24ths of a hit

    for (std::int32_t bar = 0; bar < numBars; ++bar)
        for (const auto& stroke : strokesOf (bar))
            likely += stroke.limit;

    const auto hits = static_cast<std::size_t> (likely >> 24);
    return hits + hits / 16 + 8;
}

std::uint32_t GroovePlan::mixedSeed (std::uint32_t seed, SectionType type, std::uint32_t salt) noexcept
{
    const auto typed = scramble (seed ^ (static_cast<std::uint32_t> (type) + goldenRatio + (seed << 6) + (seed >> 2)));
    return scramble (salt ^ ((salt >> 2) + goldenRatio + typed + (salt << 6)));
}

} // namespace pulsewright
