// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What JUCE's wrappers make an instance with.

#include "editor/X11Messages.h"
#include "processor/PulsewrightAudioProcessor.h"

namespace pulsewright
{

namespace
{
    /** JUCE connects to the display as soon as a module is loaded, long before there is a window. */
    struct PluginFilter final : PulsewrightAudioProcessor
    {
        X11Survival survival;
    };
} // namespace

} // namespace pulsewright

juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter()
{
    return new pulsewright::PluginFilter();
}
