// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PlainEvents.h"

#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"
#include "processor/playback/Lv2Transport.h"
#include "processor/playback/PreviewTransport.h"
#include "processor/playback/SnapshotExchange.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <string_view>
#include <thread>
#include <tuple>

namespace pulsewright
{

namespace
{
    constexpr double rate  = 48000.0;
    constexpr double tempo = 93.7;

    std::shared_ptr<const PlaybackData> busyGroove (int bars)
    {
        GenerationSettings settings;
        settings.genre = Genre::trap;
        settings.setValues ({ 1, 1, 1, 0.5f, 1, 1, 1, 1, 1, 1, 1, 1 });

        const auto pattern = GrooveGenerator::generate (settings, SectionType::highChorus, bars, 0);
        return makePlaybackData (pattern.hits, pattern.lengthInBeats());
    }

    std::vector<NoteEvent> eventsOf (const PlaybackData& music, Repeat repeat, const BlockWindow& window)
    {
        std::vector<NoteEvent> events;
        events.reserve (8192); // nothing is allocated while the engine gives events
        findEvents (music, repeat, window, [&] (const NoteEvent& e) { events.push_back (e); });
        return events;
    }

} // namespace

TEST (PlaybackEngine, FindsWhatAScanFinds)
{
    const auto song   = std::make_shared<const SongArrangement> (SongBuilder::buildSong ({}, 48, 0));
    const auto groove = busyGroove (3);
    const auto& verse = song->sections[1].pattern;
    std::size_t found = 0;

    const std::tuple<Repeat, std::shared_ptr<const PlaybackData>, std::shared_ptr<const PlaybackData>> cases[] {
        { Repeat::once, groove, groove },
        { Repeat::looped, groove, groove },
        { Repeat::once, makePlaybackData (song), makePlaybackData (flatten (*song), 192.0) },
        { Repeat::looped, makePlaybackData (song, 1), makePlaybackData (verse.hits, verse.lengthInBeats()) }
    };

    for (const auto& [repeat, music, inOnePiece] : cases)
        for (const double firstBeat : { -13.0, 0.0, 11.7, 60.0, 1.0e6 + 1.0 / 3.0, 3.0e9 })
            for (const int fixedSize : { 1, 32, 441, 512, 8192, 0 })
            {
                BlockSizes sizes { fixedSize };
                TransportContinuity continuity;
                auto beat = firstBeat;

                for (int block = 0; block < 200; ++block)
                {
                    const auto rounded = std::round (beat * 1920.0) / 1920.0;
                    const auto window  = continuity.join (windowAt (rounded, tempo, rate, sizes.next()));
                    const auto events  = eventsOf (*music, repeat, window);
                    ASSERT_EQ (events, plainEventsOf (*inOnePiece, repeat, window)) << "block of " << window.numSamples << " at beat " << beat;
                    found += events.size();
                    beat += window.end - window.start;
                }
            }

    EXPECT_GT (found, 5000u);
    EXPECT_EQ (makePlaybackData (song)->lengthInBeats, 192.0);
}

namespace
{
    /** How a host rounds the positions that it names. */
    struct RoundingHost
    {
        const char* name;
        double (*rounded) (double);
        bool countsInSamples; ///< every pass of a loop begins at the same sample; else a pass begins where the last one ended
    };

