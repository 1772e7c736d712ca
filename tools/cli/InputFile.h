// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// A file that the tool reads.

#pragma once

#include "Options.h"

#include <cerrno>
#include <cstddef>
#include <fstream>
#include <string>
#include <system_error>

namespace pulsewright::cli
{

/** All of a file. @throws BadArgument  when it cannot be read, or is larger than it may be */
inline std::string bytesOfFile (const std::string& name, std::size_t largest)
{
    errno = 0;
    std::ifstream file (name, std::ios::binary);
    std::string bytes (largest + 1, '\0');
    file.read (bytes.data(), static_cast<std::streamsize> (bytes.size()));
    bytes.resize (static_cast<std::size_t> (file.gcount()));

    if (! file.is_open() || file.bad())
        throw BadArgument (name + ": could not be read: " + std::generic_category().message (errno));

    if (bytes.size() > largest)
        throw BadArgument (name + ": is too large, more than " + std::to_string (largest >> 20) + " MiB");

    return bytes;
}

} // namespace pulsewright::cli
