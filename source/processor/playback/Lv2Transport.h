// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Completes what an LV2 host says of its transport.

#pragma once

#include "HostPosition.h"

#include "NonBlocking.h"

#include <algorithm>
#include <cmath>

namespace pulsewright
{

/** Keeps the transport of an LV2 host from block to block.

    LV2 hosts send a position only when the transport changes, and JUCE's wrapper forgets it after the block.
    Some hosts name neither beat nor tempo. So:

    - The beat goes on from block to block at the present tempo.
    - While the samples go on without a jump, a new position counts from the sample that it names, also in the
      middle of a block.
    - After a jump in samples the beat is the one that the host names, or else sample times tempo, as if the
      tempo had been the same since the start.
    - Some hosts (Qtractor) name the beat of the bar, whole, from 1, where the standard asks for the beat since the
      start. Such a beat is not taken; it is recognised by the bar number that the host gives with it.
    - A tempo that the host does not name is the last one that it named since the last jump, or else `fallbackTempo`.

    Thread: audio. Blocks: never. Allocates: never.
*/
class Lv2Transport
{
public:
    /** Call once for every block, also for those that are not played.
        @param said           what the host says in this block: mostly nothing
        @param fallbackTempo  BPM where the host names none
        @param sink           called with each HostStretch of the block, in order: one or two
    */
    template <typename Sink>
    void follow (const std::optional<HostPosition>& said, int numSamples, double newSampleRate, double fallbackTempo, Sink&& sink)
        PULSEWRIGHT_NONBLOCKING
    {
        sampleRate = std::max (1.0, newSampleRate);
        useTempo (namedTempo.value_or (fallbackTempo));

        const int change = said ? sampleOfChange (*said, numSamples) : numSamples;

        if (change > 0 || ! said)
            play (0, change, sink);

        if (said)
        {
            take (*said, fallbackTempo);
            play (change, numSamples - change, sink);
        }
    }

private:
    /** The sample in the block from which a position counts: the first, unless the samples go on up to it. */
    int sampleOfChange (const HostPosition& said, int numSamples) const noexcept
    {
        if (! isRolling || ! nextSample || ! said.sample)
            return 0;

        const auto distance = static_cast<std::uint64_t> (*said.sample) - static_cast<std::uint64_t> (*nextSample);
        return distance < static_cast<std::uint64_t> (numSamples) ? static_cast<int> (distance) : 0;
    }

    void take (const HostPosition& said, double fallbackTempo) noexcept
    {
        const bool isJump = said.sample && said.sample != nextSample;

        if (said.tempo || isJump)
            namedTempo = said.tempo;

        useTempo (namedTempo.value_or (fallbackTempo));

        if (isJump)
            countFrom (0.0, static_cast<double> (*said.sample));

        if (said.beat && ! isBeatOfTheBar (said))
            countFrom (*said.beat, 0.0);

        if (said.sample)
            nextSample = said.sample;

        isRolling = said.isRolling;
    }

    /** Whether the named beat is the number of a beat in its bar: less than the beats before the bar, or, in the first
        bar, one more than the beat that is counted.
    */
    bool isBeatOfTheBar (const HostPosition& said) const noexcept
    {
        const auto counted = beat();

        if (! said.bar || ! counted || *said.beat != std::floor (*said.beat))
            return false;

        constexpr double rounding = 0.01; // of what the host counts with
        const double beatsInBar   = std::max (1, said.beatsPerBar.value_or (4));
        const double beatsBefore  = static_cast<double> (*said.bar) * beatsInBar;
        const auto isOneBeyond    = [&] (double place) { return std::floor (place) == beatsBefore + *said.beat - 1.0; };
        const bool isBeforeTheBar = *said.beat >= 0.0 && *said.beat <= beatsInBar && *said.beat < beatsBefore;

        return isBeforeTheBar || isOneBeyond (*counted - rounding) || isOneBeyond (*counted + rounding);
    }

    template <typename Sink>
    void play (int firstSample, int numSamples, Sink&& sink) noexcept
    {
        sink (HostStretch {
            firstSample,
            numSamples,
            { .isRolling = isRolling, .beat = beat(), .tempo = tempo, .sample = nextSample, .bar = {}, .beatsPerBar = {}, .loop = {} } });

        if (! isRolling)
            return;

        samplesSince += numSamples;

        if (nextSample)
            nextSample = static_cast<std::int64_t> (static_cast<std::uint64_t> (*nextSample) + static_cast<std::uint64_t> (numSamples));
    }

    std::optional<double> beat() const noexcept
    {
        const double usable = std::isfinite (tempo) && tempo > 0.0 ? tempo : 0.0;

        if (! countedFrom)
            return {};

        return *countedFrom + samplesSince * usable / (60.0 * sampleRate); // in this order: whole beats come out whole
    }

    void useTempo (double newTempo) noexcept
    {
        if (newTempo == tempo)
            return;

        if (const auto reached = beat())
            countFrom (*reached, 0.0);

        tempo = newTempo;
    }

    void countFrom (double newBeat, double newSamplesSince) noexcept
    {
        countedFrom  = newBeat;
        samplesSince = newSamplesSince;
    }

    bool isRolling    = false;
    double sampleRate = 1.0;
    double tempo      = 0.0;                // BPM, in use
    std::optional<double> namedTempo;       // BPM, by the host since the last jump
    std::optional<std::int64_t> nextSample; // that the next block begins with
    std::optional<double> countedFrom;      // a beat,
    double samplesSince = 0.0;              // and what has been played since
};

} // namespace pulsewright
