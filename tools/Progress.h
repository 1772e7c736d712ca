// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A line of progress for long work, on terminals only.

#pragma once

#include <string>

namespace pulsewright
{

/** Shows "label 42 %" on the error stream while it lives; nothing where that is no terminal. */
class Progress
{
public:
    explicit Progress (std::string label);
    ~Progress();

    Progress (const Progress&)            = delete;
    Progress& operator= (const Progress&) = delete;

    /** @param share  0 to 1 */
    void show (double share);

private:
    const std::string label;
    const bool isOnTerminal;
    int shownPercent = -1;
};

} // namespace pulsewright
