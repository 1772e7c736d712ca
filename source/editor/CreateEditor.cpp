// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The one step from the processor's room up to the window's.

#include "processor/PulsewrightAudioProcessor.h"

namespace pulsewright
{

juce::AudioProcessorEditor* PulsewrightAudioProcessor::createEditor()
{
    return new juce::GenericAudioProcessorEditor (*this);
}

} // namespace pulsewright
