// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "BlockPlayer.h"

#include "generation/GenreProfile.h"

#include <algorithm>
#include <cmath>

namespace pulsewright
{

namespace
{
    bool isNoteOn (const juce::MidiMessageMetadata& message) noexcept
    {
        return message.numBytes >= 3 && (message.data[0] & 0xF0) == 0x90 && message.data[2] > 0;
    }

    /** The section slot that a message chooses, or -1. */
    int triggerOf (const juce::MidiMessageMetadata& message) noexcept
    {
        const int slot = isNoteOn (message) ? message.data[1] - BlockPlayer::firstTriggerNote : -1;
        return juce::isPositiveAndBelow (slot, BlockPlayer::numTriggerNotes) ? slot : -1;
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
                 .bar         = optional (said.getBarCount()),
                 .beatsPerBar = signature.hasValue() ? std::make_optional (signature->numerator) : std::nullopt,
                 .loop        = loopOf (said) };
    }

    bool isPlayable (const PlaybackData* source) noexcept
    {
        return source != nullptr && ! source->parts.empty() && source->lengthInBeats > 0.0;
    }

    //==============================================================================
    // What we call of JUCE's on the audio thread.
    PULSEWRIGHT_UNCHECKED_BEGIN

    /** Sets a register of the processor, and sets it back. */
    struct NoDenormals : juce::ScopedNoDenormals
    {
        NoDenormals() PULSEWRIGHT_NONBLOCKING = default;
        ~NoDenormals() PULSEWRIGHT_NONBLOCKING {} // NOLINT(modernize-use-equals-default): JUCE's is not marked
    };

    /** Fills memory that the host has made. */
    template <typename Sample>
    void silence (juce::AudioBuffer<Sample>& buffer) PULSEWRIGHT_NONBLOCKING
    {
        buffer.clear();
    }

    /** Keeps the buffer's memory. */
    void empty (juce::MidiBuffer& midi) PULSEWRIGHT_NONBLOCKING
    {
        midi.clear();
    }

    /** Exchanges pointers. */
    void exchange (juce::MidiBuffer& a, juce::MidiBuffer& b) PULSEWRIGHT_NONBLOCKING
    {
        a.swapWith (b);
    }

    /** Our buffers are made for more than a dense block: only one with thousands of incoming events allocates, once. */
    void append (juce::MidiBuffer& midi, const juce::uint8* begin, const juce::uint8* end) PULSEWRIGHT_NONBLOCKING
    {
        midi.data.addArray (begin, static_cast<int> (end - begin));
    }

    void append (juce::MidiBuffer& midi, const NoteEvent& event) PULSEWRIGHT_NONBLOCKING
    {
        const std::uint8_t bytes[] { event.status, event.note, event.velocity };
        midi.addEvent (bytes, sizeof (bytes), event.sampleOffset);
    }

    /** Reads the bytes as they lie. @param visit  marked as non-blocking, as it is not checked here */
    template <typename Visit>
    void forEachMessage (const juce::MidiBuffer& midi, Visit&& visit) PULSEWRIGHT_NONBLOCKING
    {
        for (const auto message : midi)
            visit (message);
    }

    PULSEWRIGHT_UNCHECKED_END

    //==============================================================================
    void addNotes (juce::MidiBuffer& midi, const PlaybackData& source, bool fullSong, const BlockWindow& window) PULSEWRIGHT_NONBLOCKING
    {
        findEvents (source, fullSong ? Repeat::once : Repeat::looped, window, [&midi] (const NoteEvent& event) { append (midi, event); });
    }
} // namespace

//==============================================================================
BlockPlayer::BlockPlayer (const ParameterReader& valuesToFollow) : values (valuesToFollow)
{
    outgoing.ensureSize (reservedMidiBytes);
}

bool BlockPlayer::startPreview() noexcept
{
    const bool fullSong = values.playsFullSong();
    preview.start (fullSong);
    return fullSong;
}

int BlockPlayer::effectiveBpm() const PULSEWRIGHT_NONBLOCKING
{
    const double tempo = lastHostTempo.load();

    if (tempo >= 30.0 && tempo <= 300.0)
        return static_cast<int> (std::round (tempo));

    return profileOf (values.genre()).tempoBpm;
}

void BlockPlayer::prepare (double newSampleRate, bool hostTellsOfChanges)
{
    sampleRate     = newSampleRate;
    keepsTransport = hostTellsOfChanges;
    preview.rewind();
    continuity.breakOff();
    outgoing.ensureSize (reservedMidiBytes);
    synth.prepare (newSampleRate);
}

