// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Any settings, bars, seeds and previous hits: the music keeps its promises and comes out the same twice.

#include "MusicChecks.h"

#include "generation/GrooveGenerator.h"

#include <algorithm>

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

        // Through the door that clamps, or past it: the fields are public and the generator promises not to fail.
        if (input.ConsumeBool())
            settings.setValues (values);
        else
            std::tie (settings.density,
                      settings.energy,
                      settings.syncopation,
                      settings.swing,
                      settings.variation,
                      settings.experimental,
                      settings.timing,
                      settings.velocity,
                      settings.kickProbability,
                      settings.snareProbability,
                      settings.hatsProbability,
                      settings.percProbability) = std::tuple_cat (values);

        settings.genre = static_cast<Genre> (input.ConsumeIntegralInRange (0u, genreCount + 1));
        settings.seed  = input.ConsumeIntegral<std::uint32_t>();
        return settings;
    }

    /** Mostly few, so that most of the time goes into variety. */
    std::int32_t anyBars (FuzzedDataProvider& input)
    {
        return input.ConsumeIntegralInRange (0, 15) == 0 ? input.ConsumeIntegral<std::int32_t>() : input.ConsumeIntegralInRange (-1, 9);
    }

    SectionType anySectionType (FuzzedDataProvider& input)
    {
        return static_cast<SectionType> (input.ConsumeIntegralInRange (0, 10));
    }

    DrumPattern anyPattern (FuzzedDataProvider& input)
    {
        static constexpr std::array<double, 8> starts { 0.0, 0.01, 0.02, 0.03, 1.5, 3.999, 4.0, 7.9995 };

        DrumPattern pattern;
        pattern.name        = "Played";
        pattern.sectionType = anySectionType (input);
        pattern.bars        = anyBars (input);

        for (int hits = input.ConsumeIntegralInRange (0, 24); hits > 0; --hits)
            pattern.hits.push_back ({ .start    = anyReal (input, starts),
                                      .note     = input.ConsumeIntegralInRange (36u, 38u),
                                      .velocity = input.ConsumeIntegralInRange (0u, 130u),
                                      .lane     = static_cast<DrumLane> (input.ConsumeIntegralInRange (0, 4)) });

        return pattern;
    }

    DrumHit inside (const DrumPattern& pattern, DrumHit hit)
    {
        // What is no number ends where infinity does.
        hit.start = hit.start < pattern.lastStart() ? std::max (0.0, hit.start) : std::max (0.0, pattern.lastStart());
        return hit;
    }

    bool contains (const std::vector<DrumHit>& hits, const DrumHit& hit)
    {
        return std::find (hits.begin(), hits.end(), hit) != hits.end();
    }

    //==============================================================================
    void checkNormalise (DrumPattern pattern)
    {
        pattern.bars = std::max (pattern.bars, 1);

        const auto before = pattern.hits;
        normalise (pattern);
        checkNormalised (pattern);

        for (const auto& hit : before)
        {
            const auto wanted = inside (pattern, hit);
            const auto covers = [&wanted] (const DrumHit& kept) { return kept.start <= wanted.start && areDoubled (kept, wanted); };

            check (contains (pattern.hits, wanted) || std::any_of (pattern.hits.begin(), pattern.hits.end(), covers),
                   "a hit goes only where another stroke of its note is kept");
        }

        check (pattern.hits.size() <= before.size(), "no hit is added");
        const auto once = pattern;
        normalise (pattern);
        check (pattern == once, "what is normalised stays as it is");
    }

    DrumPattern checkGenerate (const GenerationSettings& settings, SectionType type, std::int32_t bars, std::uint32_t seed)
    {
        auto pattern = GrooveGenerator::generate (settings, type, bars, seed);
        checkGenerated (pattern);
        check (pattern.bars == (bars < 1 ? 1 : bars > 192 ? 192 : bars), "bars are clamped");
        check (pattern.sectionType == type, "the section type is the one asked for");
        check (GrooveGenerator::generate (settings, type, bars, seed) == pattern, "a seed plays the same twice");
        return pattern;
    }

    void checkMutate (const GenerationSettings& settings, const DrumPattern& previous, const LaneLocks& locks, std::uint32_t seed)
    {
        const auto fresh   = checkGenerate (settings, previous.sectionType, previous.bars, seed);
        const auto mutated = GrooveGenerator::mutate (settings, previous, locks, seed);
        checkNormalised (mutated);
        check (mutated.name == previous.name + " Mutated", "a mutation says so in its name");
        check (mutated.bars == fresh.bars, "a mutation keeps the length");
        check (GrooveGenerator::mutate (settings, previous, locks, seed) == mutated, "a mutation is the same twice");

        std::vector<DrumHit> kept;
        for (const auto& hit : previous.hits)
            kept.push_back (inside (mutated, hit));

        for (const auto& hit : mutated.hits)
        {
            const bool isLocked = locks[static_cast<std::size_t> (hit.lane)];
            check (contains (isLocked ? kept : fresh.hits, hit), "locked lanes come from before, the others are new");
        }
    }

    void checkBuildSong (const GenerationSettings& settings, std::int32_t bars, std::uint32_t structure)
    {
        const auto song = SongBuilder::buildSong (settings, bars, structure);
        checkSong (song);
        check (song.sections.empty() == (structure > 4), "only an unknown structure has no sections");
        check (bars < 1 || song.totalBars == static_cast<std::uint32_t> (bars < 16 ? 16 : bars > 384 ? 384 : bars), "a song has the bars asked for");
        check (SongBuilder::buildSong (settings, bars, structure) == song, "a song is the same twice");

        const auto hits = flatten (song);
        check (std::is_sorted (hits.begin(), hits.end(), [] (const DrumHit& a, const DrumHit& b) { return a.start < b.start; }),
               "the hits of a song are in order");
        check (hits.empty() || hits.back().start < song.lengthInBeats(), "the hits of a song lie inside it");
    }

    void run (FuzzedDataProvider input)
    {
        const auto settings = anySettings (input);
        const auto seed     = input.ConsumeIntegral<std::uint32_t>();

        switch (input.ConsumeIntegralInRange (0, 3))
        {
            case 0: checkNormalise (anyPattern (input)); break;

            case 1:
            {
                const auto type = anySectionType (input);
                checkGenerate (settings, type, anyBars (input), seed);
                break;
            }

            case 2:
            {
                LaneLocks locks {};
                for (auto& lock : locks)
                    lock = input.ConsumeBool();

                checkMutate (settings, anyPattern (input), locks, seed);
                break;
            }

            default:
            {
                const auto structure = input.ConsumeIntegralInRange (0u, 5u);
                checkBuildSong (settings, anyBars (input), structure);
            }
        }
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    pulsewright::fuzz::run ({ data, size });
    return 0;
}
