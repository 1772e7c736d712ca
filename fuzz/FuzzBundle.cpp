// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Whatever a host hands to the built bundle as a state, through the wrapper: it keeps and plays what the processor
// by itself would. The wrapper's own trailer is left whole; it trusts its length.

#include "OfflineHost.h"
#include "StateInputs.h"

#include "processor/PulsewrightAudioProcessor.h"

#include <cmath>

namespace pulsewright::fuzz
{

namespace
{
    constexpr double sampleRate = 22050.0;
    constexpr int blockSize     = 256;

    /** One bundle in a host, and a processor beside it that is told the same. */
    struct Stage
    {
        Stage() { alone.prepareToPlay (sampleRate, blockSize); }

        const juce::ScopedJuceInitialiser_GUI juceIsUp;
        OfflineHost host { juce::File (PULSEWRIGHT_FUZZ_BUNDLE), sampleRate, blockSize };
        PulsewrightAudioProcessor alone;
        const juce::MemoryBlock opening = saved (alone);
    };

    /** The plug-in's own bytes out of a host's save, without the wrapper's trailer. */
    juce::MemoryBlock pluginStateIn (const juce::MemoryBlock& hostState)
    {
        juce::MemoryBlock bytes;

        if (const auto xml = juce::AudioProcessor::getXmlFromBinary (hostState.getData(), static_cast<int> (hostState.getSize())))
            bytes.fromBase64Encoding (xml->getChildElementAllSubText ("IComponent", {}));

        // The trailer ends with the length of what the wrapper keeps and its name; eight zero bytes stand before it all.
        constexpr std::size_t nameLength = 15, numberLength = 8;
        juce::int64 kept = 0;
        bytes.copyTo (&kept, static_cast<int> (bytes.getSize() - nameLength - numberLength), numberLength);
        bytes.setSize (bytes.getSize() - nameLength - 2 * numberLength - static_cast<std::size_t> (juce::ByteOrder::swapIfBigEndian (kept)));
        return bytes;
    }

    void checkBlock (Stage& stage)
    {
        TransportPlayHead playHead;
        const Transport transport { .isPlaying = true, .ppq = 3.99, .bpm = 120.0 };

        stage.host.forgetRecordedMidi();
        stage.host.process (transport, blockSize);

        for (int channel = 0; channel < 2; ++channel)
            for (int i = 0; i < blockSize; ++i)
                check (std::isfinite (stage.host.lastAudio().getSample (channel, i)), "what sounds is a number");

        playHead.moveTo (transport, 0);
        juce::AudioBuffer<float> audio (2, blockSize);
        juce::MidiBuffer midi;
        stage.alone.setPlayHead (&playHead);
        stage.alone.processBlock (audio, midi);
        stage.alone.setPlayHead (nullptr);

        const auto& heard = stage.host.recordedMidi();
        check (std::cmp_equal (heard.size(), midi.getNumEvents()), "the bundle plays as many notes as the processor");

        auto expected = midi.begin();

        for (const auto& [sample, message] : heard)
        {
            check (sample == (*expected).samplePosition && message.getNoteNumber() == (*expected).getMessage().getNoteNumber()
                       && message.isNoteOn() == (*expected).getMessage().isNoteOn(),
                   "the bundle plays the processor's notes");
            ++expected;
        }
    }

    void run (FuzzedDataProvider input)
    {
        static Stage stage;
        auto& plugin = stage.host.plugin();

        for (const auto& bytes : { stage.opening, anyBytes (input, stage.alone, stage.opening) })
        {
            restore (plugin, hostStateWith (bytes));
            restore (stage.alone, bytes);
        }

        const auto first = saved (plugin);
        check (pluginStateIn (first) == saved (stage.alone), "the bundle keeps what the processor keeps");
        checkBlock (stage);

        restore (plugin, hostStateWith (stage.opening));
        restore (plugin, first);
        check (saved (plugin) == first, "what the bundle saves comes back, byte for byte");
    }
} // namespace

} // namespace pulsewright::fuzz

extern "C" int LLVMFuzzerTestOneInput (const std::uint8_t* data, std::size_t size)
{
    pulsewright::fuzz::run ({ data, size });
    return 0;
}
