// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PulsewrightAudioProcessor.h"

#include "SavedState.h"

#include "generation/SongBuilder.h"

namespace pulsewright
{

//==============================================================================
PulsewrightAudioProcessor::PulsewrightAudioProcessor()
    : AudioProcessor (BusesProperties().withOutput ("Output", juce::AudioChannelSet::stereo(), true)),
      parameters (*this, nullptr, SavedState::type, createParameterLayout()),
      values (parameters)
{
    openWithVerse();
}

//==============================================================================
void PulsewrightAudioProcessor::refreshSettings()
{
    settings.genre = values.genre();
    settings.setValues (values.settingsValues());
}

void PulsewrightAudioProcessor::takeNextSalt()
{
    settings.seed = saltOf (seedCounter.fetch_add (1));
}

void PulsewrightAudioProcessor::buildSongFromSettings()
{
    songForm = { settings.genre, values.songDuration(), values.songStructure() };
    song     = std::make_shared<const SongArrangement> (SongBuilder::buildSong (settings, getSongBarCount (getEffectiveBpm()), songForm.structure));
}

void PulsewrightAudioProcessor::openWithVerse()
{
    constexpr std::int32_t openingBars = 2;

    refreshSettings();
    pattern = GrooveGenerator::generate (settings, SectionType::verse, openingBars, 0);
    buildSongFromSettings();
    publishPlaybackData();
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
    // What is saved has changed without a parameter moving; without a word the take is lost on close.
    updateHostDisplay (ChangeDetails().withNonParameterStateChanged (true));
}

void PulsewrightAudioProcessor::generatePattern (SectionType kind)
{
    changeState (
        [&]
        {
            refreshSettings();
            takeNextSalt();
            pattern = GrooveGenerator::generate (settings, kind, values.patternBars(), 0);
            player.forgetTrigger();
            publishPattern();
        });
}

void PulsewrightAudioProcessor::mutatePattern()
{
    changeState (
        [&]
        {
            // The nudges call the host under the lock: nobody may change the material between them
            // and the mutation. The lock is recursive, so a host may call back.
            const auto counter = ++seedCounter;
            nudgeMacros (counter);
            refreshSettings();

            pattern = GrooveGenerator::mutate (settings, pattern, currentLocks(), counter);
            player.forgetTrigger();
            publishPattern();
        });
}

void PulsewrightAudioProcessor::nudgeMacros (std::uint32_t seed)
{
    juce::Random random (static_cast<juce::int64> (seed));

    for (const auto& setting : allSettings)
    {
        auto* parameter = parameters.getParameter (setting.id);

        if (! setting.isMacro || parameter == nullptr)
            continue;

        const float current = parameter->convertFrom0to1 (juce::jlimit (0.0f, 1.0f, parameter->getValue()));
        const float amount  = random.nextFloat() * 0.15f + 0.05f;
        const float step    = random.nextBool() ? amount : -amount;

        // A step over the edge is taken the other way: clipping would pile the values up at the ends.
        const float candidate = current + step;
        const bool overshoots = candidate < 0.0f || candidate > 1.0f;
        const float nudged    = juce::jlimit (0.0f, 1.0f, overshoots ? current - step : candidate);

        parameter->beginChangeGesture();
        parameter->setValueNotifyingHost (parameter->convertTo0to1 (nudged));
        parameter->endChangeGesture();
    }
}

void PulsewrightAudioProcessor::regeneratePattern()
{
    changeMaterial (
        [&]
        {
            refreshSettings();
            pattern = GrooveGenerator::generate (settings, pattern.sectionType, pattern.bars, 0);
            buildSongFromSettings();
            publishPlaybackData();
        });
}

void PulsewrightAudioProcessor::buildSong()
{
    changeState (
        [&]
        {
            refreshSettings();
            takeNextSalt();
            buildSongFromSettings();

            if (! song->sections.empty())
                pattern = song->sections.front().pattern;

            player.forgetTrigger();
            publishPlaybackData();
        });
}

void PulsewrightAudioProcessor::selectSection (int index)
{
    {
        const juce::ScopedLock lock (dataLock);

        if (! juce::isPositiveAndBelow (index, static_cast<int> (song->sections.size())))
            return;

        pattern = song->sections[static_cast<std::size_t> (index)].pattern;
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
            pattern = std::move (newPattern);
            song    = std::make_shared<const SongArrangement> (std::move (newSong));
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
            settings.seed = saltOf (seedCounter.load());
            openWithVerse();
        });
}

//==============================================================================
void PulsewrightAudioProcessor::publishPattern()
{
    published.pattern = makePlaybackData (pattern.hits, pattern.lengthInBeats());
    player.publish (published);
}

void PulsewrightAudioProcessor::publishPlaybackData()
{
    published.song = makePlaybackData (song);

    for (std::size_t slot = 0; slot < published.sections.size(); ++slot)
        published.sections[slot] = slot < song->sections.size() ? makePlaybackData (song, slot) : nullptr;

    publishPattern();
}

DrumPattern PulsewrightAudioProcessor::getPattern() const
{
    const juce::ScopedLock lock (dataLock);
    return pattern;
}

SongArrangement PulsewrightAudioProcessor::getSong() const
{
    const juce::ScopedLock lock (dataLock);
    return *song;
}

bool PulsewrightAudioProcessor::isSongAsChosen() const
{
    const juce::ScopedLock lock (dataLock);
    return songForm == getChosenForm();
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
    SavedState { .seedCounter = seedCounter.load(), .locks = currentLocks(), .parameters = parameters.copyState() }.write (destination);
}

void PulsewrightAudioProcessor::setStateInformation (const void* data, int size)
{
    const auto state = SavedState::read (data, size, parameters);

    if (! state)
        return;

    const juce::ScopedLock lock (dataLock); // one restore at a time, from whichever thread
    ++restoresUnderway;
    seedCounter = state->seedCounter;

    for (std::size_t lane = 0; lane < laneLocks.size(); ++lane)
        laneLocks[lane] = state->locks[lane];

    parameters.replaceState (state->parameters);
    rebuildFromCounter();
    ++restoreCount;
    --restoresUnderway;
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

//==============================================================================
juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter()
{
    return new pulsewright::PulsewrightAudioProcessor();
}
