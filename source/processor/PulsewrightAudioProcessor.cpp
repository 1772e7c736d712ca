// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PulsewrightAudioProcessor.h"

#include "SavedState.h"

#include "generation/SongBuilder.h"
#include "session/MacroNudges.h"

#include <algorithm>

namespace pulsewright
{

//==============================================================================
PulsewrightAudioProcessor::PulsewrightAudioProcessor()
    : AudioProcessor (BusesProperties().withOutput ("Output", juce::AudioChannelSet::stereo(), true)),
      parameters (*this, nullptr, SavedState::type, createParameterLayout()),
      values (parameters)
{
    session.open (choices(), 0);
    publishPlaybackData();
}

//==============================================================================
Choices PulsewrightAudioProcessor::choices() const
{
    Choices chosen;
    chosen.settings.genre = values.genre();
    chosen.settings.setValues (values.settingsValues());
    chosen.patternBars = values.patternBars();
    chosen.structure   = values.songStructure();
    chosen.duration    = values.songDuration();
    chosen.tempo       = getEffectiveBpm();
    chosen.kit         = static_cast<std::uint32_t> (values.soundKit());
    return chosen;
}

template <typename Change>
void PulsewrightAudioProcessor::changeMaterial (Change&& change)
{
    const juce::ScopedLock lock (dataLock);
    change();
    ++changeCounter;
}

template <typename Change>
void PulsewrightAudioProcessor::changeState (Change&& change)
{
    changeMaterial (std::forward<Change> (change));
    tellHostStateChanged();
}

void PulsewrightAudioProcessor::tellHostStateChanged()
{
    // The seed counter is part of the saved state but no parameter. Tell the host, or it closes the project without saving.
    updateHostDisplay (ChangeDetails().withNonParameterStateChanged (true));
}

void PulsewrightAudioProcessor::generatePattern (SectionType kind)
{
    changeState (
        [&]
        {
            session.generate (choices(), kind);
            player.forgetTrigger();
            publishPattern();
        });
}

void PulsewrightAudioProcessor::mutatePattern()
{
    // The nudges call the host, and a host may restore a state inside such a call: that lock comes first everywhere.
    const juce::ScopedLock noRestore (restoreLock);

    changeState (
        [&]
        {
            // The nudges call the host under the lock: nobody may change the material between them
            // and the mutation. The lock is recursive, so a host may call back.
            const auto seed = session.takeMutationSeed();
            nudgeMacros (seed);
            session.mutate (choices(), currentLocks(), seed);
            player.forgetTrigger();
            publishPattern();
        });
}

void PulsewrightAudioProcessor::nudgeMacros (std::uint32_t seed)
{
    MacroNudges nudges (seed);

    for (const auto& setting : allSettings)
    {
        auto* parameter = parameters.getParameter (setting.id);

        if (! setting.isMacro || parameter == nullptr)
            continue;

        const float current = parameter->convertFrom0to1 (juce::jlimit (0.0f, 1.0f, parameter->getValue()));

        parameter->beginChangeGesture();
        parameter->setValueNotifyingHost (parameter->convertTo0to1 (nudges.nudged (current)));
        parameter->endChangeGesture();
    }
}

void PulsewrightAudioProcessor::regeneratePattern()
{
    changeMaterial (
        [&]
        {
            session.regenerate (choices());
            publishPlaybackData();
        });
}

void PulsewrightAudioProcessor::buildSong()
{
    changeState (
        [&]
        {
            session.buildSong (choices());
            player.forgetTrigger();
            publishPlaybackData();
        });
}

void PulsewrightAudioProcessor::selectSection (int index)
{
    {
        const juce::ScopedLock lock (dataLock);

        if (index < 0 || ! session.selectSection (static_cast<std::size_t> (index)))
            return;

        player.forgetTrigger();
        publishPattern();
        ++changeCounter;
    }

    tellHostStateChanged();
}

void PulsewrightAudioProcessor::setMaterial (DrumPattern newPattern, SongArrangement newSong)
{
    changeMaterial (
        [&]
        {
            session.setMaterial (std::move (newPattern), std::move (newSong));
            player.forgetTrigger();
            publishPlaybackData();
        });
}

void PulsewrightAudioProcessor::rebuildFromCounter()
{
    // The stored counter is one ahead of the take that was on screen. Every save and every reload of
    // a project has to give the same music, so it is not advanced here, and what comes back is the
    // take that comes next: always as a two-bar verse.
    changeMaterial (
        [&]
        {
            session.open (choices(), session.nextTake());
            publishPlaybackData();
        });
}

//==============================================================================
PulsewrightAudioProcessor::Restore::Restore (PulsewrightAudioProcessor& owner) : processor (owner), oneAtATime (owner.restoreLock)
{
    ++processor.restoresUnderway;
}

PulsewrightAudioProcessor::Restore::~Restore()
{
    ++processor.restoreCount;
    --processor.restoresUnderway;
}

void PulsewrightAudioProcessor::setParametersOf (const Take& take)
{
    const auto set = [this] (const char* id, auto value)
    {
        auto* parameter = parameters.getParameter (id);
        parameter->setValueNotifyingHost (parameter->convertTo0to1 (static_cast<float> (value)));
    };

    set (parameterID::genre, take.settings.genre);

    for (const auto& setting : allSettings)
        set (setting.id, take.settings.*setting.field);

    if (const auto length = std::ranges::find (patternLengths, take.bars); take.kind == Take::Kind::groove && length != patternLengths.end())
        set (parameterID::patternLength, length - patternLengths.begin());

    set (parameterID::songStructure, take.structure);
    set (parameterID::songDuration, take.duration);
    set (parameterID::soundKit, take.kit);
    set (parameterID::playMode, take.kind);
}

void PulsewrightAudioProcessor::playTake (const Take& take)
{
    const auto pasted = Session::made (take);

    const Restore underway (*this);
    setParametersOf (take);
    changeMaterial (
        [&]
        {
            session.playPasted (pasted);
            player.forgetTrigger();
            publishPlaybackData();
        });
    tellHostStateChanged();
}

bool PulsewrightAudioProcessor::playEarlierTake (std::uint32_t id)
{
    const auto kept = [&]
    {
        const juce::ScopedLock lock (dataLock);
        return session.bringBack (id);
    }();

    if (! kept)
        return false;

    const Restore underway (*this);
    setParametersOf (kept->take);
    changeMaterial (
        [&]
        {
            session.playAgain (*kept);
            player.forgetTrigger();
            publishPlaybackData();
        });
    tellHostStateChanged();
    return true;
}

std::deque<KeptTake> PulsewrightAudioProcessor::getEarlierTakes() const
{
    const juce::ScopedLock lock (dataLock);
    return session.earlierTakes();
}

std::optional<Take> PulsewrightAudioProcessor::getChosenTake() const
{
    const juce::ScopedLock lock (dataLock);
    auto take = session.takeOf (values.playsFullSong() ? Take::Kind::song : Take::Kind::groove);

    if (take)
        take->kit = static_cast<std::uint32_t> (values.soundKit());

    return take;
}

bool PulsewrightAudioProcessor::isAsBroughtBack() const
{
    const juce::ScopedLock lock (dataLock);
    return session.isAsBroughtBack (choices().settings);
}

//==============================================================================
void PulsewrightAudioProcessor::publishPattern()
{
    published.pattern = makePlaybackData (session.pattern().hits, session.pattern().lengthInBeats());
    player.publish (published);
}

void PulsewrightAudioProcessor::publishPlaybackData()
{
    const auto& song = session.song();
    published.song   = makePlaybackData (song);

    for (std::size_t slot = 0; slot < published.sections.size(); ++slot)
        published.sections[slot] = slot < song->sections.size() ? makePlaybackData (song, slot) : nullptr;

    publishPattern();
}

DrumPattern PulsewrightAudioProcessor::getPattern() const
{
    const juce::ScopedLock lock (dataLock);
    return session.pattern();
}

SongArrangement PulsewrightAudioProcessor::getSong() const
{
    const juce::ScopedLock lock (dataLock);
    return *session.song();
}

bool PulsewrightAudioProcessor::isSongAsChosen() const
{
    const juce::ScopedLock lock (dataLock);
    return session.isSongAsChosen (choices());
}

//==============================================================================
LaneLocks PulsewrightAudioProcessor::currentLocks() const noexcept
{
    LaneLocks locks {};

    for (std::size_t lane = 0; lane < locks.size(); ++lane)
        locks[lane] = laneLocks[lane].load();

    return locks;
}

bool PulsewrightAudioProcessor::isLaneLocked (int lane) const noexcept
{
    return juce::isPositiveAndBelow (lane, static_cast<int> (laneCount)) && laneLocks[static_cast<std::size_t> (lane)].load();
}

void PulsewrightAudioProcessor::setLaneLocked (int lane, bool shouldBeLocked)
{
    if (! juce::isPositiveAndBelow (lane, static_cast<int> (laneCount)))
        return;

    if (laneLocks[static_cast<std::size_t> (lane)].exchange (shouldBeLocked) != shouldBeLocked)
        tellHostStateChanged();
}

int PulsewrightAudioProcessor::getSongBarCount (int bpm) const noexcept
{
    return SongBuilder::songBars (SongBuilder::durationSeconds (values.genre(), values.songDuration()), bpm);
}

PulsewrightAudioProcessor::SongLength PulsewrightAudioProcessor::getChosenSongLength() const noexcept
{
    return { SongBuilder::durationSeconds (values.genre(), values.songDuration()), getSongBarCount (getEffectiveBpm()) };
}

//==============================================================================
void PulsewrightAudioProcessor::getStateInformation (juce::MemoryBlock& destination)
{
    SavedState { .seedCounter = session.nextTake(), .locks = currentLocks(), .parameters = parameters.copyState() }.write (destination);
}

void PulsewrightAudioProcessor::setStateInformation (const void* data, int size)
{
    const auto state = SavedState::read (data, size, parameters);

    if (! state)
        return;

    const Restore underway (*this);
    session.setNextTake (state->seedCounter);

    for (std::size_t lane = 0; lane < laneLocks.size(); ++lane)
        laneLocks[lane] = state->locks[lane];

    parameters.replaceState (state->parameters);
    rebuildFromCounter();
}

//==============================================================================
void PulsewrightAudioProcessor::prepareToPlay (double sampleRate, int)
{
    player.prepare (sampleRate, wrapperType == wrapperType_LV2);
}

BlockPlayer::Said PulsewrightAudioProcessor::askHost() const
{
    const auto* head = getPlayHead();
    return head != nullptr ? head->getPosition() : BlockPlayer::Said {};
}

void PulsewrightAudioProcessor::processBlock (juce::AudioBuffer<float>& buffer, juce::MidiBuffer& midi)
{
    player.play (buffer, midi, askHost());
}

void PulsewrightAudioProcessor::processBlock (juce::AudioBuffer<double>& buffer, juce::MidiBuffer& midi)
{
    player.play (buffer, midi, askHost());
}

void PulsewrightAudioProcessor::processBlockBypassed (juce::AudioBuffer<float>& buffer, juce::MidiBuffer&)
{
    buffer.clear();
    player.skip (buffer.getNumSamples(), askHost());
}

void PulsewrightAudioProcessor::processBlockBypassed (juce::AudioBuffer<double>& buffer, juce::MidiBuffer&)
{
    buffer.clear();
    player.skip (buffer.getNumSamples(), askHost());
}

//==============================================================================
bool PulsewrightAudioProcessor::isBusesLayoutSupported (const BusesLayout& layout) const
{
    const auto output = layout.getMainOutputChannelSet();

    return layout.inputBuses.isEmpty() && layout.outputBuses.size() == 1
        && (output == juce::AudioChannelSet::mono() || output == juce::AudioChannelSet::stereo());
}

std::optional<juce::String> PulsewrightAudioProcessor::getNameForMidiNoteNumber (int midiNote, int)
{
    if (const int slot = midiNote - BlockPlayer::firstTriggerNote; juce::isPositiveAndBelow (slot, BlockPlayer::numTriggerNotes))
        return "Section " + juce::String (slot + 1);

    const auto name = midiNote >= 0 ? note::nameOf (static_cast<std::uint32_t> (midiNote)) : std::string_view {};
    return name.empty() ? std::nullopt : std::make_optional (juce::String (name.data(), name.size()));
}

} // namespace pulsewright
