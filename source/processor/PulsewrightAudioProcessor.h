// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The plug-in object: generates on the message thread, plays on the audio thread.

#pragma once

#include "BlockPlayer.h"
#include "Parameters.h"

#include "session/Session.h"

#include <juce_audio_processors/juce_audio_processors.h>

#include <atomic>

namespace pulsewright
{

/** The instrument as a host sees it.

    Two sides meet here. The operations below the first rule make new material under one lock and
    publish it; processBlock() plays what was published last and never waits for anything.
    A host may call the operations, the parameters and the state from any thread.
*/
class PulsewrightAudioProcessor : public juce::AudioProcessor
{
public:
    PulsewrightAudioProcessor();

    static juce::AudioProcessorValueTreeState::ParameterLayout createParameterLayout() { return createLayout(); }

    //==============================================================================
    // Making material. Thread: message, or any other but the audio thread. Blocks: on the data lock, and in the
    // host, which hears of what it would save.

    /** A new pattern of the chosen length, from the next take of the seed counter. */
    void generatePattern (SectionType kind);

    /** Nudges the style macros and plays the current pattern anew, but for its locked lanes. */
    void mutatePattern();

    /** The same take again under the present settings: pattern and song. */
    void regeneratePattern();

    /** A new song, from the next take of the seed counter; its first section becomes the current pattern. */
    void buildSong();

    /** Copies a section of the song into the current pattern; ignored when there is no such section. */
    void selectSection (int index);

    /** Makes finished material current and plays it, as it stands. For tools; settings and counter stay. */
    void setMaterial (DrumPattern newPattern, SongArrangement newSong);

    /** Keeps a lane through mutations, or no longer. Blocks: only while the host handles the call. */
    void setLaneLocked (int lane, bool shouldBeLocked);

    DrumPattern getPattern() const;
    SongArrangement getSong() const;

    /** Says that what would be saved has changed without a parameter moving. Blocks: only while the host handles the call. */
    void tellHostStateChanged();

    //==============================================================================
    // Takes that come back. Thread and locks as above.

    /** Plays a take, whatever the session's tempo: sets the parameters as a restore does, makes its groove and its song,
        and goes on counting from it.
        @param take  as takeOf() gives it
    */
    void playTake (const Take& take);

    /** The take of what playback has chosen, the song or the groove, with the kit that is chosen now; empty if it has no code. */
    std::optional<Take> getChosenTake() const;

    /** What this instance has played since it was made, the newest first; at most TakeHistory::capacity. */
    std::deque<KeptTake> getEarlierTakes() const;

    /** Plays one of them as it was, with its settings. The seed counter stays. @returns false when it is no longer kept */
    bool playEarlierTake (std::uint32_t id);

    /** Whether the knobs still have the values of the take that was played again last, and nothing was generated since. If
        so, a knob's report is only a consequence of that, and nothing has to be generated.
    */
    bool isAsBroughtBack() const;

    Session::SongForm getChosenForm() const noexcept { return { values.genre(), values.songDuration(), values.songStructure() }; }

    /** Whether the song is already one of the chosen form. */
    bool isSongAsChosen() const;

    //==============================================================================
    // Thread: any, but for the preview's start. Blocks: never.

    bool isLaneLocked (int lane) const noexcept;

    /** Starts the preview clock from the first beat. Thread: message. @returns whether it plays the full song */
    bool startPreview() noexcept { return player.startPreview(); }
    void stopPreview() noexcept { player.stopPreview(); }
    bool isPreviewPlaying() const noexcept { return player.isPreviewPlaying(); }

    /** The host's last tempo, rounded, when it lies in 30 to 300; otherwise the genre's. */
    int getEffectiveBpm() const noexcept { return player.effectiveBpm(); }

    /** The length in bars of a song of the chosen duration and genre. */
    int getSongBarCount (int bpm) const noexcept;

    struct SongLength
    {
        int seconds, bars;
    };

    /** The length that the next song will have. */
    SongLength getChosenSongLength() const noexcept;