    const RoundingHost roundingHosts[] { { "exact", [] (double b) { return b; }, false },
                                         { "exact, loop in samples", [] (double b) { return b; }, true },
                                         { "rounded to 1/960", [] (double b) { return std::round (b * 960.0) / 960.0; }, false },
                                         { "rounded to 1/1920", [] (double b) { return std::round (b * 1920.0) / 1920.0; }, true },
                                         { "cut to 1/960", [] (double b) { return std::floor (b * 960.0) / 960.0; }, true },
                                         { "cut to 1/1920", [] (double b) { return std::floor (b * 1920.0) / 1920.0; }, false },
                                         { "one unit too high", [] (double b) { return std::nextafter (b, 1e9); }, false },
                                         { "single precision", [] (double b) { return static_cast<double> (static_cast<float> (b)); }, false } };
} // namespace

/** So, as blocks play what a scan finds in them, every note is played once, and where it belongs. */
TEST (PlaybackEngine, BlocksMeetHoweverAHostRoundsTheirPositions)
{
    for (const auto& [name, rounded, _] : roundingHosts)
        for (const int fixedSize : { 1, 32, 441, 512, 0 })
        {
            TransportContinuity continuity;
            BlockSizes sizes { fixedSize };
            std::int64_t sample = 0;
            const auto exact    = [&] { return static_cast<double> (sample) * tempo / (rate * 60.0); };
            const bool isLong   = fixedSize == 441 && std::string_view (name).find ("1920") != std::string_view::npos;
            double playedUntil  = rounded (0.0);

            while (exact() < (isLong ? 600.0 * tempo : 40.0)) // ten hours, or half a minute
            {
                const auto numSamples = sizes.next();
                const auto window     = continuity.join (windowAt (rounded (exact()), tempo, rate, numSamples));
                ASSERT_EQ (window.from, playedUntil) << name << ", blocks of " << fixedSize;
                playedUntil = std::max (playedUntil, window.end);
                sample += numSamples;
                ASSERT_NEAR (playedUntil, exact(), 1.0 / 960.0) << name << ", blocks of " << fixedSize;
            }
        }
}

namespace
{
    struct LoopRun
    {
        HostLoop loop;
        double bpm;
        int blockSize;
        bool isReported; ///< to the plug-in
    };

    using Onsets = std::vector<std::tuple<int, int, double>>; ///< note, velocity and sample, sorted

    /** The beats in a loop at which a hit begins. @param length  of the pattern; 0 where it is played once */
    std::vector<double> onsetsOf (const DrumHit& hit, double length, const HostLoop& loop)
    {
        const double step = length > 0.0 ? length : 1e9;
        std::vector<double> beats;
        for (double beat = hit.start; beat < loop.end; beat += step) // NOLINT(cert-flp30-c,clang-analyzer-security.FloatLoopCounter)
            if (beat >= loop.start)
                beats.push_back (beat);
        return beats;
    }

