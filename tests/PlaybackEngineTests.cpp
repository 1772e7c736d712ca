// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PlainEvents.h"

#include "generation/GrooveGenerator.h"
#include "generation/SongBuilder.h"
#include "processor/PreviewTransport.h"
#include "processor/SnapshotExchange.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <limits>
#include <map>
#include <thread>

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

    struct Case
    {
        Repeat repeat;
        std::shared_ptr<const PlaybackData> music, inOnePiece;
    };

    const Case cases[] { { Repeat::once, groove, groove },
                         { Repeat::looped, groove, groove },
                         { Repeat::once, makePlaybackData (song), makePlaybackData (flatten (*song), 192.0) },
                         { Repeat::looped, makePlaybackData (song, 1), makePlaybackData (verse.hits, verse.lengthInBeats()) } };

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

/** So, as blocks play what a scan finds in them, every note is played once, and where it belongs. */
TEST (PlaybackEngine, BlocksMeetHoweverAHostRoundsTheirPositions)
{
    const std::map<std::string, std::function<double (double)>> hosts {
        { "exact", [] (double b) { return b; } },
        { "rounded to 1/1920", [] (double b) { return std::round (b * 1920.0) / 1920.0; } },
        { "cut to 1/1920", [] (double b) { return std::floor (b * 1920.0) / 1920.0; } },
        { "one unit too high", [] (double b) { return std::nextafter (b, 1e9); } },
        { "single precision", [] (double b) { return static_cast<double> (static_cast<float> (b)); } }
    };

    for (const auto& [name, rounded] : hosts)
        for (const int fixedSize : { 1, 32, 441, 512, 0 })
        {
            TransportContinuity continuity;
            BlockSizes sizes { fixedSize };
            std::int64_t sample = 0;
            const auto exact    = [&] { return static_cast<double> (sample) * tempo / (rate * 60.0); };
            const double beats  = fixedSize == 441 && name.find ("1920") != name.npos ? 600.0 * tempo : 40.0; // ten hours, or half a minute
            double playedUntil  = rounded (0.0);

            while (exact() < beats)
            {
                const auto numSamples = sizes.next();
                const auto window     = continuity.join (windowAt (rounded (exact()), tempo, rate, numSamples));
                ASSERT_EQ (window.from, playedUntil) << name << ", blocks of " << fixedSize;
                ASSERT_NEAR (window.start, exact(), 1.0 / 960.0);

                playedUntil = std::max (playedUntil, window.end);
                sample += numSamples;
                ASSERT_NEAR (playedUntil, exact(), 1.0 / 960.0) << name << ", blocks of " << fixedSize;
            }
        }
}

TEST (PlaybackEngine, AJumpIsPlayedAsItStands)
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

TEST (PlaybackEngine, NothingThatCannotBePlayedIsPlayed)
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
    EXPECT_TRUE (eventsOf (*makePlaybackData ({ { .start = 0.0 } }, 0.0), Repeat::looped, window).empty());
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

TEST (PlaybackEngine, FarOutARoundedBeatStillHasItsEnd)
{
    // So far out the hit's beat is rounded up, and its end with it, into a block that it would have missed by itself.
    const auto music  = makePlaybackData ({ { .start = 1.0 - 0x1p-22, .length = 0.5 } }, 4.0);
    const auto window = windowAt (0x1p32 + 1.5, 60.0, 100.0, 6);

    EXPECT_EQ (eventsOf (*music, Repeat::looped, window), (std::vector<NoteEvent> { { 0, 0x89, 36, 0 } }));
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
        publish();

        {
            const auto reading = exchange.read();
            publish();
            publish();
            EXPECT_EQ (reading.get()->alive, 12345);
            EXPECT_EQ (living, 3); // the one being read, one retired behind it, the current one
        }

        for (int i = 0; i < 3; ++i)
        {
            const auto reading = exchange.read();
            publish();
            EXPECT_EQ (living, 2); // what earlier readings held back goes although another one is under way
        }

        publish();
        EXPECT_EQ (living, 1);

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
    EXPECT_FALSE (preview.isPlaying());
}

} // namespace pulsewright
