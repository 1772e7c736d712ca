// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What a plug-in tells its host, as a line of text.

#pragma once

#include <juce_audio_processors/juce_audio_processors.h>

#include <functional>

namespace pulsewright
{

/** Notes "[3=3]3" for a gesture that changes parameter 3 once, and "!" for a state that has changed. */
class HostLog final : public juce::AudioProcessorListener
{
public:
    explicit HostLog (juce::AudioProcessor& p) : processor (p) { processor.addListener (this); }
    ~HostLog() override { processor.removeListener (this); }

    void audioProcessorParameterChanged (juce::AudioProcessor*, int i, float) override { note ("=" + juce::String (i)); }
    void audioProcessorChanged (juce::AudioProcessor*, const ChangeDetails& d) override { note (d.nonParameterStateChanged ? "!" : "?"); }
    void audioProcessorParameterChangeGestureBegin (juce::AudioProcessor*, int i) override { note ("[" + juce::String (i)); }
    void audioProcessorParameterChangeGestureEnd (juce::AudioProcessor*, int i) override { note ("]" + juce::String (i)); }

    juce::String text;
    std::function<void()> whenTold; ///< what the host does inside each of these calls

private:
    void note (const juce::String& what)
    {
        text << what;
        if (whenTold)
            whenTold();
    }

    juce::AudioProcessor& processor;
};

} // namespace pulsewright
