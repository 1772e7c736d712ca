// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// The built-in audition clock: switched on the message thread, running on the audio thread.

#pragma once

#include "NonBlocking.h"

#include <atomic>
#include <cstdint>

namespace pulsewright
{

/** One word says whether a preview plays, in which mode, and which start it belongs to.

    The position is the audio thread's alone; a new start is noticed by its number, so that a block
    in flight can neither move the new preview nor stop it.
*/
class PreviewTransport
{
public:
    /** Thread: message. Starts from the first beat. */
    void start (bool fullSong) noexcept
    {
        state.store (((state.load() >> startShift) + 1) << startShift | (fullSong ? fullSongBit : 0u) | playingBit);
    }

    /** Thread: message. Stops and rewinds. */
    void stop() noexcept { state.fetch_and (~playingBit); }

    /** Thread: any. */
    bool isPlaying() const PULSEWRIGHT_NONBLOCKING { return (state.load() & playingBit) != 0; }

    //==============================================================================
    /** A preview as one block sees it. */
    struct Block
    {
        std::uint32_t state = 0;
        double position     = 0.0; ///< in beats, at the block's first sample

        bool isPlaying() const noexcept { return (state & playingBit) != 0; }
        bool isFullSong() const noexcept { return (state & fullSongBit) != 0; }
    };

    /** Thread: audio, at the start of a block. */
    Block beginBlock() PULSEWRIGHT_NONBLOCKING
    {
        const auto now = state.load();

        if ((now & playingBit) == 0 || now >> startShift != startSeen)
        {
            startSeen = now >> startShift;
            position  = 0.0;
        }

        return { now, position };
    }

    /** Thread: audio. Where the next block goes on. */
    void moveTo (double newPosition) PULSEWRIGHT_NONBLOCKING { position = newPosition; }

    /** Thread: audio. Ends the preview of this block, unless another one has been started meanwhile. */
    void finish (Block block) PULSEWRIGHT_NONBLOCKING { state.compare_exchange_strong (block.state, block.state & ~playingBit); }

    /** Thread: any that the host prepares from, while no block is played. */
    void rewind() noexcept { position = 0.0; }

private:
    static constexpr std::uint32_t playingBit  = 1u;
    static constexpr std::uint32_t fullSongBit = 2u;
    static constexpr int startShift            = 2;

    std::atomic<std::uint32_t> state { 0 }; // both: flags, and above them the number of starts
    std::uint32_t startSeen = 0;            // audio thread only
    double position         = 0.0;          // audio thread only, in beats
};

} // namespace pulsewright
