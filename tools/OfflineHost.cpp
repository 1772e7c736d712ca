// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "OfflineHost.h"

#include <stdexcept>

namespace pulsewright
{

OfflineHost::OfflineHost (const juce::File& bundle, double sampleRate, int largestBlock) : playHead (std::make_unique<TransportPlayHead>())
{
    juce::VST3PluginFormat format;
    juce::OwnedArray<juce::PluginDescription> found;
    format.findAllTypesForFile (found, bundle.getFullPathName());

    if (found.isEmpty())
        throw std::runtime_error ("No plug-in found in " + bundle.getFullPathName().toStdString());

    juce::AudioPluginFormatManager formats;
    formats.addFormat (new juce::VST3PluginFormat);

    juce::String error;
    instance = formats.createPluginInstance (*found.getFirst(), sampleRate, largestBlock, error);

    if (instance == nullptr)
        throw std::runtime_error ("The plug-in does not load: " + error.toStdString());

    instance->enableAllBuses();
    instance->setNonRealtime (true);
    instance->setPlayHead (playHead.get());
    instance->prepareToPlay (sampleRate, largestBlock);
}

OfflineHost::~OfflineHost()
{
    instance->releaseResources();
    instance->setPlayHead (nullptr);
}

void OfflineHost::process (const Transport& transport, int numSamples, const juce::MidiBuffer& incoming)
{
    playHead->moveTo (transport, samplesPlayed);
    audio.setSize (2, numSamples, false, false, true);
    audio.clear();
    midi = incoming;

    instance->processBlock (audio, midi);

    for (const auto message : midi)
        recorded.push_back ({ samplesPlayed + message.samplePosition, message.getMessage() });

    samplesPlayed += numSamples;
}

void OfflineHost::forgetRecordedMidi()
{
    recorded.clear();
    samplesPlayed = 0;
}

juce::MemoryBlock OfflineHost::loadPreset (const juce::MemoryBlock& preset)
{
    struct Presets final : juce::ExtensionsVisitor
    {
        void visitVST3Client (const VST3Client& client) override { isTaken = client.setPreset (bytes), bytes = client.getPreset(); }
        juce::MemoryBlock bytes;
        bool isTaken = false;
    };

    Presets presets;
    presets.bytes = preset;
    instance->getExtensions (presets);

    if (! presets.isTaken)
        throw std::runtime_error ("The plug-in does not take the preset");

    return presets.bytes;
}

void OfflineHost::setParameter (const juce::String& id, float normalisedValue)
{
    for (auto* parameter : instance->getParameters())
        if (auto* hosted = dynamic_cast<juce::HostedAudioProcessorParameter*> (parameter))
            if (hosted->getParameterID() == juce::String (id.hashCode() & 0x7fffffff))
                return parameter->setValueNotifyingHost (normalisedValue);

    throw std::invalid_argument ("The plug-in has no parameter " + id.toStdString());
}

} // namespace pulsewright
