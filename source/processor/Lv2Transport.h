// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The host's transport as an LV2 learns of it, made whole.

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

namespace pulsewright
{

/** LV2 hosts speak only when the transport does something other than going on, and JUCE's wrapper forgets
    what they said with every block. Some, Ardour among them, say bar and sample but never the running beat
    that JUCE looks for. So what was said last is kept and carried on, and a missing beat is counted from the
    sample: exact unless the tempo has changed on the way to it.

    Thread: audio. Blocks: never. Allocates: never.
*/
class Lv2Transport
{
public:
    using Position = juce::Optional<juce::AudioPlayHead::PositionInfo>;

    /** Call once for every block, also for those that are not played.
        @param said  what the wrapper knows of this block: mostly nothing
    */
    Position follow (const Position& said, int numSamples, double sampleRate) noexcept
    {
        if (said.hasValue())
        {
            last         = said;
            samplesSince = 0.0;
        }

        if (! last.hasValue())
            return {};

        auto now           = *last;
        const auto ppq     = now.getPpqPosition();
        const auto sample  = now.getTimeInSamples();
        const auto beatsOf = [&] (double samples) // in this order: whole beats come out whole
        { return samples * now.getBpm().orFallback (0.0) / (60.0 * sampleRate); };

        if (ppq.hasValue())
            now.setPpqPosition (*ppq + beatsOf (samplesSince));
        else if (sample.hasValue())
            now.setPpqPosition (beatsOf (static_cast<double> (*sample) + samplesSince));

        samplesSince += now.getIsPlaying() ? numSamples : 0;
        return now;
    }

private:
    Position last;
    double samplesSince = 0.0; ///< the last word
};

} // namespace pulsewright
