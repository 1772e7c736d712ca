// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A small host: loads a built VST3 bundle, moves a play head and collects what comes out.

#pragma once

#include "TransportPlayHead.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <memory>
#include <vector>

namespace pulsewright
{

/** A MIDI message with its place counted in samples from the first block on. */
struct RecordedMessage
{
    std::int64_t sample;
    juce::MidiMessage message;
};

/** Loads a bundle as a host does and plays it block by block, faster than real time.

    Thread: message, with a juce::ScopedJuceInitialiser_GUI alive. Needs no display.
*/
class OfflineHost
{
public:
    /** @throws std::runtime_error  saying what is wrong when the bundle does not load */
    OfflineHost (const juce::File& bundle, double sampleRate, int largestBlock);
    ~OfflineHost();

    juce::AudioPluginInstance& plugin() noexcept { return *instance; }

    /** Plays one block. @param incoming  the messages that the plug-in receives in it */
    void process (const Transport& transport, int numSamples, const juce::MidiBuffer& incoming = {});

    /** The audio of the last block, two channels. */
    const juce::AudioBuffer<float>& lastAudio() const noexcept { return audio; }

    /** All MIDI that came out so far. */
    const std::vector<RecordedMessage>& recordedMidi() const noexcept { return recorded; }
    void forgetRecordedMidi();

    /** Gives the plug-in a .vstpreset, as Steinberg's own reader does.
        @returns  the preset that the plug-in then saves
        @throws   std::runtime_error  when it does not take the preset
    */
    juce::MemoryBlock loadPreset (const juce::MemoryBlock& preset);

    /** Sets a parameter by its ID, to a value from 0 to 1. The plug-in sees it in the next block. */
    void setParameter (const juce::String& id, float normalisedValue);

private:
    std::unique_ptr<TransportPlayHead> playHead; // stays where it is when the host is moved
    std::unique_ptr<juce::AudioPluginInstance> instance;
    juce::AudioBuffer<float> audio;
    juce::MidiBuffer midi;
    std::vector<RecordedMessage> recorded;
    std::int64_t samplesPlayed = 0;
};

} // namespace pulsewright
