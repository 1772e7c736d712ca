// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "GrooveGenerator.h"

#include "GenreProfile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <random>
#include <span>

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

    constexpr std::uint32_t mixSeed (std::uint32_t seed, SectionType type, std::uint32_t salt) noexcept
    {
        const auto typed = scramble (seed ^ (static_cast<std::uint32_t> (type) + goldenRatio + (seed << 6) + (seed >> 2)));
        return scramble (salt ^ ((salt >> 2) + goldenRatio + typed + (salt << 6)));
    }

    /** Random numbers with 24 bits, so that they are exact in single precision. */
    class Dice
    {
    public:
        explicit Dice (std::uint32_t seed) : engine (seed) {}

        float unipolar() { return static_cast<float> (engine() >> 8) * 0x1p-24f; } ///< 0 to just below 1
        float bipolar() { return 2.0f * unipolar() - 1.0f; }                       ///< -1 to just below 1

    private:
        std::mt19937 engine;
    };

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

    constexpr double swingBeats       = 0.085; // delay of an odd sixteenth at full swing
    constexpr double timingBeats      = 0.07;  // widest offset at full timing humanisation
    constexpr double accentVelocity   = 22.0;
    constexpr double humaniseVelocity = 36.0;
    constexpr double energyVelocity   = 48.0;
    constexpr int ghostDrop           = 27;
    constexpr int ghostCeiling        = 70;

    //==============================================================================
    /** One generation: walks the bars and offers each its candidates in a fixed order. */
    class Drummer
    {
    public:
        Drummer (const GenerationSettings& settingsToUse, DrumPattern& patternToFill)
            : settings (settingsToUse),
              profile (profileOf (settingsToUse.genre)),
              pattern (patternToFill),
              dice (patternToFill.seed),
              energy (inSection (settingsToUse.energy, energyOffsetOf (patternToFill.sectionType))),
              density (inSection (settingsToUse.density, 0.55f * energyOffsetOf (patternToFill.sectionType))),
              mood { density, settingsToUse.syncopation, settingsToUse.variation },
              energyLift (static_cast<int> (std::round ((static_cast<double> (energy) - 0.5) * energyVelocity)))
        {}

        void play()
        {
            pattern.hits.reserve (static_cast<std::size_t> (pattern.bars) * mostHitsOfABar);

            for (bar = 0; bar < pattern.bars; ++bar)
            {
                placeAll (profile.kicksAndSnares);
                placeClosedHats();
                placeAll (profile.openHats);
                placeHatRoll();
                placeAll (profile.ghostSnares);
                placeAll (profile.percussion);
                placeExperimentalToms();
                placeFill();
            }

            normalise (pattern);
        }

    private:
        static constexpr std::size_t mostHitsOfABar = 32; // a guess that is right for nearly every setting

        /** A control moved by the section, in single precision: it is compared with thresholds. A NaN counts as 0. */
        static float inSection (float value, float offset) noexcept { return std::clamp ((std::isnan (value) ? 0.0f : value) + offset, 0.0f, 1.0f); }

        /** The whole part of a change of velocity. More than the widest range is as good as that, and no integer holds it. */
        static int velocityChange (double change) noexcept
        {
            constexpr double widest = 256.0;
            return static_cast<int> (std::min (widest, std::max (-widest, change)));
        }

        bool isOddBar() const noexcept { return bar % 2 == 1; }

        void placeAll (std::span<const Candidate> candidates)
        {
            for (const auto& candidate : candidates)
                placeHit (candidate);
        }

        void placeClosedHats()
        {
            const auto& hats           = profile.closedHats;
            const bool playsSixteenths = pattern.sectionType != SectionType::breakdown && (hats.alwaysSixteenths || density > 0.56f);
            const int stepsPerBar      = playsSixteenths ? 16 : 8;
            const int stepsPerBeat     = stepsPerBar / beatsPerBar;

            const double onBeatChance  = hats.onBeatScale * hats.onBeat.in (mood);
            const double offBeatChance = hats.offBeatScale * hats.offBeat.in (mood);

            for (int step = 0; step < stepsPerBar; ++step)
            {
                const bool isOnBeat = step % stepsPerBeat == 0;

                placeHit ({ .lane   = DrumLane::hats,
                            .note   = note::closedHat,
                            .beat   = static_cast<double> (step) / stepsPerBeat,
                            .accent = isOnBeat ? 0.14 : -0.2,
                            .chance = isOnBeat ? onBeatChance : offBeatChance });
            }
        }

        void placeHatRoll()
        {
            const bool rolls = profile.hasHatRolls && (isOddBar() || settings.variation > 0.62f);

            if (! rolls)
                return;

            const double firstBeat = isOddBar() ? 3.5 : 1.5;
            const int strokes      = settings.energy > 0.68f ? 4 : 3; // the player's energy, not the section's
            const auto chance      = Chance { .constant = 0.45, .variation = 0.5 };

            for (int stroke = 0; stroke < strokes; ++stroke)
            {
                const bool isLast = stroke == strokes - 1;

                placeHit ({ .lane   = DrumLane::hats,
                            .note   = note::closedHat,
                            .beat   = firstBeat + 0.125 * stroke,
                            .accent = isLast ? 0.2 : -0.28,
                            .chance = chance });
            }
        }

        void placeExperimentalToms()
        {
            if (! (settings.experimental > 0.32f))
                return;

            const int sixteenthsApart = settings.experimental > 0.72f ? 3 : 5;
            const double chance       = 0.75 * static_cast<double> (settings.experimental) + 0.15;

            // Starting elsewhere in each bar, the figure wanders against the beat.
            for (int sixteenth = (2 * bar) % sixteenthsApart; sixteenth < 16; sixteenth += sixteenthsApart)
            {
                const bool isEven = sixteenth % 2 == 0;

                placeHit ({ .lane         = DrumLane::perc,
                            .note         = isEven ? note::midTom : note::lowTom,
                            .beat         = 0.25 * sixteenth,
                            .accent       = 0.0,
                            .chance       = chance,
                            .stroke       = Stroke::soft,
                            .baseVelocity = 60 });
            }
        }

        void placeFill()
        {
            const auto type            = pattern.sectionType;
            const bool isLastBar       = bar == pattern.bars - 1;
            const bool leadsIntoChange = type == SectionType::preChorus || type == SectionType::verseVariation || type == SectionType::highChorus;
            const bool fills           = type == SectionType::fill || (leadsIntoChange && isLastBar);

            if (! fills)
                return;

            const int strokes = 3 + static_cast<int> (5.0f * energy);

            for (int stroke = 0; stroke < strokes; ++stroke)
            {
                const bool isLast = stroke == strokes - 1;

                // The last stroke is played as a snare's, with its touch, whatever note the roll has reached.
                placeHit ({ .lane   = isLast ? DrumLane::snare : DrumLane::perc,
                            .note   = fillNotes[static_cast<std::size_t> (stroke) % fillNotes.size()],
                            .beat   = 2.5 + stroke * 1.5 / strokes,
                            .accent = static_cast<double> (stroke) / strokes,
                            .chance = 0.96 });
            }
        }

        /** Draws one number for a candidate that is dropped and three for one that is played. */
        void placeHit (const Candidate& candidate)
        {
            const auto laneIndex = static_cast<std::size_t> (candidate.lane);

            if (laneIndex >= laneFeels.size())
                return;

            const auto& feel   = laneFeels[laneIndex];
            const auto& chance = isOddBar() ? candidate.chance.oddBar : candidate.chance.evenBar;

            const double laneChance   = static_cast<double> (settings.probabilityOf (candidate.lane));
            const double probability  = std::clamp (laneChance * chance.in (mood), 0.0, 1.0);
            const double dropDecision = static_cast<double> (dice.unipolar());

            if (! (probability > dropDecision))
                return;

            const double timingOffset   = static_cast<double> (dice.bipolar());
            const double velocityOffset = static_cast<double> (dice.bipolar());

            double beat               = static_cast<double> (bar) * beatsPerBar + candidate.beat;
            const bool isOddSixteenth = static_cast<int> (beat * 4.0 + 0.5) % 2 == 1;

            if (isOddSixteenth)
                beat += static_cast<double> (settings.swing) * swingBeats;

            beat += timingOffset * static_cast<double> (settings.timing) * timingBeats * feel.looseness;
            beat = std::clamp (beat, 0.0, pattern.lastStart());

            const int base = candidate.stroke == Stroke::soft ? candidate.baseVelocity : feel.baseVelocity;

            int velocity = base + energyLift + static_cast<int> (candidate.accent * accentVelocity)
                         + velocityChange (velocityOffset * static_cast<double> (settings.velocity) * humaniseVelocity);

            if (candidate.stroke == Stroke::ghost)
                velocity = std::min (velocity - ghostDrop, ghostCeiling);

            pattern.hits.push_back ({ .start    = beat,
                                      .length   = feel.hitLength,
                                      .note     = candidate.note,
                                      .velocity = static_cast<std::uint32_t> (std::clamp (velocity, 20, 127)),
                                      .lane     = candidate.lane });
        }

        const GenerationSettings& settings;
        const GenreProfile& profile;
        DrumPattern& pattern;
        Dice dice;

        const float energy;  ///< of the section
        const float density; ///< of the section
        const Mood mood;
        const int energyLift; ///< added to every velocity

        int bar = 0;
    };
} // namespace

