// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A block, from what the host says to MIDI and sound. Thread: audio, but for preparing and the notes' names.

#include "PulsewrightAudioProcessor.h"

#include <cmath>

namespace pulsewright
{

namespace
{
    // Notes C4 to G4, on any channel, choose the section that the pattern loop plays.
    constexpr int firstTriggerNote = 60;
    constexpr int numTriggerNotes  = static_cast<int> (PlaybackSnapshot::numSectionSlots);

    /** The section slot that a message chooses, or -1. */
    int triggerOf (const juce::MidiMessageMetadata& message) noexcept
    {
        const bool isNoteOn = message.numBytes >= 3 && (message.data[0] & 0xF0) == 0x90 && message.data[2] > 0;
        const int slot      = isNoteOn ? message.data[1] - firstTriggerNote : -1;

        return juce::isPositiveAndBelow (slot, numTriggerNotes) ? slot : -1;
    }

    std::optional<HostLoop> loopOf (const juce::AudioPlayHead::PositionInfo& said) noexcept
    {
        const auto points = said.getLoopPoints();

        if (! said.getIsLooping() || ! points.hasValue() || ! (points->ppqStart < points->ppqEnd))
            return {};

        return HostLoop { points->ppqStart, points->ppqEnd };
    }

    HostPosition positionOf (const juce::AudioPlayHead::PositionInfo& said) noexcept
    {
        const auto optional  = [] (const auto& value) { return value.hasValue() ? std::make_optional (*value) : std::nullopt; };
        const auto signature = said.getTimeSignature();

        return { .isRolling   = said.getIsPlaying(),
                 .beat        = optional (said.getPpqPosition()),
                 .tempo       = optional (said.getBpm()),
                 .sample      = optional (said.getTimeInSamples()),
                 .beatsPerBar = signature.hasValue() ? std::make_optional (signature->numerator) : std::nullopt,
                 .loop        = loopOf (said) };
    }

    bool isPlayable (const PlaybackData* source) noexcept
    {
        return source != nullptr && ! source->parts.empty() && source->lengthInBeats > 0.0;
    }

