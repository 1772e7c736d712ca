// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Any settings, bars, seeds and previous hits: the music keeps its bounds and its order, and comes out the same twice.

#include "FuzzCheck.h"

#include "generation/GrooveGenerator.h"

#include <algorithm>
#include <tuple>

namespace pulsewright::fuzz
{

namespace
{
    GenerationSettings anySettings (FuzzedDataProvider& input)
    {
        static constexpr std::array<float, 8> usual { 0.0f, 0.18f, 0.32f, 0.5f, 0.62f, 0.68f, 0.73f, 1.0f };

        std::array<float, GenerationSettings::numValues> values {};
        for (auto& value : values)
            value = anyReal (input, usual);

        GenerationSettings settings;
        settings.setValues (values);
        settings.genre = static_cast<Genre> (input.ConsumeIntegralInRange (0u, genreCount + 1));
        settings.seed  = input.ConsumeIntegral<std::uint32_t>();

        // Past the clamp: the fields are public, and the generator promises not to fail.
        for (auto* field : { &settings.density, &settings.energy, &settings.swing, &settings.timing, &settings.velocity, &settings.kickProbability })
            if (input.ConsumeBool())
                *field = anyReal (input, usual);

        return settings;
    }

    /** Mostly few, so that most of the time goes into variety. */
    std::int32_t anyBars (FuzzedDataProvider& input)
    {
        return input.ConsumeIntegralInRange (0, 15) == 0 ? input.ConsumeIntegral<std::int32_t>() : input.ConsumeIntegralInRange (-1, 9);
    }

    DrumPattern anyPattern (FuzzedDataProvider& input)
    {
        static constexpr std::array<double, 8> starts { 0.0, 0.01, 0.02, 0.03, 1.5, 3.999, 4.0, 7.9995 };

        DrumPattern pattern;
        pattern.sectionType = static_cast<SectionType> (input.ConsumeIntegralInRange (0, 10));
        pattern.bars        = anyBars (input);

        for (int hits = input.ConsumeIntegralInRange (0, 24); hits > 0; --hits)
            pattern.hits.push_back ({ .start    = anyReal (input, starts),
                                      .note     = input.ConsumeIntegralInRange (36u, 38u),
                                      .velocity = input.ConsumeIntegralInRange (0u, 130u),
                                      .lane     = static_cast<DrumLane> (input.ConsumeIntegralInRange (0, 3)) });

        return pattern;
    }

    /** Where a hit comes to lie in a pattern; what is no number lies where infinity does. */
    double placeOf (const DrumHit& hit, const DrumPattern& pattern)
    {
        return hit.start < pattern.lastStart() ? std::max (0.0, hit.start) : pattern.lastStart();
    }

    bool contains (const std::vector<DrumHit>& hits, const DrumHit& hit)
    {
        return std::ranges::find (hits, hit) != hits.end();
    }

    //==============================================================================
    /** Inside its bars, in order, and no hit doubles the one before it. */
    void checkNormalised (const DrumPattern& pattern)
    {
        const auto doubled  = [] (const DrumHit& a, const DrumHit& b) { return a.note == b.note && b.start - a.start < 0.02; };
        const auto place    = [] (const DrumHit& hit) { return std::tie (hit.start, hit.note, hit.velocity); };
        const auto isInside = [&] (const DrumHit& hit) { return hit.start >= 0.0 && hit.start <= pattern.lastStart(); };

        check (std::ranges::all_of (pattern.hits, isInside), "hits start inside their pattern");
        check (std::ranges::is_sorted (pattern.hits, {}, place), "hits are in order");
        check (std::ranges::adjacent_find (pattern.hits, doubled) == pattern.hits.end(), "no hit doubles the one before it");
    }

    void checkNormalise (DrumPattern pattern)
    {
        pattern.bars      = std::clamp (pattern.bars, 1, 1000);
        const auto before = pattern.hits;
        normalise (pattern);
        checkNormalised (pattern);

        for (const auto& hit : before)
        {
            const auto covers = [&, place = placeOf (hit, pattern)] (const DrumHit& kept)
            { return kept.note == hit.note && kept.start <= place && place - kept.start < 0.02; };
            check (std::ranges::any_of (pattern.hits, covers), "a hit goes only where another stroke of its note is kept");
        }

        const auto once = pattern;
        normalise (pattern);
        check (pattern == once, "what is normalised stays as it is");
    }

    DrumPattern checkGenerate (const GenerationSettings& settings, const DrumPattern& like, std::uint32_t seed)
    {
        auto pattern = GrooveGenerator::generate (settings, like.sectionType, like.bars, seed);
        checkNormalised (pattern);
        check (pattern.bars == std::clamp (like.bars, 1, 192) && pattern.sectionType == like.sectionType, "a pattern is what was asked for");
        check (GrooveGenerator::generate (settings, like.sectionType, like.bars, seed) == pattern, "a seed plays the same twice");

        for (const auto& hit : pattern.hits)
            check (hit.velocity >= 20 && hit.velocity <= 127 && hit.length > 0.0 && hit.length < 0.2 && ! nameOf (hit.lane).empty(),
                   "a hit is a short stroke of 20 to 127, in one of the lanes");

        return pattern;
    }

    void checkMutate (const GenerationSettings& settings, DrumPattern previous, std::uint32_t seed, const LaneLocks& locks)
    {
        const auto fresh   = checkGenerate (settings, previous, seed);
        const auto mutated = GrooveGenerator::mutate (settings, previous, locks, seed);
        checkNormalised (mutated);
        check (GrooveGenerator::mutate (settings, previous, locks, seed) == mutated, "a mutation is the same twice");
        check (mutated.bars == fresh.bars && mutated.name == previous.name + " Mutated", "a mutation keeps the length and says so in its name");

        for (auto& hit : previous.hits)
            hit.start = placeOf (hit, fresh);

        for (const auto& hit : mutated.hits)
            check (contains (locks[static_cast<std::size_t> (hit.lane)] ? previous.hits : fresh.hits, hit),
                   "locked lanes come from before, the others are new");
    }

    void run (FuzzedDataProvider input)
    {
        const auto settings = anySettings (input);
        const auto seed     = input.ConsumeIntegral<std::uint32_t>();
        const auto locks    = input.ConsumeIntegralInRange (0, 15);
        const auto pattern  = anyPattern (input);

        if (input.ConsumeBool())
            checkNormalise (pattern);
        else
            checkMutate (settings, pattern, seed, { (locks & 1) != 0, (locks & 2) != 0, (locks & 4) != 0, (locks & 8) != 0 });
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    pulsewright::fuzz::run ({ data, size });
    return 0;
}
