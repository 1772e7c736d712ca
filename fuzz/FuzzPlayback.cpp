// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A host that jumps anywhere and rolls on, naming rounded positions: the blocks of a roll meet without a gap or an
// overlap, and each plays what a plain scan of all hits finds in it.

#include "FuzzCheck.h"
#include "PlainEvents.h"

namespace pulsewright::fuzz
{

namespace
{
    struct Music
    {
        Repeat repeat;
        std::shared_ptr<const PlaybackData> data;
    };

    Music anyMusic (FuzzedDataProvider& input)
    {
        static constexpr double lengths[] { 4.0, 4.0, 8.0, 12.0, 32.0, 0.0, -4.0, std::numeric_limits<double>::quiet_NaN() };
        static constexpr double hitLengths[] { 0.0, 0.07, 0.11, 1.0, 3.9 };

        const auto length = input.PickValueInArray (lengths);
        std::vector<DrumHit> hits;

        for (int count = input.ConsumeIntegralInRange (0, 12); count > 0; --count)
            hits.push_back ({ .start    = input.ConsumeIntegralInRange (0, 4000) / 4000.0 * (std::max (4.0, length) - 0.001),
                              .length   = input.PickValueInArray (hitLengths),
                              .note     = input.ConsumeIntegralInRange (36u, 50u),
                              .velocity = input.ConsumeIntegralInRange (0u, 127u) });

        std::ranges::stable_sort (hits, {}, &DrumHit::start);
        return { input.ConsumeBool() ? Repeat::looped : Repeat::once, makePlaybackData (hits, length) };
    }

    void checkEvents (const Music& music, const BlockWindow& window)
    {
        std::vector<NoteEvent> events;
        findEvents (*music.data, music.repeat, window, [&events] (const NoteEvent& event) { events.push_back (event); });

        for (const auto& event : events)
            check (event.sampleOffset >= 0 && event.sampleOffset < window.numSamples, "an event lies in its block");

        const bool isPlayable = music.data->lengthInBeats > 0.0 && window.numSamples > 0;
        check (events == (isPlayable ? plainEventsOf (*music.data, music.repeat, window) : std::vector<NoteEvent>()),
               "the events are those of a scan");
    }

    //==============================================================================
    /** Blocks that follow one another at a tempo, each beat named up to half of the rounding that is taken up too early or late. */
    void roll (FuzzedDataProvider& input, const Music& music, TransportContinuity& continuity)
    {
        static constexpr double tempos[] { 120.0, 93.7, 30.0, 300.0, 174.0 }, rates[] { 48000.0, 44100.0, 192000.0, 8000.0 };

        const auto tempo = input.PickValueInArray (tempos);
        const auto rate  = input.PickValueInArray (rates);
        const auto first = input.ConsumeIntegralInRange (-4000000, 4000000) / 40.0;
        double heard     = 0.0; // up to here

        continuity.breakOff();

        for (std::int64_t sample = 0, blocks = input.ConsumeIntegralInRange (1, 40); blocks > 0; --blocks)
        {
            const auto numSamples = input.ConsumeIntegralInRange (1, 2000);
            const auto error      = input.ConsumeIntegralInRange (-100, 100) / 100.0 / 1920.0;
            const auto exact      = first + static_cast<double> (sample) * tempo / (rate * 60.0);
            const auto window     = continuity.join (windowAt (exact + error, tempo, rate, numSamples));

            check (window.numSamples == numSamples, "an ordinary block is played");
            check (sample == 0 ? window.from == window.start : window.from == heard, "no beat of a roll is left out or played twice");
            check (std::abs (window.from - exact) <= 1.0 / 960.0, "each beat is played where it belongs");
            checkEvents (music, window);

            heard = std::max (window.from, window.end);
            sample += numSamples;
        }
    }

    /** A block that has nothing to do with those before it. */
    void jump (FuzzedDataProvider& input, const Music& music, TransportContinuity& continuity)
    {
        static constexpr std::array<double, 7> beats { 0.0, 3.999, 4.0, -1.0, 1.0e6 + 1.0 / 3.0, 0x1p52, 3.0e9 };
        static constexpr std::array<double, 4> tempos { 120.0, 1.0, 999.0, 93.7 }, rates { 48000.0, 192000.0, 100.0, 0.0 };

        const auto beat   = anyReal (input, beats);
        const auto tempo  = anyReal (input, tempos);
        const auto window = windowAt (beat, tempo, anyReal (input, rates), input.ConsumeIntegralInRange (-1, 8192));
        checkEvents (music, window);

        if (window.numSamples == 0)
            return check (! (window.from < window.end), "an empty window covers nothing");

        check (window.start == beat && window.beatsPerSample > 0.0 && window.end - beat <= 1025.0, "a window begins at its beat, and ends");
        const auto joined = continuity.join (window);
        check (joined.end == window.end && std::abs (joined.from - beat) <= TransportContinuity::largestRounding,
               "joining moves only the first beat");
        checkEvents (music, joined);
    }

    void run (FuzzedDataProvider input)
    {
        const auto music = anyMusic (input);
        TransportContinuity continuity;

        for (int times = 0; times < 20 && input.remaining_bytes() > 0; ++times)
            input.ConsumeBool() ? roll (input, music, continuity) : jump (input, music, continuity);
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    pulsewright::fuzz::run ({ data, size });
    return 0;
}