    /** Counts the changes of pattern or song. Read it before copying them: then no change is missed. */
    std::uint32_t getChangeCounter() const noexcept { return changeCounter.load(); }

    /** Counts restores. Parameter changes during a restore are not user actions. */
    std::uint32_t getRestoreCount() const noexcept { return restoreCount.load(); }
    bool isRestoring() const noexcept { return restoresUnderway.load() > 0; }

    /** The number of the take that the next new pattern or song will be. */
    std::uint32_t getSeedCounter() const noexcept { return session.nextTake(); }

    //==============================================================================
    // What the host calls. Blocks of audio: Thread: audio. Blocks: never. Allocates: never, but for a block whose
    // MIDI outgrows the buffers. All else: Thread: any but that one.

    /** Not while a block is played. */
    void prepareToPlay (double newSampleRate, int blockSize) override;
    void releaseResources() override {}
    bool isBusesLayoutSupported (const BusesLayout& layout) const override;

    void processBlock (juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi) override;
    void processBlock (juce::AudioBuffer<double>& buffer, juce::MidiBuffer& midi) override;
    bool supportsDoublePrecisionProcessing() const override { return true; }

    // Silence; incoming MIDI passes, and so does the transport.
    void processBlockBypassed (juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi) override;
    void processBlockBypassed (juce::AudioBuffer<double>& buffer, juce::MidiBuffer& midi) override;

    void getStateInformation (juce::MemoryBlock& destination) override;
    void setStateInformation (const void* data, int size) override;

    /** Defined with the window. */
    juce::AudioProcessorEditor* createEditor() override;
    bool hasEditor() const override { return true; }

    const juce::String getName() const override { return "Pulsewright"; } // NOLINT(readability-const-return-type): JUCE's
    bool acceptsMidi() const override { return true; }
    bool producesMidi() const override { return true; }
    bool isMidiEffect() const override { return false; }
    bool supportsMPE() const override { return false; }
    double getTailLengthSeconds() const override { return 1.0; }
    std::optional<juce::String> getNameForMidiNoteNumber (int midiNote, int midiChannel) override;

    int getNumPrograms() override { return 1; }
    int getCurrentProgram() override { return 0; }
    void setCurrentProgram (int) override {}
    const juce::String getProgramName (int) override { return {}; } // NOLINT(readability-const-return-type)
    void changeProgramName (int, const juce::String&) override {}

    //==============================================================================
    juce::AudioProcessorValueTreeState parameters;

private:
    Choices choices() const;

    // Under the data lock.
    void nudgeMacros (std::uint32_t seed);
    void publishPlaybackData();
    void publishPattern();
    void setParametersOf (const Take& take); ///< without the lock

    /** While one lives, what moves the parameters is no user's action. One at a time. */
    struct Restore
    {
        explicit Restore (PulsewrightAudioProcessor& owner);
        ~Restore();

        PulsewrightAudioProcessor& processor;
        const juce::ScopedLock oneAtATime;
    };

    /** Runs a change of the material under the data lock and counts it. */
    template <typename Change>
    void changeMaterial (Change&& change);

    /** The same for a change of what would be saved: then, without the lock, tells the host. */
    template <typename Change>
    void changeState (Change&& change);

    void rebuildFromCounter(); ///< after a restore
    LaneLocks currentLocks() const noexcept;
    BlockPlayer::Said askHost() const; ///< where its transport is

    const ParameterReader values;  // any thread
    BlockPlayer player { values }; // its parts say which thread

    juce::CriticalSection restoreLock; // taken before the other

    // under dataLock
    juce::CriticalSection dataLock;
    Session session;            // but for its next take's number, which any thread may read
    PlaybackSnapshot published; // the publisher's copy of what is current

    // both, atomic
    std::array<std::atomic<bool>, laneCount> laneLocks {};
    std::atomic<std::uint32_t> changeCounter { 0 };
    std::atomic<std::uint32_t> restoreCount { 0 };
    std::atomic<int> restoresUnderway { 0 };

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR (PulsewrightAudioProcessor)
};

} // namespace pulsewright