    /** What a hundred passes of the loop have, and what the blocks play of it. */
    std::pair<Onsets, Onsets> wantedAndHeard (const RoundingHost& host, const PlaybackData& music, Repeat repeat, const LoopRun& run)
    {
        const auto beatsPerSample = run.bpm / (rate * 60.0);
        const auto length         = repeat == Repeat::looped ? music.lengthInBeats : 0.0;
        TransportContinuity continuity;
        BlockSizes sizes { run.blockSize };
        Onsets wanted, heard;
        double passBeat = run.loop.start, sample = 0.0;

        for (int pass = 0; pass < 100; ++pass)
        {
            const auto reported     = run.isReported || pass == 99 ? std::make_optional (run.loop) : std::nullopt; // the last one begins no other
            const auto exactSamples = (run.loop.end - passBeat) / beatsPerSample;
            const auto passSamples  = static_cast<int> (host.countsInSamples ? std::round (exactSamples) : std::ceil (exactSamples - 1e-6));

            for (const auto& hit : hitsOf (music))
                for (const double beat : onsetsOf (hit, length, run.loop))
                    wanted.emplace_back (hit.note, hit.velocity, sample + (beat - passBeat) / beatsPerSample);

            for (int done = 0; done < passSamples;)
            {
                const auto numSamples = std::min (sizes.next(), passSamples - done);
                const auto start      = host.rounded (passBeat + done * beatsPerSample);

                for (const auto& event : eventsOf (music, repeat, continuity.join (windowAt (start, run.bpm, rate, numSamples), reported, length)))
                    if (event.status == NoteEvent::noteOn)
                        heard.emplace_back (event.note, event.velocity, sample + done + event.sampleOffset);

                done += numSamples;
            }

            sample += passSamples;
            passBeat = host.countsInSamples ? run.loop.start : passBeat + passSamples * beatsPerSample - run.loop.length();
        }

        std::ranges::sort (wanted);
        std::ranges::sort (heard);
        return { wanted, heard };
    }
} // namespace

/** In loops that are and are not a whole number of samples or of patterns, by hosts whose first block has the first onset.
    PULSEWRIGHT_LOOPS sets how many of each.
*/
TEST (PlaybackEngine, ALoopPlaysEveryOnsetOnceInEveryPass)
{
    const auto* loops = std::getenv ("PULSEWRIGHT_LOOPS"); // NOLINT(concurrency-mt-unsafe): no thread changes it
    std::mt19937 dice (11);
    const auto oneOf        = [&dice] (auto... values) { return std::array { values... }[dice() % sizeof...(values)]; };
    std::size_t onsetsHeard = 0;

    for (const auto& host : roundingHosts)
        for (const int bars : { 1, 2, 3, 5, 7, 12 })
            for (int draw = 0; host.rounded (0.0) == 0.0 && draw < (loops != nullptr ? std::atoi (loops) : 2); ++draw) // NOLINT(cert-err34-c)
            {
                const auto repeat    = bars == 12 ? Repeat::once : Repeat::looped;
                const auto startBeat = 4.0 * oneOf (0, 0, 1, 2, 4);
                const auto loopBars  = oneOf (1, 2, 3, 4, 5, 6, 7, 8);
                const LoopRun run { .loop       = { startBeat, startBeat + 4.0 * loopBars },
                                    .bpm        = oneOf (90.0, 93.7, 120.0, 174.3),
                                    .blockSize  = oneOf (32, 64, 441, 1024, 4096, 0),
                                    .isReported = loopBars % bars != 0 || draw % 2 == 0 };
                const auto story = testing::Message() << host.name << ", " << bars << " bars, loop " << run.loop.start << " to " << run.loop.end
                                                      << " at " << run.bpm << " BPM, blocks of " << run.blockSize;
                const auto tolerance = 1.0 + 1.0 / 480.0 * 60.0 * rate / run.bpm;

                const auto [wanted, heard] = wantedAndHeard (host, *busyGroove (bars), repeat, run);
                ASSERT_EQ (heard.size(), wanted.size()) << story;
                onsetsHeard += heard.size();

                for (std::size_t i = 0; i < wanted.size(); ++i)
                {
                    const auto& [note, velocity, sample] = wanted[i];
                    ASSERT_EQ (std::tie (std::get<0> (heard[i]), std::get<1> (heard[i])), std::tie (note, velocity)) << story;
                    ASSERT_NEAR (std::get<2> (heard[i]), sample, tolerance) << story << ", note " << note;
                }
            }

    EXPECT_GT (onsetsHeard, 100000u);
}

TEST (PlaybackEngine, WhatABlockLeftOfALoopIsPlayedWithTheNext)
{
    const auto music = makePlaybackData ({ { .start = 0.0, .note = 38 }, { .start = 3.9995, .length = 0.5 } }, 8.0);
    const HostLoop loop { 0.0, 4.0 };
    TransportContinuity continuity;
    continuity.join (windowAt (3.0, 60.0, 1000.0, 999), loop); // up to 3.999

    EXPECT_EQ (eventsOf (*music, Repeat::looped, continuity.join (windowAt (0.0, 60.0, 1000.0, 10), loop)),
               (std::vector<NoteEvent> { { 0, 0x99, 36, 100 }, { 0, 0x99, 38, 100 } }));
}

TEST (PlaybackEngine, AfterAJumpTheBlockStartsAtTheHostsBeat)
{
    TransportContinuity continuity;
    const auto first = continuity.join (windowAt (-1.0, 60.0, 1.0, 1)); // up to exactly 0
    EXPECT_EQ (first.from, -1.0);

    const auto nearly = continuity.join (windowAt (1.0 / 960.0, 120.0, rate, 512));
    EXPECT_EQ (nearly.from, 0.0);

    const auto seek = continuity.join (windowAt (nearly.end + 1.0 / 959.0, 120.0, rate, 512));
    EXPECT_EQ (seek.from, seek.start);

    continuity.breakOff();
    const auto restarted = continuity.join (windowAt (seek.end + 1.0 / 1920.0, 120.0, rate, 512));
    EXPECT_EQ (restarted.from, restarted.start);
}

TEST (PlaybackEngine, PositionsAndTemposThatCannotBePlayedGiveNoEvents)
{
    constexpr auto nan      = std::numeric_limits<double>::quiet_NaN();
    constexpr auto infinity = std::numeric_limits<double>::infinity();

    for (const double beat : { nan, infinity, -infinity, -0x1p52 - 1.0, 1e18, -1e18, 1e300, -1e300 })
        EXPECT_EQ (windowAt (beat, 120.0, rate, 512).numSamples, 0) << beat;

    for (const double bpm : { nan, infinity, -infinity, 0.0, -120.0, 1e300 })
        EXPECT_EQ (windowAt (0.0, bpm, rate, 512).numSamples, 0) << bpm;

    // The farthest beat and the longest block that are played, and the sample that a rounding beyond it falls on.
    EXPECT_EQ (windowAt (-0x1p52, 60.0, rate, 512).numSamples, 512);
    EXPECT_EQ (windowAt (0.0, 60.0, 1.0, 256).offsetOf (256.0), 255);
    EXPECT_EQ (windowAt (0.0, 60.0, 1.0, 257).numSamples, 0);
    EXPECT_EQ (windowAt (0.0, 60.0, 1.0, 0).numSamples, 0);

    for (const double sampleRate : { 0.0, -1.0 })
        EXPECT_EQ (windowAt (0.0, 60.0, sampleRate, 4).end, 4.0); // as at one hertz

    const auto window = windowAt (0.0, 120.0, rate, 512);
    EXPECT_TRUE (eventsOf (*busyGroove (1), Repeat::looped, {}).empty());
    EXPECT_TRUE (eventsOf (*makePlaybackData ({}, 8.0), Repeat::looped, window).empty());
    for (const auto repeat : { Repeat::once, Repeat::looped })
        EXPECT_TRUE (eventsOf (*makePlaybackData ({ { .start = 0.0 } }, 0.0), repeat, window).empty());
}

TEST (PlaybackEngine, NoteOffFallsInTheNextBlockAcrossTheLoop)
{
    const auto music     = makePlaybackData ({ { .start = 3.95, .length = 0.11, .note = 36 + 128, .velocity = 200 } }, 4.0);
    const auto lastBlock = windowAt (3.9, 60.0, 100.0, 6); // a hundredth of a beat each sample
    const auto nextBlock = windowAt (lastBlock.end, 60.0, 100.0, 20);

    EXPECT_EQ (eventsOf (*music, Repeat::looped, lastBlock), (std::vector<NoteEvent> { { 5, 0x99, 36, 127 } }));
    EXPECT_EQ (eventsOf (*music, Repeat::looped, nextBlock), (std::vector<NoteEvent> { { 10, 0x89, 36, 0 } }));

    // A loop played from its first beat has the stray end of the note before it, a song has not.
    EXPECT_EQ (eventsOf (*music, Repeat::looped, windowAt (0.0, 60.0, 100.0, 20)).size(), 1u);
    EXPECT_TRUE (eventsOf (*music, Repeat::once, windowAt (0.0, 60.0, 100.0, 20)).empty());
}

TEST (PlaybackEngine, ANoteFarFromTheStartStillEnds)
{
    // So far out the hit's beat is rounded up, and its end with it, into a block that it would have missed by itself.
    const auto music  = makePlaybackData ({ { .start = 1.0 - 0x1p-22, .length = 0.5 } }, 4.0);
    const auto window = windowAt (0x1p32 + 1.5, 60.0, 100.0, 6);

    EXPECT_EQ (eventsOf (*music, Repeat::looped, window), (std::vector<NoteEvent> { { 0, 0x89, 36, 0 } }));
}

//==============================================================================
/** At 100 samples a second; without a named tempo, 60 BPM: then a hundredth of a beat a sample. */
TEST (Lv2Transport, KeepsTheBeatThatTheHostDoesNotName)
{
    using Beats = std::vector<std::pair<double, double>>; // and the tempo, a stretch each

    struct Block
    {
        std::optional<HostPosition> said;
        Beats wanted;
    };

    const auto at = [] (std::int64_t sample, std::optional<double> named = {}, bool isRolling = true)
    { return HostPosition { .isRolling = isRolling, .beat = {}, .tempo = named, .sample = sample, .bar = {}, .beatsPerBar = {}, .loop = {} }; };

    const auto atBar = [] (std::int64_t sample, double beat, std::optional<std::int64_t> bar, int beatsInBar = 4)
    { return HostPosition { .isRolling = true, .beat = beat, .tempo = 60.0, .sample = sample, .bar = bar, .beatsPerBar = beatsInBar, .loop = {} }; };
    constexpr auto latest = std::numeric_limits<std::int64_t>::max(), earliest = std::numeric_limits<std::int64_t>::min();
    constexpr auto nan = std::numeric_limits<double>::quiet_NaN();

    // clang-format off
    const std::vector<Block> stories[] {
        // No tempo at all: the fallback, and the beat goes on.
        { { at (0), { { 0, 60 } } }, { {}, { { 0.1, 60 } } }, { {}, { { 0.2, 60 } } }, { at (400), { { 4, 60 } } }, { {}, { { 4.1, 60 } } } },
        // A tempo that is no longer named stays until the next jump.
        { { at (0, 120), { { 0, 120 } } }, { at (10), { { 0.2, 120 } } }, { {}, { { 0.4, 120 } } }, { at (400), { { 4, 60 } } } },
        // A new tempo counts from its sample; a jump counts from the start. 600 samples at 120 BPM are 12 beats.
        { { at (600, 60), { { 6, 60 } } }, { at (610, 120), { { 6.1, 120 } } }, { at (624, 240), { { 6.3, 120 }, { 6.38, 240 } } },
          { {}, { { 6.62, 240 } } }, { at (600, 120), { { 12, 120 } } } },
        // While it stands, the beat does; it goes on from there.
        { { at (0, 60), { { 0, 60 } } }, { at (10, 60, false), {} }, { at (10, 120, false), {} }, { at (10, 120), { { 0.1, 120 } } },
          { {}, { { 0.3, 120 } } } },
        // A named beat is taken at its sample.
        { { HostPosition { .isRolling = true, .beat = 5.0, .tempo = 60.0, .sample = 77, .bar = {}, .beatsPerBar = {}, .loop = {} }, { { 5, 60 } } },
          { HostPosition { .isRolling = true, .beat = 9.0, .tempo = 60.0, .sample = 92, .bar = {}, .beatsPerBar = {}, .loop = {} },
            { { 5.1, 60 }, { 9, 60 } } },
          { {}, { { 9.05, 60 } } } },
        // The beat of the bar is not the beat; where no bar is named, or another one, it is.
        { { atBar (0, 1.0, 0), { { 0, 60 } } },
          { atBar (630, 3.0, 1), { { 6.3, 60 } } },
          { atBar (640, 3.0, 1), { { 6.4, 60 } } },
          { atBar (800, 1.0, 2), { { 8, 60 } } },
          { atBar (400, 0.0, 0), { { 0, 60 } } },
          { atBar (600, 3.0, 0), { { 3, 60 } } },
          { atBar (300, 2.0, 3, 1), { { 2, 60 } } },
          { atBar (100, 2.0, {}), { { 2, 60 } } } },
        // Numbers that cannot be played do no lasting harm.
        { { at (latest - 5, 60), { { 0x1p63 / 100, 60 } } }, { at (earliest, 60), { { -0x1p63 / 100, 60 } } }, { at (0, nan, false), {} },
          { at (100, -60), { { 0, -60 } } }, { at (0, 60), { { 0, 60 } } } } };
    // clang-format on

    for (const auto& story : stories)
    {
        Lv2Transport transport;

        for (std::size_t block = 0; block < story.size(); ++block)
        {
            const auto& [said, wanted] = story[block];
            Beats heard;
            heard.reserve (2);
            int samples     = 0;
            const auto hear = [&] (const HostStretch& stretch)
            {
                EXPECT_EQ (stretch.firstSample, samples);
                samples += stretch.numSamples;
                if (stretch.position.isRolling)
                    heard.emplace_back (stretch.position.beat.value(), stretch.position.tempo.value());
            };
            transport.follow (said, 10, 100.0, 60.0, hear);

            EXPECT_EQ (samples, 10);
            const auto place = testing::Message() << "story " << &story - stories << ", block " << block;
            ASSERT_EQ (heard.size(), wanted.size()) << place;
            for (std::size_t i = 0; i < wanted.size(); ++i)
            {
                EXPECT_NEAR (heard[i].first, wanted[i].first, 1e-9 * std::abs (wanted[i].first)) << place;
                EXPECT_EQ (heard[i].second, wanted[i].second) << place;
            }
        }
    }
}

//==============================================================================
TEST (SnapshotExchange, FreesNothingThatIsBeingRead)
{
    struct Watched
    {
        explicit Watched (std::atomic<int>& c) : count (c) { ++count; }
        ~Watched() { --count, alive = 0; }

        std::atomic<int>& count;
        std::atomic<int> alive { 12345 };
    };

    std::atomic<int> living { 0 };
    {
        SnapshotExchange<Watched> exchange;
        const auto publish = [&] { exchange.publish (std::make_unique<Watched> (living)); };
        EXPECT_EQ (exchange.read().get(), nullptr);

        // What earlier readings held back goes although another one is under way: one is read, one retired, one current.
        for (int i = 0; i < 3; ++i)
        {
            publish();
            const auto reading = exchange.read();
            publish();
            publish();
            EXPECT_EQ (reading.get()->alive, 12345);
            EXPECT_EQ (living, 3);
        }

        std::atomic<bool> stop { false };
        std::atomic<std::int64_t> readings { 0 }, wrong { 0 };
        std::thread reader (
            [&]
            {
                for (; ! stop; ++readings)
                    wrong += exchange.read().get()->alive != 12345 ? 1 : 0;
            });

        for (int i = 0; i < 100000 || readings < 1000; ++i)
            publish();

        stop = true;
        reader.join();
        EXPECT_EQ (wrong, 0);
        publish();
        EXPECT_EQ (living, 1);
    }

    EXPECT_EQ (living, 0);
}

TEST (PreviewTransport, ANewStartIsNotMovedByTheBlockInFlight)
{
    PreviewTransport preview;
    preview.start (true);

    auto block = preview.beginBlock();
    EXPECT_TRUE (block.isPlaying() && block.isFullSong());
    preview.moveTo (3.0);
    EXPECT_EQ (preview.beginBlock().position, 3.0);

    // Started again while a block plays that is about to end the song.
    block = preview.beginBlock();
    preview.start (false);
    preview.finish (block);
    EXPECT_TRUE (preview.isPlaying());

    block = preview.beginBlock();
    EXPECT_TRUE (block.isPlaying() && ! block.isFullSong());
    EXPECT_EQ (block.position, 0.0);
    preview.stop();
    preview.start (true);
    preview.moveTo (5.0);
    EXPECT_EQ (preview.beginBlock().position, 0.0);

    preview.finish (preview.beginBlock());
    EXPECT_FALSE (preview.isPlaying() || preview.beginBlock().isPlaying());
}

} // namespace pulsewright
