// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The search, by every kind of vectors, against its plain form: generating every take with the standard's random numbers.

#include "generation/GrooveGenerator.h"
#include "search/GrooveExample.h"
#include "search/TakeSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace pulsewright
{

namespace
{
    using Answer = std::vector<std::tuple<Distance, Genre, std::uint32_t, std::size_t>>;

    constexpr std::atomic<bool> neverStop { false };

    GenerationSettings knobsAt (Genre genre, float value, float humanised)
    {
        GenerationSettings settings { .genre = genre };
        settings.setValues ({ value, 0.7f, value, value, value, value, humanised, humanised, 1, 0.9f, 1, 0.8f });
        return settings;
    }

    DrumPattern grooveOf (const TakeQuery& query, std::size_t settings, std::uint32_t take, std::int32_t bars)
    {
        auto knobs = query.settings[settings];
        knobs.seed = saltOf (take);
        return GrooveGenerator::generate (knobs, query.section, bars, 0);
    }

    /** Every take is generated and measured; of equal grooves the first is kept. */
    Answer tryThemAll (const TakeQuery& query, const GrooveTarget& target)
    {
        std::vector<std::pair<Answer::value_type, std::vector<DrumHit>>> all;
        GrooveTarget::Scratch scratch;

        for (std::size_t settings = 0; settings < query.settings.size(); ++settings)
            for (auto take = query.firstTake; take <= query.lastTake; ++take)
            {
                auto groove         = grooveOf (query, settings, take, target.bars());
                const auto distance = target.distanceTo (groove, scratch);
                all.emplace_back (Answer::value_type { distance, query.settings[settings].genre, take, settings }, std::move (groove.hits));
            }

        std::ranges::sort (all, {}, &decltype (all)::value_type::first);
        Answer answer;

        for (auto each = all.begin(); each != all.end() && answer.size() < query.top; ++each)
            if (std::find_if (all.begin(), each, [each] (const auto& other) { return other.second == each->second; }) == each)
                answer.push_back (each->first);

        return answer;
    }

    Answer find (const TakeQuery& query, const GrooveTarget& target, const TakeKernels& kernels)
    {
        Answer answer;
        const auto found = findTakes (
            query,
            target,
            neverStop,
            [] (double) {},
            kernels);
        EXPECT_EQ (found.searched, (std::uint64_t { query.lastTake } - query.firstTake + 1) * query.settings.size());

        for (const auto& take : found.takes)
        {
            answer.emplace_back (take.distance, query.settings[take.settings].genre, take.take, take.settings);
            EXPECT_EQ (take.pattern.hits, grooveOf (query, take.settings, take.take, target.bars()).hits);
        }

        return answer;
    }

    std::vector<DrumHit> hits (std::initializer_list<std::tuple<double, std::uint32_t, DrumLane>> list)
    {
        std::vector<DrumHit> result;
        for (const auto& [start, velocity, lane] : list)
            result.push_back ({ .start = start, .note = 36 + static_cast<std::uint32_t> (lane), .velocity = velocity, .lane = lane });
        return result;
    }

    double distance (const std::vector<DrumHit>& from, const std::vector<DrumHit>& to)
    {
        GrooveTarget target (1);
        target.setExample (to, 1);
        DrumPattern pattern { .name = {}, .bars = 1, .hits = from };
        normalise (pattern);
        GrooveTarget::Scratch scratch;
        return static_cast<double> (target.distanceTo (pattern, scratch)) / GrooveTarget::unit;
    }

    std::string bytes (std::initializer_list<int> values)
    {
        return { values.begin(), values.end() };
    }

    std::string chunk (const std::string& name, const std::string& data)
    {
        const auto size = data.size();
        return name + bytes ({ 0, static_cast<int> (size >> 16), static_cast<int> (size >> 8 & 255), static_cast<int> (size & 255) }) + data;
    }

    /** A file with one track. */
    std::string midi (const std::string& track, int division = 96)
    {
        return chunk ("MThd", bytes ({ 0, 0, 0, 1, division >> 8, division & 255 })) + chunk ("MTrk", track);
    }

    GrooveExample read (const std::string& file)
    {
        return exampleInMidiFile ({ reinterpret_cast<const std::uint8_t*> (file.data()), file.size() });
    }
} // namespace

TEST (TakeSearch, FindsWhatTryingThemAllFinds)
{
    const auto boomBap = [] (float value) { return knobsAt (Genre::boomBap, value, 0.3f); };
    TakeQuery everyStyle { .settings = {}, .firstTake = 1, .lastTake = 700 };
    for (std::uint32_t genre = 0; genre < genreCount; ++genre)
        everyStyle.settings.push_back ({ .genre = static_cast<Genre> (genre) });

    const std::vector<std::pair<TakeQuery, std::int32_t>> queries {
        { everyStyle, 2 },
        { { .settings = { boomBap (0.2f), boomBap (0.9f) }, .section = SectionType::fill, .firstTake = 4294966000u, .lastTake = 4294967295u - 5 },
          1 },
        { { .settings = { knobsAt (Genre::trap, 1.0f, 1.0f) }, .section = SectionType::highChorus, .firstTake = 0, .lastTake = 900, .jobs = 3 }, 3 },
        { { .settings = { knobsAt (Genre::dub, 0.5f, 0.0f) }, .section = SectionType::breakdown, .firstTake = 7, .lastTake = 2500, .top = 40 }, 1 },
        { { .settings = { knobsAt (Genre::electronic, 0.6f, 0.2f) }, .firstTake = 5, .lastTake = 90, .top = 200 }, 8 }
    };

    for (const auto& [query, bars] : queries)
        for (const auto wanted : { 0, 1, 2 })
        {
            GrooveTarget target (bars);

            if (wanted < 2)
                target.setExample (grooveOf (query, 0, query.lastTake - 20, bars).hits, bars);

            if (wanted > 0)
            {
                target.setShape (DrumLane::kick, "#-.x..-.o.x.-.x.");
                target.setShape (DrumLane::perc, "................");
            }

            const auto expected = tryThemAll (query, target);

            for (const auto* kernels : TakeKernels::all())
                EXPECT_EQ (find (query, target, *kernels), expected) << kernels->name << ", " << bars << " bars, " << wanted;
        }
}

TEST (TakeSearch, DistanceIsWhatItCostsToTurnOneIntoTheOther)
{
    const auto beat =
        hits ({ { 0.0, 127, DrumLane::kick }, { 1.0, 127, DrumLane::snare }, { 2.0, 127, DrumLane::kick }, { 2.5, 127, DrumLane::hats } });

    const auto with = [&beat] (std::size_t index, double later, std::uint32_t velocity)
    {
        auto changed = beat;
        changed[index].start += later;
        changed[index].velocity = velocity;
        return changed;
    };

    const std::vector<std::pair<std::vector<DrumHit>, double>> others {
        { beat, 0.0 },
        { hits ({ { 0.0, 127, DrumLane::kick }, { 1.0, 127, DrumLane::snare }, { 2.0, 127, DrumLane::kick } }), 0.5 }, // a hat is missing
        { hits ({ { 1.0, 127, DrumLane::snare }, { 2.0, 127, DrumLane::kick }, { 2.5, 127, DrumLane::hats } }), 1.0 }, // a kick
        { with (0, 0.0, 0), 0.5 },                                                                                     // silent: half of it is left
        { with (2, 0.0625, 127), 0.5 },                                                                                // a quarter of a sixteenth
        { with (2, 0.25, 127), 2.0 },                                                                                  // one gone, one too many
        { with (2, -1.0, 127), 2.0 },
        { with (0, 3.96875, 127), 0.25 }, // early, across the end of the pattern
        { {}, 3.5 }
    };

    for (std::size_t i = 0; i < others.size(); ++i)
    {
        EXPECT_DOUBLE_EQ (distance (beat, others[i].first), others[i].second) << i;
        EXPECT_DOUBLE_EQ (distance (others[i].first, beat), others[i].second) << i;
    }

    GrooveTarget folded (1), repeated (2);
    folded.setExample (hits ({ { 1.0, 50, DrumLane::kick }, { 5.02, 90, DrumLane::kick }, { 6.0, 60, DrumLane::kick } }), 2);
    repeated.setExample (beat, 1);
    ASSERT_EQ (folded.lane (0).strokes.size(), 2u);
    EXPECT_EQ (folded.lane (0).strokes[0].mass, GrooveTarget::massOf (90));
    ASSERT_EQ (repeated.lane (0).strokes.size(), 4u);
    EXPECT_EQ (repeated.lane (0).strokes[3].tick, 6 * 960);
}

TEST (TakeSearch, ReadsTheDrumsOfMidiFiles)
{
    // Running status, a text, a release as a note-on of no velocity, a SysEx, and another channel's note.
    const auto drums   = bytes ({ 0,    0x99, 36, 100, 24, 0xFF, 1, 2,    'h', 'i',  0x48, 0x99, 38,   90,   0,    36,   0,
                                  0x81, 0x40, 46, 80,  0,  0xF0, 1, 0xF7, 0,   0x90, 60,   70,   0x83, 0x60, 0xFF, 0x2F, 0 });
    const auto example = read (chunk ("MThd", bytes ({ 0, 1, 0, 1, 0, 96 })) + chunk ("XYZW", "?") + chunk ("MTrk", drums));
    ASSERT_EQ (example.hits.size(), 3u);
    EXPECT_EQ (example.bars, 2);
    EXPECT_EQ (example.hits[1], (DrumHit { .start = 1.0, .note = 38, .velocity = 90, .lane = DrumLane::snare }));
    EXPECT_EQ (example.hits[2], (DrumHit { .start = 3.0, .note = 46, .velocity = 80, .lane = DrumLane::hats }));

    // From the third bar on, on the only channel.
    const auto later = read (midi (bytes ({ 0x86, 0x30, 0x90, 35, 64 })));
    EXPECT_EQ (later.bars, 1);
    EXPECT_EQ (later.hits, (std::vector<DrumHit> { { .start = 0.5, .note = 35, .velocity = 64, .lane = DrumLane::kick } }));

    const std::vector<std::pair<std::string, std::string>> bad {
        { "RIFF", "no MIDI file" },
        { midi (drums).substr (0, 55), "cut off" },
        { midi (drums, 0xE728), "SMPTE" },
        { midi (drums, 0), "no ticks" },
        { midi (bytes ({ 0, 0xFF, 0x2F, 0 })), "no notes" },
        { midi (bytes ({ 0, 0x90, 60, 70, 9, 64, 70 })), "melody" },
        { midi (bytes ({ 0, 0x99, 60, 70 })), "melody" },
        { midi (bytes ({ 0, 0x90, 36, 70, 9, 0x91, 36, 70 })), "several channels" },
        { midi (bytes ({ 0, 36, 70 })), "where a message should begin" },
        { midi (bytes ({ 0, 0xF4, 36, 70 })), "may not have" },
        { midi (bytes ({ 0xFF, 0xFF, 0xFF, 0xFF, 0, 0x99, 36, 70 })), "longer than four bytes" },
        { midi (bytes ({ 0, 0x99, 36, 70, 0xFF, 0xFF, 0xFF, 0x7F, 36, 70 }), 1), "longer than 10000 bars" }
    };

    for (const auto& [file, message] : bad)
        try
        {
            ADD_FAILURE() << message << ": " << read (file).hits.size() << " hits";
        }
        catch (const BadExample& error)
        {
            EXPECT_NE (std::string (error.what()).find (message), std::string::npos) << error.what();
        }
}

} // namespace pulsewright