//==============================================================================
template <typename Sample>
void BlockPlayer::play (juce::AudioBuffer<Sample>& buffer, juce::MidiBuffer& midi, const Said& said) PULSEWRIGHT_NONBLOCKING
{
    const NoDenormals noDenormals;
    const int numSamples = buffer.getNumSamples();
    silence (buffer);

    filterIncoming (midi);

    {
        const auto reading = snapshots.read();

        if (const auto* music = reading.get())
            addEvents (*music, said, numSamples);
    }

    exchange (midi, outgoing);

    SoundBlock<Sample> sound { .sides = {}, .numSamples = numSamples };
    for (int side = 0; side < std::min (2, buffer.getNumChannels()); ++side)
        sound.sides[static_cast<std::size_t> (side)] = buffer.getWritePointer (side);

    synth.renderFrom (sound,
                      values.soundKit(),
                      [&midi] (auto&& strike)
                      {
                          forEachMessage (midi,
                                          [&strike] (const auto& message) PULSEWRIGHT_NONBLOCKING
                                          {
                                              if (isNoteOn (message))
                                                  strike (NoteOn { message.samplePosition, message.data[1], message.data[2] });
                                          });
                      });
}

template void BlockPlayer::play (juce::AudioBuffer<float>&, juce::MidiBuffer&, const Said&) PULSEWRIGHT_NONBLOCKING;
template void BlockPlayer::play (juce::AudioBuffer<double>&, juce::MidiBuffer&, const Said&) PULSEWRIGHT_NONBLOCKING;

void BlockPlayer::skip (int numSamples, const Said& said) PULSEWRIGHT_NONBLOCKING
{
    followHost (said, numSamples, [] (const HostStretch&) {});
}

void BlockPlayer::filterIncoming (const juce::MidiBuffer& incoming) PULSEWRIGHT_NONBLOCKING
{
    int trigger = noSection;
    empty (outgoing);

    // What passes is in order already and is copied as it lies. Adding it event by event would look for each one's place.
    const auto* copied     = incoming.data.begin();
    constexpr auto heading = sizeof (juce::int32) + sizeof (juce::uint16); // before each event's bytes: its sample, its size

    forEachMessage (incoming,
                    [&] (const auto& message) PULSEWRIGHT_NONBLOCKING
                    {
                        const int slot = triggerOf (message);

                        if (slot < 0)
                            return;

                        trigger = slot;
                        append (outgoing, copied, message.data - heading);
                        copied = message.data + message.numBytes;
                    });

    append (outgoing, copied, incoming.data.end());

    if (trigger != noSection)
        pendingSection = trigger;
}

template <typename Sink>
void BlockPlayer::followHost (const Said& said, int numSamples, Sink&& sink) PULSEWRIGHT_NONBLOCKING
{
    if (keepsTransport)
        transport.follow (said.hasValue() ? std::make_optional (positionOf (*said)) : std::nullopt, numSamples, sampleRate, effectiveBpm(), sink);
    else
        sink (HostStretch { 0, numSamples, said.hasValue() ? positionOf (*said) : HostPosition {} });
}

void BlockPlayer::addEvents (const PlaybackSnapshot& music, const Said& said, int numSamples) PULSEWRIGHT_NONBLOCKING
{
    const auto block = preview.beginBlock();

    followHost (said,
                numSamples,
                [&] (const HostStretch& stretch)
                {
                    if (! block.isPlaying())
                        addHostEvents (music, stretch);
                });

    if (block.isPlaying())
    {
        continuity.breakOff();
        addPreviewEvents (music, block, numSamples);
    }
}

const PlaybackData* BlockPlayer::sourceOf (const PlaybackSnapshot& music, bool fullSong) const PULSEWRIGHT_NONBLOCKING
{
    if (fullSong)
        return music.song.get();

    // A slot chosen by a trigger is played even where the song has no such section: then it is silent.
    const int slot = pendingSection.load();

    if (juce::isPositiveAndBelow (slot, numTriggerNotes))
        return music.sections[static_cast<std::size_t> (slot)].get();

    return music.pattern.get();
}

void BlockPlayer::addPreviewEvents (const PlaybackSnapshot& music, PreviewTransport::Block block, int numSamples) PULSEWRIGHT_NONBLOCKING
{
    const bool fullSong = block.isFullSong();
    const auto* source  = sourceOf (music, fullSong);
    const auto window   = windowAt (block.position, effectiveBpm(), sampleRate, numSamples);

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

void BlockPlayer::addHostEvents (const PlaybackSnapshot& music, const HostStretch& stretch) PULSEWRIGHT_NONBLOCKING
{
    const auto& position = stretch.position;

    if (! position.isRolling || ! position.beat)
        return continuity.breakOff();

    const double tempo = position.tempo.value_or (effectiveBpm());
    lastHostTempo      = tempo;

    if (stretch.numSamples == 0)
        return;

    auto window = windowAt (*position.beat, tempo, sampleRate, stretch.numSamples);

    if (window.numSamples == 0)
        return continuity.breakOff();

    const bool fullSong  = values.playsFullSong();
    const auto* source   = sourceOf (music, fullSong);
    const bool hasSource = isPlayable (source);
    window.firstSample   = stretch.firstSample;
    window               = continuity.join (window, position.loop, hasSource && ! fullSong ? source->lengthInBeats : 0.0);

    if (hasSource)
        addNotes (outgoing, *source, fullSong, window);
}

} // namespace pulsewright
