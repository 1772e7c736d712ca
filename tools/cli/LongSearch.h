// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A search through takes as the terminal shows it.

#pragma once

#include "Interruption.h"
#include "Progress.h"

namespace pulsewright::cli
{

/** While it lives, the terminal shows the progress, and Ctrl-C asks the search to stop. One at a time. */
class LongSearch
{
public:
    /** Becomes true with Ctrl-C. The search then throws Interrupted. */
    const std::atomic<bool>& stop() const noexcept { return Interruption::flag(); }

    /** @param share  of the takes that are done, 0 to 1 */
    void show (double share) { progress.show (share); }

private:
    const Interruption interruption;
    Progress progress { "Searching" };
};

} // namespace pulsewright::cli
