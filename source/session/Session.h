// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The music of one instance: what its buttons make, and the takes that it came from.

#pragma once

#include "generation/GrooveGenerator.h"
#include "generation/SongArrangement.h"
#include "generation/TakeHistory.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>

namespace pulsewright
{

/** What the player has chosen. */
struct Choices
{
    GenerationSettings settings {}; ///< the seed counts for nothing: the session's counter decides it
    std::int32_t patternBars = 2;   ///< of the next groove or fill
    std::uint32_t structure  = 0;
    std::uint32_t duration   = 0;  ///< index into songDurations
    std::int32_t tempo       = 90; ///< whole beats per minute; a song's length is measured with it
    std::uint32_t kit        = 0;
};

/** Makes the current pattern and song and remembers the takes. Nothing fails.
    Thread: any, one at a time, but for the next take's number. Allocates.
*/
class Session
{
public:
    /** As a new or a restored instance opens: a verse of two bars and its song, from this take. The counter stays. */
    void open (const Choices& chosen, std::uint32_t take);

    /** A new pattern of the chosen length, from the next take. */
    void generate (const Choices& chosen, SectionType kind);

    /** Counts on and returns the seed of a mutation, with which the style macros are nudged before it. */
    std::uint32_t takeMutationSeed() noexcept { return ++seedCounter; }

    /** Plays the current pattern anew, but for its locked lanes. @param seed  from takeMutationSeed() */
    void mutate (const Choices& chosen, const LaneLocks& locks, std::uint32_t seed);

    /** The same take again under other settings: pattern and song. */
    void regenerate (const Choices& chosen);

    /** A new song, from the next take; its first section becomes the current pattern. */
    void buildSong (const Choices& chosen);

    /** Copies a section of the song into the current pattern. @returns false when there is no such section */
    bool selectSection (std::size_t index);

    /** Makes finished material current, as it stands. Settings and counter stay. */
    void setMaterial (DrumPattern newPattern, SongArrangement newSong);

    //==============================================================================
    /** What a take from outside makes. Pure. */
    static KeptTake made (const Take& take);

    /** Plays what made() has made, and goes on counting from it. */
    void playPasted (const KeptTake& pasted);

    /** An earlier take, which playAgain() then plays; nothing when it is no longer kept. */
    std::optional<KeptTake> bringBack (std::uint32_t id);

    /** Plays it as it was. The counter stays. */
    void playAgain (const KeptTake& kept);

    //==============================================================================
    const DrumPattern& pattern() const noexcept { return currentPattern; }

    /** Never changed once it is here: what is published may share it. */
    const std::shared_ptr<const SongArrangement>& song() const noexcept { return currentSong; }

    const std::deque<KeptTake>& earlierTakes() const noexcept { return history.takes(); }

    /** What made the pattern or the song; empty if it has no code. */
    const std::optional<Take>& takeOf (Take::Kind kind) const noexcept { return kind == Take::Kind::song ? songTake : patternTake; }

    /** Whether the settings are still those of the take that was played again last, and nothing was generated since. */
    bool isAsBroughtBack (GenerationSettings chosen) const noexcept;

    /** Whether the song is already one of the chosen form. */
    bool isSongAsChosen (const Choices& chosen) const noexcept { return songForm == formOf (chosen); }

    /** The number of the next take. Thread: any. */
    std::uint32_t nextTake() const noexcept { return seedCounter.load(); }
    void setNextTake (std::uint32_t number) noexcept { seedCounter = number; }

    /** What decides which song is built. */
    struct SongForm
    {
        Genre genre {};
        std::uint32_t duration = 0, structure = 0;
        bool operator== (const SongForm&) const = default;
    };

    static SongForm formOf (const Choices& chosen) noexcept { return { chosen.settings.genre, chosen.duration, chosen.structure }; }

private:
    void useTake (const Choices& chosen, std::uint32_t take);
    void refreshSettings (const Choices& chosen);
    void makePattern (const Choices& chosen, SectionType type, std::int32_t bars);
    void makeSong (const Choices& chosen);
    void showSection (std::uint32_t index);
    Take takeOfSettings (const Choices& chosen, Take::Kind kind) const;
    KeptTake kept (const Choices& chosen, KeptTake::Origin origin) const;

    GenerationSettings settings;
    DrumPattern currentPattern;
    std::shared_ptr<const SongArrangement> currentSong = std::make_shared<const SongArrangement>();
    SongForm songForm;                         // that the song was built to
    std::uint32_t counter = 0;                 // settings.seed is its salt
    std::optional<Take> patternTake, songTake; // where they came from, if from a take
    Take::Kind madeLast = Take::Kind::groove;
    std::optional<GenerationSettings> broughtBack; // the settings of the take that was played again last
    TakeHistory history;
    std::atomic<std::uint32_t> seedCounter { 1 };
};

} // namespace pulsewright
