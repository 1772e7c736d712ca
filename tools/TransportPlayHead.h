// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A play head that stands where it is put.

#pragma once

#include <juce_audio_basics/juce_audio_basics.h>

#include <optional>

namespace pulsewright
{

/** Where the transport stands while one block is played. */
struct Transport
{
    bool isPlaying = true;
    std::optional<double> ppq {}; ///< beats at the first sample
    std::optional<double> bpm {};
};

class TransportPlayHead final : public juce::AudioPlayHead
{
public:
    juce::Optional<PositionInfo> getPosition() const override { return position; }

    void moveTo (const Transport& transport, std::int64_t timeInSamples = 0)
    {
        position = PositionInfo();
        position->setIsPlaying (transport.isPlaying);
        position->setTimeInSamples (timeInSamples);
        position->setTimeSignature (TimeSignature { 4, 4 });

        if (transport.ppq)
            position->setPpqPosition (*transport.ppq);

        if (transport.bpm)
            position->setBpm (*transport.bpm);
    }

private:
    juce::Optional<PositionInfo> position; // none until it is moved
};

} // namespace pulsewright
