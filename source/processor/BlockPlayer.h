// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the audio thread does: a block, from what the host says to MIDI and sound.

#pragma once

#include "Parameters.h"

#include "kit/DrumSynth.h"
#include "playback/Lv2Transport.h"
#include "playback/PlaybackData.h"
#include "playback/PlaybackEngine.h"
#include "playback/PreviewTransport.h"
#include "playback/SnapshotExchange.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <atomic>

namespace pulsewright
{

/** Plays what was published last, in time with the host or with the preview. */
class BlockPlayer
{
public:
    /** Notes C4 to G4, on any channel, choose the section that the pattern loop plays. */
    static constexpr int firstTriggerNote = 60;
    static constexpr int numTriggerNotes  = static_cast<int> (PlaybackSnapshot::numSectionSlots);

    /** @param valuesToFollow  outlives this */
    explicit BlockPlayer (const ParameterReader& valuesToFollow);

    //==============================================================================
    // Thread: any but audio. Blocks: never.

    /** Hands new music to the audio thread. One thread at a time. */
    void publish (const PlaybackSnapshot& music) { snapshots.publish (std::make_unique<const PlaybackSnapshot> (music)); }

    /** Lets the pattern loop play the pattern again, after a trigger note has chosen a section. */
    void forgetTrigger() noexcept { pendingSection = noSection; }

    /** Starts the preview from the first beat. Thread: message. @returns whether it plays the full song */
    bool startPreview() noexcept;
    void stopPreview() noexcept { preview.stop(); }
    bool isPreviewPlaying() const noexcept { return preview.isPlaying(); }

    /** The host's last tempo, rounded, when it lies in 30 to 300; otherwise the genre's. Thread: any. */
    int effectiveBpm() const PULSEWRIGHT_NONBLOCKING;

    /** Not while a block is played.
        @param sampleRate         in hertz
        @param hostTellsOfChanges whether the host speaks of its transport only when it changes, as LV2 hosts do
    */
    void prepare (double newSampleRate, bool hostTellsOfChanges);

    //==============================================================================
    // Thread: audio. Blocks: never. Allocates: never, but for a block whose MIDI outgrows the buffers.

    using Said = juce::Optional<juce::AudioPlayHead::PositionInfo>;

    /** Replaces the buffer's sound and the block's MIDI. Incoming MIDI passes, but for the trigger notes. */
    template <typename Sample>
    void play (juce::AudioBuffer<Sample>& buffer, juce::MidiBuffer& midi, const Said& said) PULSEWRIGHT_NONBLOCKING;

    /** Follows the host through a block that is not played. */
    void skip (int numSamples, const Said& said) PULSEWRIGHT_NONBLOCKING;

private:
    static constexpr int noSection = -1;

    static constexpr std::size_t reservedMidiBytes = 1 << 16; // for a dense block's events; our buffer and the host's take turns

    void filterIncoming (const juce::MidiBuffer& incoming) PULSEWRIGHT_NONBLOCKING;

    /** @param sink  called with each HostStretch of the block, in order */
    template <typename Sink>
    void followHost (const Said& said, int numSamples, Sink&& sink) PULSEWRIGHT_NONBLOCKING;

    void addEvents (const PlaybackSnapshot& music, const Said& said, int numSamples) PULSEWRIGHT_NONBLOCKING;
    void addPreviewEvents (const PlaybackSnapshot& music, PreviewTransport::Block block, int numSamples) PULSEWRIGHT_NONBLOCKING;
    void addHostEvents (const PlaybackSnapshot& music, const HostStretch& stretch) PULSEWRIGHT_NONBLOCKING;
    const PlaybackData* sourceOf (const PlaybackSnapshot& music, bool fullSong) const PULSEWRIGHT_NONBLOCKING;

    const ParameterReader& values; // any thread

    // both, atomic
    SnapshotExchange<PlaybackSnapshot> snapshots;
    std::atomic<int> pendingSection { noSection }; // a section slot chosen by a trigger note
    std::atomic<double> lastHostTempo { 0.0 };     // BPM; 0 until one is seen
    PreviewTransport preview;

    // audio thread only
    double sampleRate   = 44100.0;
    bool keepsTransport = false;
    Lv2Transport transport;
    TransportContinuity continuity;
    juce::MidiBuffer outgoing;
    DrumSynth synth;
};

} // namespace pulsewright
