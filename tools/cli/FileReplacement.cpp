// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "FileReplacement.h"

#include "export/MidiFileWriter.h"

#include <fstream>
#include <system_error>
#include <unistd.h>

namespace pulsewright::cli
{

namespace fs = std::filesystem;

namespace
{
    [[noreturn]] void cannotOpen()
    {
        throw WriteFailure (MidiFileWriter::cannotOpenMessage);
    }

    /** Whether a file can be opened for writing; what is in it stays. */
    bool opensForWriting (const fs::path& path)
    {
        return std::fstream (path, std::ios::in | std::ios::out | std::ios::binary).is_open();
    }

    bool canBeCreated (const fs::path& path)
    {
        return std::ofstream (path, std::ios::binary).is_open();
    }
} // namespace

FileReplacement::FileReplacement (const fs::path& requested)
{
    std::error_code error;

    // The file behind a link is replaced, not the link.
    target            = fs::canonical (requested, error);
    const bool exists = ! error;

    if (! exists)
        target = requested;

    const auto status = fs::status (target, error);

    if (fs::is_directory (status))
        cannotOpen();

    if (exists && ! fs::is_regular_file (status))
    {
        workPath = target; // a device or a pipe
        return;
    }

    if (exists && ! opensForWriting (target))
        cannotOpen();

    workPath = target;
    workPath += ".part-" + std::to_string (getpid());

    if (! canBeCreated (workPath))
    {
        if (! exists)
            cannotOpen();

        workPath = target;
    }
    else if (exists)
    {
        fs::permissions (workPath, status.permissions(), error);
    }
}

FileReplacement::~FileReplacement()
{
    std::error_code ignored;

    if (workPath != target)
        fs::remove (workPath, ignored);
}

void FileReplacement::commit()
{
    std::error_code error;

    if (workPath == target)
        return;

    fs::rename (workPath, target, error);

    if (error)
        cannotOpen();

    workPath = target;
}

void writeFile (const fs::path& target, std::string_view bytes)
{
    FileReplacement replacement (target);

    std::ofstream file (replacement.path(), std::ios::binary | std::ios::trunc);

    if (! file.is_open())
        cannotOpen();

    file.write (bytes.data(), static_cast<std::streamsize> (bytes.size()));
    file.close();

    if (! file.good())
        throw WriteFailure (MidiFileWriter::cannotCompleteMessage);

    replacement.commit();
}

} // namespace pulsewright::cli
