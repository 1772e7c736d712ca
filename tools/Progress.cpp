// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Progress.h"

#include <cstdio>
#include <unistd.h>
#include <utility>

namespace pulsewright
{

Progress::Progress (std::string labelToShow) : label (std::move (labelToShow)), isOnTerminal (isatty (STDERR_FILENO) == 1)
{}

Progress::~Progress()
{
    if (shownPercent >= 0)
        std::fprintf (stderr, "\r\033[K");
}

void Progress::show (double share)
{
    const auto percent = static_cast<int> (share * 100.0);

    if (! isOnTerminal || percent == shownPercent)
        return;

    std::fprintf (stderr, "\r%s %3d %%", label.c_str(), percent);
    std::fflush (stderr);
    shownPercent = percent;
}

} // namespace pulsewright
