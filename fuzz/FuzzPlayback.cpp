// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A host that gives any position, tempo, sample rate and size, block after block.
//
// What is played is held against a plain scan of all hits. Like the engine, it takes a note for no longer than the loop.

#include "FuzzCheck.h"
#include "PlainEvents.h"

#include "generation/SongArrangement.h"

namespace pulsewright::fuzz
{

namespace
{
    constexpr double largestRounding = TransportContinuity::largestRounding;

    //==============================================================================
    std::vector<DrumHit> anyHits (FuzzedDataProvider& input, double lengthInBeats)
    {
        static constexpr double lengths[] { 0.0, 0.07, 0.11, 1.0, 3.9 };

        std::vector<DrumHit> hits;
        for (int count = input.ConsumeIntegralInRange (0, 12); count > 0; --count)
        {
            const auto start    = input.ConsumeIntegralInRange (0, 4000) / 4000.0 * (lengthInBeats - 0.001);
            const auto note     = input.ConsumeIntegralInRange (36u, 50u);
            const auto velocity = input.ConsumeIntegralInRange (0u, 127u);
            hits.push_back ({ .start = start, .length = input.PickValueInArray (lengths), .note = note, .velocity = velocity });
        }

        std::stable_sort (hits.begin(), hits.end(), [] (const DrumHit& a, const DrumHit& b) { return a.start < b.start; });
        return hits;
    }

    /** Music, and the same in one piece for the scan. */
    struct Music
    {
        Repeat repeat;
        std::shared_ptr<const PlaybackData> played, scanned;
    };

    Music anyPattern (FuzzedDataProvider& input)
    {
        static constexpr double oddLengths[] { 0.0, -4.0, std::numeric_limits<double>::quiet_NaN() };

        const bool hasLength = input.ConsumeIntegralInRange (0, 15) != 0;
        const auto length    = hasLength ? 4.0 * input.ConsumeIntegralInRange (1, 8) : input.PickValueInArray (oddLengths);
        const auto music     = makePlaybackData (anyHits (input, hasLength ? length : 4.0), length);
        return { input.ConsumeBool() ? Repeat::looped : Repeat::once, music, music };
    }

    Music anySong (FuzzedDataProvider& input)
    {
        auto song = std::make_shared<SongArrangement>();

        for (int sections = input.ConsumeIntegralInRange (0, 5); sections > 0; --sections)
        {
            auto& section        = song->sections.emplace_back();
            section.startBar     = song->totalBars;
            section.pattern.bars = input.ConsumeIntegralInRange (1, 4);
            section.pattern.hits = anyHits (input, section.pattern.lengthInBeats());
            song->totalBars += static_cast<std::uint32_t> (section.pattern.bars);
        }

        return { Repeat::once, makePlaybackData (song), makePlaybackData (flatten (*song), song->lengthInBeats()) };
    }

    //==============================================================================
    struct Block
    {
        double beat, tempo, sampleRate;
        int numSamples;
    };

    double anyBeatOf (FuzzedDataProvider& input, std::span<const DrumHit> hits)
    {
        const auto which = input.ConsumeIntegralInRange<std::size_t> (0, 15);
        return hits.empty() ? 0.0 : hits[which % hits.size()].start;
    }

    /** Where a block begins whose end falls on a beat, or a rounding beside it: there a note is the last sample's or no one's. */
    double beatThatEndsAt (double beat, const Block& block)
    {
        return beat - block.numSamples * block.tempo / (std::max (1.0, block.sampleRate) * 60.0);
    }

