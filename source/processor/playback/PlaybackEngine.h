// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Finds the notes of one audio block: which hits start or end in it, and at which sample.

#pragma once

#include "HostPosition.h"
#include "PlaybackData.h"

#include "NonBlocking.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>

namespace pulsewright
{

//==============================================================================
/** The last beats of a loop's pass that no block has covered: played late, at the next block's first sample. */
struct LoopRemainder
{
    double from = 0.0, end = 0.0;
};

/** A stretch of musical time that one block of samples covers. */
struct BlockWindow
{
    double start          = 0.0; ///< beats at the first sample
    double from           = 0.0; ///< the first beat that is played in this block; nearly always the start
    double end            = 0.0; ///< the first beat that is not
    double beatsPerSample = 0.0;
    int numSamples        = 0;
    int firstSample       = 0;  ///< of the host's block: not 0 where the tempo changes in the middle of it
    LoopRemainder remainder {}; ///< mostly empty

    /** The sample of the host's block at which a time inside the window is played. */
    int offsetOf (double beat) const PULSEWRIGHT_NONBLOCKING
    {
        // The division, not a multiplication by the reciprocal: that would move notes by a sample now and then.
        const double offset = (beat - start) / beatsPerSample;
        return firstSample + static_cast<int> (std::clamp (offset, 0.0, static_cast<double> (std::max (0, numSamples - 1))));
    }
};

/** The window of a block that begins at a beat, or an empty one when the position or the tempo is
    nothing that can be played: not a number, infinite, too far away, or a tempo of 0 or below.
    Thread: any. Blocks: never. Allocates: never.
*/
BlockWindow windowAt (double startBeat, double tempoBpm, double sampleRate, int numSamples) PULSEWRIGHT_NONBLOCKING;

//==============================================================================
/** Joins the blocks of a host whose positions are rounded.

    Many hosts give each block's position with a rounding of their own, so that it does not quite equal the end of
    the block before. A difference of at most 1/960 beat is removed: the block starts where the last one ended. A
    larger one is a jump: the block starts at the host's beat. The difference is measured directly, across the host's
    loop, and modulo the pattern's length; one of the three must be small. A block that ends at most 1/960 beat behind
    the host's loop ends with the loop.

    Thread: audio. Blocks: never. Allocates: never.
*/
class TransportContinuity
{
public:
    static constexpr double largestRounding = 1.0 / 960.0 + 1e-9; ///< in beats; the sums of doubles are not exact

    /** Call for every rolling block, in order, with its window as it stands.
        @param loop           that the host repeats
        @param patternLength  in beats, where a pattern is repeated; else 0
    */
    BlockWindow join (BlockWindow window, const std::optional<HostLoop>& loop = {}, double patternLength = 0.0) PULSEWRIGHT_NONBLOCKING;

    /** Call whenever the transport does not roll. */
    void breakOff() PULSEWRIGHT_NONBLOCKING { isRolling = false; }

private:
    bool isRolling     = false;
    double playedUntil = 0.0;
};

//==============================================================================
/** A note-on or note-off on MIDI channel 10. */
struct NoteEvent
{
    static constexpr std::uint8_t noteOn  = 0x99;
    static constexpr std::uint8_t noteOff = 0x89;

    int sampleOffset;
    std::uint8_t status, note, velocity;

    bool operator== (const NoteEvent&) const = default;
};

enum class Repeat
{
    once,  ///< a song
    looped ///< a pattern
};

/** Gives the events of a block to a sink, repetition by repetition, hit by hit, a note-on before its
    own note-off. Events of one sample are meant to be played in this order.

    The hits are searched, not scanned: the cost grows with the events in the block.

    Thread: audio. Blocks: never. Allocates: never; nor should the sink.
    @param sink  called with a NoteEvent
*/
template <typename Sink>
void findEvents (const PlaybackData& music, Repeat repeat, const BlockWindow& window, Sink&& sink) PULSEWRIGHT_NONBLOCKING
{
    const auto playRange = [&] (double from, double end, auto&& offsetOf)
    {
        const auto isInRange = [from, end] (double beat) { return beat >= from && beat < end; };

        const auto playPart = [&] (double firstBeat, std::span<const DrumHit> hits)
        {
            // Wide enough that no rounding can hide a hit; isInRange() decides.
            const double slack = 8.0 * std::numeric_limits<double>::epsilon() * (std::abs (end) + std::abs (firstBeat) + 1.0);
            const double first = from - firstBeat - music.longestHit - slack;
            const double last  = end - firstBeat + slack;

            if (first > hits.back().start || last < hits.front().start)
                return;

            const auto startsBefore = [] (const DrumHit& hit, double beat) { return hit.start < beat; };

            for (auto hit = std::lower_bound (hits.begin(), hits.end(), first, startsBefore); hit != hits.end() && hit->start < last; ++hit)
            {
                const double onBeat  = firstBeat + hit->start;
                const double offBeat = onBeat + hit->length;
                const auto note      = static_cast<std::uint8_t> (hit->note & 0x7Fu);

                if (isInRange (onBeat))
                    sink (NoteEvent { offsetOf (onBeat), NoteEvent::noteOn, note, static_cast<std::uint8_t> (std::min (hit->velocity, 127u)) });

                if (isInRange (offBeat))
                    sink (NoteEvent { offsetOf (offBeat), NoteEvent::noteOff, note, 0 });
            }
        };

        const auto playRepetition = [&] (double firstBeat)
        {
            for (const auto& part : music.parts)
                playPart (firstBeat + part.startBeat, part.hits);
        };

        if (! (from < end))
            return;

        if (repeat == Repeat::once)
            return playRepetition (0.0);

        // One repetition more on each side: a note may begin before the loop's start and end after it.
        const double length        = music.lengthInBeats;
        const auto firstRepetition = static_cast<std::int64_t> (std::floor (from / length)) - 1;
        const auto lastRepetition  = static_cast<std::int64_t> (std::floor (end / length)) + 1;

        for (auto repetition = firstRepetition; repetition <= lastRepetition; ++repetition)
            playRepetition (static_cast<double> (repetition) * length);
    };

    if (music.parts.empty() || ! (music.lengthInBeats > 0.0))
        return;

    playRange (window.remainder.from, window.remainder.end, [&window] (double) { return window.firstSample; });
    playRange (window.from, window.end, [&window] (double beat) { return window.offsetOf (beat); });
}

} // namespace pulsewright