    void addNotes (juce::MidiBuffer& midi, const PlaybackData& source, bool fullSong, const BlockWindow& window)
    {
        findEvents (source,
                    fullSong ? Repeat::once : Repeat::looped,
                    window,
                    [&midi] (const NoteEvent& event)
                    {
                        const std::uint8_t bytes[] { event.status, event.note, event.velocity };
                        midi.addEvent (bytes, sizeof (bytes), event.sampleOffset);
                    });
    }
} // namespace

//==============================================================================
void PulsewrightAudioProcessor::prepareToPlay (double newSampleRate, int)
{
    sampleRate = newSampleRate;
    preview.rewind();
    continuity.breakOff();
    outgoing.ensureSize (reservedMidiBytes);
    synth.prepare (newSampleRate);
}

void PulsewrightAudioProcessor::processBlock (juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi)
{
    render (buffer, midi);
}

void PulsewrightAudioProcessor::processBlock (juce::AudioBuffer<double>& buffer, juce::MidiBuffer& midi)
{
    render (buffer, midi);
}

void PulsewrightAudioProcessor::processBlockBypassed (juce::AudioBuffer<float>& buffer, juce::MidiBuffer&)
{
    buffer.clear();
    followHost (buffer.getNumSamples(), [] (const HostStretch&) {});
}

void PulsewrightAudioProcessor::processBlockBypassed (juce::AudioBuffer<double>& buffer, juce::MidiBuffer&)
{
    buffer.clear();
    followHost (buffer.getNumSamples(), [] (const HostStretch&) {});
}

template <typename Sample>
void PulsewrightAudioProcessor::render (juce::AudioBuffer<Sample>& buffer, juce::MidiBuffer& midi)
{
    const juce::ScopedNoDenormals noDenormals;
    buffer.clear();

    filterIncoming (midi);

    {
        const auto reading = snapshots.read();

        if (const auto* snapshot = reading.get())
            addEvents (*snapshot, buffer.getNumSamples());
    }

    midi.swapWith (outgoing);
    synth.render (buffer, midi, values.soundKit());
}

void PulsewrightAudioProcessor::filterIncoming (const juce::MidiBuffer& incoming)
{
    int trigger = noSection;
    outgoing.clear();

    for (const auto message : incoming)
    {
        if (const int slot = triggerOf (message); slot >= 0)
            trigger = slot;
        else
            outgoing.addEvent (message.data, message.numBytes, message.samplePosition);
    }

    if (trigger != noSection)
        pendingSection = trigger;
}

template <typename Sink>
void PulsewrightAudioProcessor::followHost (int numSamples, Sink&& sink) noexcept
{
    const auto* head    = getPlayHead();
    const auto said     = head != nullptr ? head->getPosition() : juce::Optional<juce::AudioPlayHead::PositionInfo> {};
    const auto position = said.hasValue() ? std::make_optional (positionOf (*said)) : std::nullopt;

    if (wrapperType == wrapperType_LV2)
        lv2Transport.follow (position, numSamples, sampleRate, getEffectiveBpm(), sink);
    else
        sink (HostStretch { 0, numSamples, position.value_or (HostPosition {}) });
}

void PulsewrightAudioProcessor::addEvents (const PlaybackSnapshot& snapshot, int numSamples)
{
    const auto block = preview.beginBlock();

    followHost (numSamples,
                [&] (const HostStretch& stretch)
                {
                    if (! block.isPlaying())
                        addHostEvents (snapshot, stretch);
                });

    if (block.isPlaying())
    {
        continuity.breakOff();
        addPreviewEvents (snapshot, block, numSamples);
    }
}

const PlaybackData* PulsewrightAudioProcessor::sourceOf (const PlaybackSnapshot& snapshot, bool fullSong) const noexcept
{
    if (fullSong)
        return snapshot.song.get();

    // A slot chosen by a trigger is played even where the song has no such section: then it is silent.
    const int slot = pendingSection.load();

    if (juce::isPositiveAndBelow (slot, numTriggerNotes))
        return snapshot.sections[static_cast<std::size_t> (slot)].get();

    return snapshot.pattern.get();
}

void PulsewrightAudioProcessor::addPreviewEvents (const PlaybackSnapshot& snapshot, PreviewTransport::Block block, int numSamples)
{
    const bool fullSong = block.isFullSong();
    const auto* source  = sourceOf (snapshot, fullSong);
    const auto window   = windowAt (block.position, getEffectiveBpm(), sampleRate, numSamples);

    if (! isPlayable (source) || window.numSamples == 0)
        return;

    addNotes (outgoing, *source, fullSong, window);

    if (! fullSong)
        preview.moveTo (std::fmod (window.end, source->lengthInBeats));
    else if (window.end >= source->lengthInBeats)
        preview.finish (block);
    else
        preview.moveTo (window.end);
}

void PulsewrightAudioProcessor::addHostEvents (const PlaybackSnapshot& snapshot, const HostStretch& stretch)
{
    const auto& position = stretch.position;

    if (! position.isRolling || ! position.beat)
        return continuity.breakOff();

    const double tempo = position.tempo.value_or (getEffectiveBpm());
    lastHostTempo      = tempo;

    if (stretch.numSamples == 0)
        return;

    auto window = windowAt (*position.beat, tempo, sampleRate, stretch.numSamples);

    if (window.numSamples == 0)
        return continuity.breakOff();

    const bool fullSong  = values.playsFullSong();
    const auto* source   = sourceOf (snapshot, fullSong);
    const bool hasSource = isPlayable (source);
    window.firstSample   = stretch.firstSample;
    window               = continuity.join (window, position.loop, hasSource && ! fullSong ? source->lengthInBeats : 0.0);

    if (hasSource)
        addNotes (outgoing, *source, fullSong, window);
}

//==============================================================================
std::optional<juce::String> PulsewrightAudioProcessor::getNameForMidiNoteNumber (int midiNote, int)
{
    if (juce::isPositiveAndBelow (midiNote - firstTriggerNote, numTriggerNotes))
        return "Section " + juce::String (midiNote - firstTriggerNote + 1);

    switch (static_cast<std::uint32_t> (midiNote))
    {
        case note::kick: return "Kick";
        case note::sideStick: return "Side Stick";
        case note::snare: return "Snare";
        case note::secondSnare: return "Second Snare";
        case note::closedHat: return "Closed Hat";
        case note::lowTom: return "Low Tom";
        case note::openHat: return "Open Hat";
        case note::midTom: return "Mid Tom";
        case note::highTom: return "High Tom";
        default: return {};
    }
}

} // namespace pulsewright