    /** The next block: mostly it follows the last one, exactly or as a host rounds, sometimes it is anywhere. */
    Block nextBlock (FuzzedDataProvider& input, const Block& last, double lastEnd, std::span<const DrumHit> hits)
    {
        static constexpr std::array<double, 7> beats { 0.0, 3.999, 4.0, -1.0, 1.0e6 + 1.0 / 3.0, 0x1p52, 3.0e9 };
        static constexpr std::array<double, 7> tempos { 120.0, 93.7, 30.0, 300.0, 1.0, 999.0, 174.0 };
        static constexpr std::array<double, 6> rates { 48000.0, 44100.0, 192000.0, 8000.0, 100.0, 0.0 };
        static constexpr int sizes[] { 0, 1, 2, 6, 32, 441, 512, 1024, 8192, -1 };

        auto block       = last;
        block.numSamples = input.ConsumeBool() ? input.PickValueInArray (sizes) : input.ConsumeIntegralInRange (0, 8192);

        switch (input.ConsumeIntegralInRange (0, 8))
        {
            case 0: block.beat = anyReal (input, beats); break;
            case 1: block.tempo = anyReal (input, tempos); [[fallthrough]];
            case 2: block.sampleRate = anyReal (input, rates); [[fallthrough]];
            case 3: block.beat = lastEnd; break;
            case 4: block.beat = std::round (lastEnd * 1920.0) / 1920.0; break;
            case 5: block.beat = std::nextafter (lastEnd, input.ConsumeBool() ? 1e9 : -1e9); break;
            case 6: block.beat = lastEnd + input.ConsumeIntegralInRange (-2000, 2000) * 1.0e-6; break;
            case 7: block.beat = beatThatEndsAt (anyBeatOf (input, hits), block); break;
            default: block.beat = lastEnd - input.ConsumeIntegralInRange (0, 16); break; // a host's loop
        }

        return block;
    }

    bool isOrdinary (const Block& block)
    {
        return std::abs (block.beat) <= 1e9 && block.tempo >= 1.0 && block.tempo <= 999.0 && block.sampleRate >= 8000.0
            && block.sampleRate <= 768000.0 && block.numSamples > 0;
    }

    void checkWindow (const BlockWindow& window, const Block& block)
    {
        if (window.numSamples == 0)
        {
            check (! isOrdinary (block), "an ordinary block is played");
            check (! (window.from < window.end), "an empty window covers nothing");
            return;
        }

        check (window.numSamples == block.numSamples && window.start == block.beat && window.from == block.beat, "a window is that of its block");
        check (window.beatsPerSample > 0.0 && std::isfinite (window.beatsPerSample), "time goes on");
        check (window.end >= window.start && window.end - window.start <= 1025.0, "a window has an end that is not too far away");
    }

    //==============================================================================
    /** What a listener knows of the blocks before. */
    struct Listener
    {
        bool hasHeard     = false;
        double heardUntil = 0.0;

        void checkJoined (const BlockWindow& window, const BlockWindow& joined)
        {
            check (joined.start == window.start && joined.end == window.end && joined.numSamples == window.numSamples,
                   "joining moves only the first beat");

            const bool follows = hasHeard && std::abs (window.start - heardUntil) <= largestRounding;
            check (joined.from == (follows ? heardUntil : window.start), "nothing is left out or played twice, and a jump is played as it stands");

            heardUntil = follows ? std::max (heardUntil, window.end) : window.end;
            hasHeard   = true;
        }
    };

    void checkEvents (const Music& music, const BlockWindow& window)
    {
        std::vector<NoteEvent> events;
        findEvents (*music.played, music.repeat, window, [&events] (const NoteEvent& event) { events.push_back (event); });

        for (const auto& event : events)
            check (event.sampleOffset >= 0 && event.sampleOffset < window.numSamples, "an event lies in its block");

        if (! (music.played->lengthInBeats > 0.0))
            return check (events.empty(), "music without a length is not played");

        check (events == plainEventsOf (*music.scanned, music.repeat, window), "the events are those of a scan");
    }

    void run (FuzzedDataProvider input)
    {
        const auto music = input.ConsumeBool() ? anyPattern (input) : anySong (input);

        TransportContinuity continuity;
        Listener listener;
        Block block { 0.0, 120.0, 48000.0, 512 };
        double lastEnd = 0.0;

        for (int blocks = 0; blocks < 100 && input.remaining_bytes() > 0; ++blocks)
        {
            block             = nextBlock (input, block, lastEnd, hitsOf (*music.scanned));
            const auto window = windowAt (block.beat, block.tempo, block.sampleRate, block.numSamples);
            checkWindow (window, block);
            checkEvents (music, window);

            if (window.numSamples == 0 || input.ConsumeIntegralInRange (0, 15) == 0)
            {
                continuity.breakOff();
                listener.hasHeard = false;
                continue;
            }

            const auto joined = continuity.join (window);
            listener.checkJoined (window, joined);
            checkEvents (music, joined);
            lastEnd = window.end;
        }
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    pulsewright::fuzz::run ({ data, size });
    return 0;
}
