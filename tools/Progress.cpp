// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Progress.h"

#include <cstdio>
#include <utility>

#if __has_include(<unistd.h>)
#include <unistd.h>
#endif

namespace pulsewright
{

namespace
{
    bool isErrorStreamOnTerminal() noexcept
    {
#if __has_include(<unistd.h>)
        return isatty (STDERR_FILENO) == 1;
#else
        return false; // other systems do without
#endif
    }
} // namespace

Progress::Progress (std::string labelToShow) : label (std::move (labelToShow)), isOnTerminal (isErrorStreamOnTerminal())
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
