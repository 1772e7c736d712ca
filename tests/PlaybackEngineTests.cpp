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

    struct ExpectedNote
    {
        double beat;
        std::uint8_t status, note;
        int timesPlayed = 0;
    };

    std::vector<ExpectedNote> notesOf (const PlaybackData& music, int repetitions)
    {
        std::vector<ExpectedNote> notes;

        for (int k = -1; k <= repetitions; ++k)
            for (const auto& hit : hitsOf (music))
            {
                const auto beat = k * music.lengthInBeats + hit.start;
                notes.push_back ({ beat, NoteEvent::noteOn, static_cast<std::uint8_t> (hit.note) });
                notes.push_back ({ beat + hit.length, NoteEvent::noteOff, static_cast<std::uint8_t> (hit.note) });
            }

        return notes;
    }

    ExpectedNote& nearest (std::vector<ExpectedNote>& notes, const NoteEvent& event, double beat)
    {
        const auto distance = [&] (const ExpectedNote& n)
        { return n.status == event.status && n.note == event.note ? std::abs (n.beat - beat) : 1e9; };

        return *std::min_element (notes.begin(), notes.end(), [&] (const auto& a, const auto& b) { return distance (a) < distance (b); });
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
                auto beat = firstBeat;

                for (int block = 0; block < 200; ++block)
                {
                    const auto window = windowAt (beat, tempo, rate, sizes.next());
                    const auto events = eventsOf (*music, repeat, window);
                    ASSERT_EQ (events, plainEventsOf (*inOnePiece, repeat, window)) << "block of " << window.numSamples << " at beat " << beat;
                    found += events.size();
                    beat = window.end;
                }
            }

    EXPECT_GT (found, 5000u);
    EXPECT_EQ (makePlaybackData (song)->lengthInBeats, 192.0);
}

TEST (PlaybackEngine, EveryHostPlaysEveryNoteOnce)
{
    const auto music = busyGroove (1);

    // How hosts round the position of a block.
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
            SCOPED_TRACE (name + ", blocks of " + std::to_string (fixedSize));
            TransportContinuity continuity;
            BlockSizes sizes { fixedSize };

            const double beatsPerSample = tempo / (rate * 60.0);
            auto notes                  = notesOf (*music, 10);
            double worstError           = 0.0;

            for (std::int64_t sample = 0; static_cast<double> (sample) * beatsPerSample < 40.0;)
            {
                const auto numSamples = sizes.next();
                const auto start      = rounded (static_cast<double> (sample) * beatsPerSample);

                for (const auto& event : eventsOf (*music, Repeat::looped, continuity.join (windowAt (start, tempo, rate, numSamples))))
                {
                    const auto beat = static_cast<double> (sample + event.sampleOffset) * beatsPerSample;
                    auto& note      = nearest (notes, event, beat);
                    ++note.timesPlayed;
                    worstError = std::max (worstError, std::abs (note.beat - beat));
                }

                sample += numSamples;
            }

            for (const auto& note : notes)
                EXPECT_TRUE (note.timesPlayed == 1 || note.beat < 1.0 || note.beat > 39.0)
                    << "note " << int (note.note) << " at beat " << note.beat << " played " << note.timesPlayed << " times";

            EXPECT_LE (worstError, 1.0 / 960.0);
        }
}

TEST (PlaybackEngine, TenHoursLoseNothing)
{
    const auto music            = busyGroove (4);
    const double beatsPerSample = tempo / (rate * 60.0);
    constexpr int numSamples    = 441;
    TransportContinuity continuity;
    BlockWindow window;
    std::map<std::pair<int, int>, std::int64_t> played, expected; // status and note

    for (std::int64_t sample = 0; sample < static_cast<std::int64_t> (10 * 3600 * rate); sample += numSamples)
    {
        const auto position = std::round (static_cast<double> (sample) * beatsPerSample * 1920.0) / 1920.0;
        window              = continuity.join (windowAt (position, tempo, rate, numSamples));
        findEvents (*music, Repeat::looped, window, [&] (const NoteEvent& e) { ++played[{ e.status, e.note }]; });
    }

    // Repetitions whose event at this beat lies between the start and the end.
    const auto repetitions = [&] (double beat)
    { return static_cast<std::int64_t> (std::ceil ((window.end - beat) / music->lengthInBeats) - std::ceil (-beat / music->lengthInBeats)); };

    for (const auto& hit : hitsOf (*music))
    {
        expected[{ NoteEvent::noteOn, static_cast<int> (hit.note) }] += repetitions (hit.start);
        expected[{ NoteEvent::noteOff, static_cast<int> (hit.note) }] += repetitions (hit.start + hit.length);
    }

    EXPECT_EQ (played, expected);
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
    const auto music        = busyGroove (1);

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

    EXPECT_TRUE (eventsOf (*music, Repeat::looped, {}).empty());
    EXPECT_TRUE (eventsOf (*makePlaybackData ({}, 8.0), Repeat::looped, windowAt (0.0, 120.0, rate, 512)).empty());
    EXPECT_TRUE (
        eventsOf (*makePlaybackData ({ hitsOf (*music).begin(), hitsOf (*music).end() }, 0.0), Repeat::looped, windowAt (0.0, 120.0, rate, 512))
            .empty());
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
        ~Watched()
        {
            --count;
            alive = 0;
        }

        std::atomic<int>& count;
        std::atomic<int> alive { 12345 };
    };

    std::atomic<int> living { 0 };

    {
        SnapshotExchange<Watched> exchange;
        EXPECT_EQ (exchange.read().get(), nullptr);

        exchange.publish (std::make_unique<Watched> (living));

        {
            const auto reading = exchange.read();
            exchange.publish (std::make_unique<Watched> (living));
            exchange.publish (std::make_unique<Watched> (living));
            EXPECT_EQ (reading.get()->alive, 12345);
            EXPECT_EQ (living, 3); // the one being read, one retired behind it, the current one
        }

        for (int i = 0; i < 3; ++i)
        {
            const auto reading = exchange.read();
            exchange.publish (std::make_unique<Watched> (living));
            EXPECT_EQ (living, 2); // what earlier readings held back goes although another one is under way
        }

        exchange.publish (std::make_unique<Watched> (living));
        EXPECT_EQ (living, 1);

        std::atomic<bool> stop { false };
        std::atomic<std::int64_t> readings { 0 }, wrong { 0 };

        std::thread reader (
            [&]
            {
                while (! stop)
                {
                    const auto reading = exchange.read();
                    wrong += reading.get()->alive != 12345 ? 1 : 0;
                    ++readings;
                }
            });

        for (int i = 0; i < 100000 || readings < 1000; ++i)
        {
            auto next = std::make_unique<Watched> (living);
            exchange.publish (std::move (next));
        }

        stop = true;
        reader.join();
        EXPECT_EQ (wrong, 0);
        exchange.publish (std::make_unique<Watched> (living));
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
