// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PrivateFolder.h"

#if JUCE_LINUX || JUCE_BSD || JUCE_MAC
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace pulsewright
{

#if JUCE_LINUX || JUCE_BSD || JUCE_MAC

bool makePrivateFolder (const juce::File& folder)
{
    const auto& path = folder.getFullPathName();
    mkdir (path.toRawUTF8(), S_IRWXU); // if it is there, or cannot be made, the checks below find that

    // All by one descriptor, so that nobody can put something else in its place meanwhile.
    const auto opened = open (path.toRawUTF8(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);

    if (opened < 0)
        return false;

    struct stat info
    {};
    const bool isOurs         = fstat (opened, &info) == 0 && info.st_uid == geteuid();
    const bool othersMayWrite = (info.st_mode & (S_IWGRP | S_IWOTH)) != 0;
    const bool isOursAlone    = isOurs && (! othersMayWrite || fchmod (opened, S_IRWXU) == 0);
    close (opened);
    return isOursAlone;
}

#else

bool makePrivateFolder (const juce::File& folder)
{
    return folder.createDirectory().wasOk();
}

#endif

} // namespace pulsewright
