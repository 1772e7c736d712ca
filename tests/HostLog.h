// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What a plug-in tells its host, as a line of text.

#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

namespace pulsewright
{

/** Notes "[3=3]3" for a gesture that changes parameter 3 once, and "!" for a state that has changed. */
class HostLog final : public juce::AudioProcessorListener
{
public:
    explicit HostLog (juce::AudioProcessor& p) : processor (p) { processor.addListener (this); }
    ~HostLog() override { processor.removeListener (this); }

    void audioProcessorParameterChanged (juce::AudioProcessor*, int i, float) override { text << "=" << i; }
    void audioProcessorChanged (juce::AudioProcessor*, const ChangeDetails& d) override { text << (d.nonParameterStateChanged ? "!" : "?"); }
    void audioProcessorParameterChangeGestureBegin (juce::AudioProcessor*, int i) override { text << "[" << i; }
    void audioProcessorParameterChangeGestureEnd (juce::AudioProcessor*, int i) override { text << "]" << i; }

    juce::String text;

private:
    juce::AudioProcessor& processor;
};

} // namespace pulsewright
