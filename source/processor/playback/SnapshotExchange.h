// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Hands immutable objects from a publisher to one real-time reader, which never frees one.

#pragma once

#include "NonBlocking.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace pulsewright
{

/** A single-reader hand-over after the manner of read-copy-update.

    The reader marks the span in which it uses a snapshot by counting: odd while it reads, even between
    two readings. The publisher swaps the pointer first and looks at the count afterwards. If the count
    is even, every later reading sees the new pointer and the old snapshot can go at once; if it is odd,
    the old one waits until the count has moved on. All four accesses are sequentially consistent; the
    argument needs that. The reader adds rather than stores, although it alone writes the count: QEMU
    7.2 on x86 lets the load that follows overtake a plain store.
*/
template <typename Snapshot>
class SnapshotExchange
{
public:
    ~SnapshotExchange() { delete current.load(); }

    /** Replaces what the reader will see from its next reading on.
        Thread: any but the reader's, one at a time. Blocks: never. Allocates, frees: yes.
    */
    void publish (std::unique_ptr<const Snapshot> next)
    {
        std::unique_ptr<const Snapshot> old (current.exchange (next.release()));
        const auto count = readCount.load();

        std::erase_if (retired, [count] (const auto& r) { return r.countWhenRetired != count; });

        if (old != nullptr && isOdd (count))
            retired.push_back ({ std::move (old), count });
    }

    /** The snapshot and the span of its use. Keep it on the stack of the audio callback. */
    class Reading
    {
    public:
        explicit Reading (SnapshotExchange& e) PULSEWRIGHT_NONBLOCKING : exchange (e)
        {
            exchange.readCount.fetch_add (1);
            snapshot = exchange.current.load();
        }

        ~Reading() PULSEWRIGHT_NONBLOCKING { exchange.readCount.fetch_add (1, std::memory_order_release); }

        Reading (const Reading&)            = delete;
        Reading& operator= (const Reading&) = delete;

        const Snapshot* get() const PULSEWRIGHT_NONBLOCKING { return snapshot; }

    private:
        SnapshotExchange& exchange;
        const Snapshot* snapshot = nullptr;
    };

    /** Thread: audio, one reading at a time. Blocks: never. Allocates, frees: never. */
    Reading read() PULSEWRIGHT_NONBLOCKING { return Reading { *this }; }

private:
    struct Retired
    {
        std::unique_ptr<const Snapshot> snapshot;
        std::uint64_t countWhenRetired;
    };

    static constexpr bool isOdd (std::uint64_t count) noexcept { return (count & 1u) != 0; }

    std::atomic<const Snapshot*> current { nullptr }; // publisher to reader
    std::atomic<std::uint64_t> readCount { 0 };       // reader to publisher
    std::vector<Retired> retired;                     // publisher only

    static_assert (std::atomic<const Snapshot*>::is_always_lock_free && std::atomic<std::uint64_t>::is_always_lock_free);
};

} // namespace pulsewright
