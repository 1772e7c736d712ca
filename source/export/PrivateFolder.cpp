// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "PrivateFolder.h"

#if JUCE_LINUX || JUCE_BSD || JUCE_MAC
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace pulsewright
{

#if JUCE_LINUX || JUCE_BSD || JUCE_MAC

bool makePrivateFolder (const juce::File& folder)
{
    const auto& path = folder.getFullPathName();
    mkdir (path.toRawUTF8(), S_IRWXU); // if it is there, or cannot be made, that shows below

    struct stat info
    {};
    constexpr auto othersMayWrite = S_IWGRP | S_IWOTH;

    return lstat (path.toRawUTF8(), &info) == 0 && S_ISDIR (info.st_mode) && info.st_uid == geteuid() && (info.st_mode & othersMayWrite) == 0;
}

#else

bool makePrivateFolder (const juce::File& folder)
{
    return folder.createDirectory().wasOk();
}

#endif

} // namespace pulsewright
