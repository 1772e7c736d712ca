// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PrivateFolder.h"

#if JUCE_LINUX || JUCE_BSD || JUCE_MAC
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace pulsewright
{

bool makePrivateFolder (const juce::File& folder)
{
    folder.createDirectory();

#if JUCE_LINUX || JUCE_BSD || JUCE_MAC
    struct stat info
    {};
    const auto path               = folder.getFullPathName();
    constexpr auto othersMayWrite = S_IWGRP | S_IWOTH;

    if (lstat (path.toRawUTF8(), &info) != 0 || ! S_ISDIR (info.st_mode) || info.st_uid != geteuid())
        return false;

    return (info.st_mode & othersMayWrite) == 0 || chmod (path.toRawUTF8(), S_IRWXU) == 0;
#else
    return folder.isDirectory();
#endif
}

} // namespace pulsewright
