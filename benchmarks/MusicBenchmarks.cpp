// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Making music and files, beside drawing three random numbers for every hit: the least that the recipe of a
// hit can do with.

#include "ComparisonTable.h"

#include "export/MidiFileWriter.h"
#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"
#include "search/TakeSearch.h"

#include <atomic>
#include <numeric>
#include <random>
#include <string>

namespace pulsewright
{

namespace
{
    GenerationSettings drumAndBass()
    {
        GenerationSettings settings;
        settings.genre = Genre::drumAndBass;
        return settings;
    }

    SongArrangement longestSong()
    {
        return SongBuilder::buildSong (drumAndBass(), SongBuilder::maxBars, 1);
    }

    std::size_t hitsOf (const SongArrangement& song)
    {
        return std::accumulate (song.sections.begin(),
                                song.sections.end(),
                                std::size_t {},
                                [] (std::size_t sum, const SongSection& s) { return sum + s.pattern.hits.size(); });
    }

    void drawNumbers (benchmark::State& state, std::size_t hits, std::size_t streams)
    {
        for (auto _ : state)
            for (std::size_t stream = 0; stream < streams; ++stream)
            {
                std::mt19937 engine (static_cast<std::uint32_t> (stream));
                std::uint_fast32_t sum = 0;
                for (std::size_t i = 0; i < hits * 3 / streams; ++i)
                    sum += engine() >> 8;
                benchmark::DoNotOptimize (sum);
            }
    }

    void generate (benchmark::State& state, int bars)
    {
        const auto settings = drumAndBass();
        std::size_t hits    = 0;

        for (auto _ : state)
            benchmark::DoNotOptimize (hits = GrooveGenerator::generate (settings, SectionType::verse, bars, 0).hits.size());

        state.SetLabel (std::to_string (hits) + " hits");
    }

    //==============================================================================
    // Takes of every style, two bars each, at the opening settings. The time is that of one groove.
    constexpr std::uint32_t takesOfASearch = 1 << 18;

    void generateTakes (benchmark::State& state)
    {
        std::uint32_t take = 0;

        for (auto _ : state)
            for (std::uint32_t genre = 0; genre < genreCount; ++genre)
                benchmark::DoNotOptimize (
                    GrooveGenerator::generate ({ .genre = static_cast<Genre> (genre), .seed = saltOf (++take) }, SectionType::verse, 2, 0)
                        .hits.size());

        state.counters["per"] = genreCount;
    }

    /** Each style's search is for a groove of its own that is not among the takes. */
    void searchTakes (benchmark::State& state, const TakeKernels& kernels, std::size_t jobs)
    {
        constexpr std::atomic<bool> neverStop { false };

        for (auto _ : state)
            for (std::uint32_t genre = 0; genre < genreCount; ++genre)
            {
                GenerationSettings settings { .genre = static_cast<Genre> (genre), .seed = saltOf (0) };
                GrooveTarget target (2);
                target.setExample (GrooveGenerator::generate (settings, SectionType::verse, 2, 0).hits, 2);
                const TakeQuery query { .settings = { settings }, .firstTake = 1, .lastTake = takesOfASearch, .jobs = jobs };
                benchmark::DoNotOptimize (findTakes (
                                              query,
                                              target,
                                              neverStop,
                                              [] (double) {},
                                              kernels)
                                              .takes.size());
            }

        state.counters["per"] = static_cast<double> (genreCount) * takesOfASearch;
    }

    void registerSearch()
    {
        benchmark::RegisterBenchmark ("a take of 2 bars/generated", generateTakes);

        for (const auto* kernels : TakeKernels::all())
            benchmark::RegisterBenchmark ((std::string ("a take of 2 bars/searched, ") + kernels->name).c_str(),
                                          searchTakes,
                                          *kernels,
                                          std::size_t { 1 });

        benchmark::RegisterBenchmark ("a take of 2 bars/by two threads", searchTakes, *TakeKernels::all().front(), std::size_t { 2 });
    }

    const bool registered = []
    {
        registerSearch();

        for (const int bars : { 2, 192 })
        {
            const auto row  = "pattern of " + std::to_string (bars) + " bars";
            const auto hits = GrooveGenerator::generate (drumAndBass(), SectionType::verse, bars, 0).hits.size();
            benchmark::RegisterBenchmark ((row + "/numbers alone").c_str(), drawNumbers, hits, std::size_t { 1 });
            benchmark::RegisterBenchmark ((row + "/generated").c_str(), generate, bars);
        }

        const auto song = longestSong();
        benchmark::RegisterBenchmark ("song of 384 bars/numbers alone", drawNumbers, hitsOf (song), song.sections.size());
        benchmark::RegisterBenchmark ("song of 384 bars/built",
                                      [hits = hitsOf (song)] (benchmark::State& state)
                                      {
                                          for (auto _ : state)
                                              benchmark::DoNotOptimize (longestSong());
                                          state.SetLabel (std::to_string (hits) + " hits");
                                      });
        benchmark::RegisterBenchmark ("song of 384 bars/flattened",
                                      [song] (benchmark::State& state)
                                      {
                                          for (auto _ : state)
                                              benchmark::DoNotOptimize (flatten (song));
                                      });
        benchmark::RegisterBenchmark ("song of 384 bars/MIDI bytes",
                                      [song] (benchmark::State& state)
                                      {
                                          for (auto _ : state)
                                              benchmark::DoNotOptimize (MidiFileWriter::bytesOf (song, 174));
                                      });
        return true;
    }();
} // namespace

} // namespace pulsewright