//==============================================================================
DrumPattern GrooveGenerator::generate (const GenerationSettings& settings, SectionType type, std::int32_t bars, std::uint32_t seed)
{
    DrumPattern pattern;
    pattern.name.append (nameOf (settings.genre)).append (" ").append (nameOf (type));
    pattern.sectionType = type;
    pattern.bars        = std::clamp (bars, DrumPattern::minBars, DrumPattern::maxBars);
    pattern.seed        = mixSeed (seed, type, settings.seed);

    Drummer (settings, pattern).play();
    return pattern;
}

DrumPattern GrooveGenerator::mutate (const GenerationSettings& settings, const DrumPattern& previous, const LaneLocks& locks, std::uint32_t seed)
{
    const auto isLocked = [&locks] (const DrumHit& hit)
    {
        const auto lane = static_cast<std::size_t> (hit.lane);
        return lane < locks.size() && locks[lane];
    };

    auto mutated = generate (settings, previous.sectionType, previous.bars, seed);
    mutated.name = previous.name + " Mutated";

    std::erase_if (mutated.hits, isLocked);

    // Lane by lane: normalise sorts stably, so the order of equal hits is the order kept here.
    for (std::size_t lane = 0; lane < locks.size(); ++lane)
        if (locks[lane])
            std::copy_if (previous.hits.begin(),
                          previous.hits.end(),
                          std::back_inserter (mutated.hits),
                          [lane] (const DrumHit& hit) { return static_cast<std::size_t> (hit.lane) == lane; });

    normalise (mutated);
    return mutated;
}

} // namespace pulsewright
