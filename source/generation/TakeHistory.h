// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The takes of a session, kept so that they can come back.

#pragma once

#include "Take.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

namespace pulsewright
{

/** What one take made, as it was. */
struct KeptTake
{
    enum class Origin
    {
        opened,    ///< with the instance or a project
        generated, ///< by a press, or a knob
        mutated,   ///< has no code: it depends on the groove before it
        pasted
    };

    Origin origin = Origin::opened;
    Take take; ///< the settings and the counter; of a mutation those that it left behind
    std::shared_ptr<const DrumPattern> pattern;
    std::shared_ptr<const SongArrangement> song;
    std::optional<Take> patternTake, songTake; ///< what made them; nothing for what has no code
    std::uint32_t id = 0;                      ///< given by the history
};

/** "Take 12: Boom Bap groove, 2 bars"; for menus. */
std::string describe (const KeptTake& kept);

//==============================================================================
/** The last takes, the newest first. Thread: any, one at a time. Allocates. */
class TakeHistory
{
public:
    static constexpr std::size_t capacity = 32;

    /** Keeps a new one; the oldest goes when there are too many. */
    void add (KeptTake made);

    /** Replaces the newest take by what the knobs have made of it. If the newest take is a mutation, or an earlier take was
        brought back since, nothing is replaced and a new take is added.
    */
    void follow (KeptTake remade);

    /** The take with this id is playing again. @returns null when it is no longer there */
    const KeptTake* bringBack (std::uint32_t id);

    const std::deque<KeptTake>& takes() const noexcept { return kept; }

private:
    std::deque<KeptTake> kept;
    std::uint32_t lastId = 0;
    bool isNewestPlaying = false;
};

} // namespace pulsewright
