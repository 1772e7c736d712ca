// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PulsewrightAudioProcessor.h"

#include "SavedState.h"

#include "generation/SongBuilder.h"

#include <algorithm>

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
    counter       = seedCounter.fetch_add (1);
    settings.seed = saltOf (counter);
}

Take PulsewrightAudioProcessor::takeOfSettings (Take::Kind kind) const
{
    Take take { .kind = kind, .counter = counter, .settings = settings };

    if (kind == Take::Kind::groove)
    {
        take.section = pattern.sectionType;
        take.bars    = pattern.bars;
    }

    take.structure = values.songStructure();
    take.duration  = values.songDuration();
    take.tempo     = getEffectiveBpm();
    take.kit       = static_cast<std::uint32_t> (values.soundKit());
    return take;
}

KeptTake PulsewrightAudioProcessor::keptTake (KeptTake::Origin origin) const
{
    return { origin, takeOfSettings (madeLast), std::make_shared<const DrumPattern> (pattern), song, patternTake, songTake, 0 };
}

void PulsewrightAudioProcessor::buildSongFromSettings()
{
    songForm = { settings.genre, values.songDuration(), values.songStructure() };
    song     = std::make_shared<const SongArrangement> (SongBuilder::buildSong (settings, getSongBarCount (getEffectiveBpm()), songForm.structure));
    songTake = takeOfSettings (Take::Kind::song);
    broughtBack.reset();
}

void PulsewrightAudioProcessor::generate (SectionType type, std::int32_t bars)
{
    pattern     = GrooveGenerator::generate (settings, type, bars, 0);
    patternTake = takeOfSettings (Take::Kind::groove);
    broughtBack.reset();
}

void PulsewrightAudioProcessor::showSection (std::uint32_t index)
{
    pattern     = song->sections[index].pattern;
    patternTake = songTake;

    if (patternTake)
        patternTake = sectionOf (*songTake, index, pattern);
}

void PulsewrightAudioProcessor::openWithVerse()
{
    constexpr std::int32_t openingBars = 2;

    refreshSettings();
    generate (SectionType::verse, openingBars);
    buildSongFromSettings();
    publishPlaybackData();
    madeLast = Take::Kind::groove;
    history.add (keptTake (KeptTake::Origin::opened));
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
            refreshSettings();
            takeNextSalt();
            generate (kind, values.patternBars());
            player.forgetTrigger();
            publishPattern();
            madeLast = Take::Kind::groove;
            history.add (keptTake (KeptTake::Origin::generated));
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
            const auto seed = ++seedCounter;
            nudgeMacros (seed);
            refreshSettings();

            pattern = GrooveGenerator::mutate (settings, pattern, currentLocks(), seed);
            patternTake.reset();
            broughtBack.reset();
            player.forgetTrigger();
            publishPattern();
            madeLast = Take::Kind::groove;
            history.add (keptTake (KeptTake::Origin::mutated));
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
            generate (pattern.sectionType, pattern.bars);
            buildSongFromSettings();
            publishPlaybackData();
            history.follow (keptTake (KeptTake::Origin::generated));
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
                showSection (0);

            player.forgetTrigger();
            publishPlaybackData();
            madeLast = Take::Kind::song;
            history.add (keptTake (KeptTake::Origin::generated));
        });
}

void PulsewrightAudioProcessor::selectSection (int index)
{
    {
        const juce::ScopedLock lock (dataLock);

        if (! juce::isPositiveAndBelow (index, static_cast<int> (song->sections.size())))
            return;

        showSection (static_cast<std::uint32_t> (index));
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
            patternTake.reset();
            songTake.reset();
            broughtBack.reset();
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
            counter       = seedCounter.load();
            settings.seed = saltOf (counter);
            openWithVerse();
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

void PulsewrightAudioProcessor::show (const KeptTake& kept)
{
    settings    = kept.take.settings;
    broughtBack = settings;
    counter     = kept.take.counter;
    madeLast    = kept.take.kind;
    pattern     = *kept.pattern;
    song        = kept.song;
    songForm    = { settings.genre, kept.take.duration, kept.take.structure };
    patternTake = kept.patternTake;
    songTake    = kept.songTake;
    player.forgetTrigger();
    publishPlaybackData();
}

void PulsewrightAudioProcessor::playTake (const Take& take)
{
    KeptTake pasted;
    pasted.origin      = KeptTake::Origin::pasted;
    pasted.take        = take;
    pasted.pattern     = std::make_shared<const DrumPattern> (patternOf (take));
    pasted.song        = std::make_shared<const SongArrangement> (songOf (take));
    pasted.patternTake = take.kind == Take::Kind::groove ? take : sectionOf (take, 0, *pasted.pattern);
    pasted.songTake    = songBeside (take);

    const Restore underway (*this);
    setParametersOf (take);
    changeMaterial (
        [&]
        {
            seedCounter = take.counter + 1;
            show (pasted);
            history.add (pasted);
        });
    tellHostStateChanged();
}

bool PulsewrightAudioProcessor::playEarlierTake (std::uint32_t id)
{
    const auto kept = [&]() -> std::optional<KeptTake>
    {
        const juce::ScopedLock lock (dataLock);
        const auto* found = history.bringBack (id);
        return found != nullptr ? std::optional (*found) : std::nullopt;
    }();

    if (! kept)
        return false;

    const Restore underway (*this);
    setParametersOf (kept->take);
    changeMaterial ([&] { show (*kept); });
    tellHostStateChanged();
    return true;
}

std::deque<KeptTake> PulsewrightAudioProcessor::getEarlierTakes() const
{
    const juce::ScopedLock lock (dataLock);
    return history.takes();
}

std::optional<Take> PulsewrightAudioProcessor::getChosenTake() const
{
    const juce::ScopedLock lock (dataLock);
    auto take = values.playsFullSong() ? songTake : patternTake;

    if (take)
        take->kit = static_cast<std::uint32_t> (values.soundKit());

    return take;
}

bool PulsewrightAudioProcessor::isAsBroughtBack() const
{
    const juce::ScopedLock lock (dataLock);

    if (! broughtBack)
        return false;

    auto chosen  = *broughtBack;
    chosen.genre = values.genre();
    chosen.setValues (values.settingsValues());
    return chosen == *broughtBack;
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

    const Restore underway (*this);
    seedCounter = state->seedCounter;

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

//==============================================================================
juce::AudioProcessor* JUCE_CALLTYPE createPluginFilter()
{
    return new pulsewright::PulsewrightAudioProcessor();
}
