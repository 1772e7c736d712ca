// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Ctrl-C as a request to stop and to give what there is.

#pragma once

#include <atomic>
#include <stdexcept>

namespace pulsewright::cli
{

/** A command that Ctrl-C has ended; the text says how far it came. The tool then ends with 130. */
struct Interrupted : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/** While it lives, Ctrl-C sets a flag, however often it comes: programs that pass it on may send it twice. One at a time. */
class Interruption
{
public:
    Interruption() noexcept;
    ~Interruption();

    Interruption (const Interruption&)            = delete;
    Interruption& operator= (const Interruption&) = delete;

    static const std::atomic<bool>& flag() noexcept;
};

} // namespace pulsewright::cli
