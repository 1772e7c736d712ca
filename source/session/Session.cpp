// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Session.h"

#include "generation/SongBuilder.h"

#include <utility>

namespace pulsewright
{

void Session::refreshSettings (const Choices& chosen)
{
    settings      = chosen.settings;
    settings.seed = saltOf (counter);
}

void Session::useTake (const Choices& chosen, std::uint32_t take)
{
    counter = take;
    refreshSettings (chosen);
}

Take Session::takeOfSettings (const Choices& chosen, Take::Kind kind) const
{
    Take take { .kind = kind, .counter = counter, .settings = settings };

    if (kind == Take::Kind::groove)
    {
        take.section = currentPattern.sectionType;
        take.bars    = currentPattern.bars;
    }

    take.structure = chosen.structure;
    take.duration  = chosen.duration;
    take.tempo     = chosen.tempo;
    take.kit       = chosen.kit;
    return take;
}

KeptTake Session::kept (const Choices& chosen, KeptTake::Origin origin) const
{
    return { origin, takeOfSettings (chosen, madeLast), std::make_shared<const DrumPattern> (currentPattern), currentSong, patternTake, songTake, 0 };
}

void Session::makePattern (const Choices& chosen, SectionType type, std::int32_t bars)
{
    currentPattern = GrooveGenerator::generate (settings, type, bars, 0);
    patternTake    = takeOfSettings (chosen, Take::Kind::groove);
    broughtBack.reset();
}

void Session::makeSong (const Choices& chosen)
{
    songTake    = takeOfSettings (chosen, Take::Kind::song);
    currentSong = std::make_shared<const SongArrangement> (songOf (*songTake));
    songForm    = formOf (chosen);
    broughtBack.reset();
}

void Session::showSection (std::uint32_t index)
{
    currentPattern = currentSong->sections[index].pattern;
    patternTake    = songTake;

    if (patternTake)
        patternTake = sectionOf (*songTake, index, currentPattern);
}

//==============================================================================
void Session::open (const Choices& chosen, std::uint32_t take)
{
    constexpr std::int32_t openingBars = 2;

    useTake (chosen, take);
    makePattern (chosen, SectionType::verse, openingBars);
    makeSong (chosen);
    madeLast = Take::Kind::groove;
    history.add (kept (chosen, KeptTake::Origin::opened));
}

void Session::generate (const Choices& chosen, SectionType kind)
{
    useTake (chosen, seedCounter.fetch_add (1));
    makePattern (chosen, kind, chosen.patternBars);
    madeLast = Take::Kind::groove;
    history.add (kept (chosen, KeptTake::Origin::generated));
}

void Session::mutate (const Choices& chosen, const LaneLocks& locks, std::uint32_t seed)
{
    refreshSettings (chosen);
    currentPattern = GrooveGenerator::mutate (settings, currentPattern, locks, seed);
    patternTake.reset();
    broughtBack.reset();
    madeLast = Take::Kind::groove;
    history.add (kept (chosen, KeptTake::Origin::mutated));
}

void Session::regenerate (const Choices& chosen)
{
    refreshSettings (chosen);
    makePattern (chosen, currentPattern.sectionType, currentPattern.bars);
    makeSong (chosen);
    history.follow (kept (chosen, KeptTake::Origin::generated));
}

void Session::buildSong (const Choices& chosen)
{
    useTake (chosen, seedCounter.fetch_add (1));
    makeSong (chosen);
    selectSection (0);
    madeLast = Take::Kind::song;
    history.add (kept (chosen, KeptTake::Origin::generated));
}

bool Session::selectSection (std::size_t index)
{
    if (index >= currentSong->sections.size())
        return false;

    showSection (static_cast<std::uint32_t> (index));
    return true;
}

void Session::setMaterial (DrumPattern newPattern, SongArrangement newSong)
{
    currentPattern = std::move (newPattern);
    currentSong    = std::make_shared<const SongArrangement> (std::move (newSong));
    patternTake.reset();
    songTake.reset();
    broughtBack.reset();
}

//==============================================================================
KeptTake Session::made (const Take& take)
{
    KeptTake pasted;
    pasted.origin      = KeptTake::Origin::pasted;
    pasted.take        = take;
    pasted.pattern     = std::make_shared<const DrumPattern> (patternOf (take));
    pasted.song        = std::make_shared<const SongArrangement> (songOf (take));
    pasted.patternTake = take.kind == Take::Kind::groove ? take : sectionOf (take, 0, *pasted.pattern);
    pasted.songTake    = songBeside (take);
    return pasted;
}

void Session::playPasted (const KeptTake& pasted)
{
    seedCounter = pasted.take.counter + 1;
    playAgain (pasted);
    history.add (pasted);
}

std::optional<KeptTake> Session::bringBack (std::uint32_t id)
{
    const auto* found = history.bringBack (id);
    return found != nullptr ? std::optional (*found) : std::nullopt;
}

void Session::playAgain (const KeptTake& again)
{
    settings       = again.take.settings;
    broughtBack    = settings;
    counter        = again.take.counter;
    madeLast       = again.take.kind;
    currentPattern = *again.pattern;
    currentSong    = again.song;
    songForm       = { settings.genre, again.take.duration, again.take.structure };
    patternTake    = again.patternTake;
    songTake       = again.songTake;
}

bool Session::isAsBroughtBack (GenerationSettings chosen) const noexcept
{
    if (! broughtBack)
        return false;

    chosen.seed = broughtBack->seed;
    return chosen == *broughtBack;
}

} // namespace pulsewright
