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

    /** Whether a file can be opened for writing, or made; what is in it stays. */
    bool opensForWriting (const fs::path& path)
    {
        return std::ofstream (path, std::ios::binary | std::ios::app).is_open();
    }
} // namespace

FileReplacement::FileReplacement (const fs::path& requested)
{
    std::error_code error;
    const auto status     = fs::status (requested, error);
    const bool isNew      = ! fs::exists (status);
    const bool isDangling = isNew && fs::is_symlink (fs::symlink_status (requested, error));

    target = workPath = requested;

    if (fs::is_directory (status))
        cannotOpen();

    // A device, a pipe, or a link to what is not there yet: nothing to put in its place.
    if (isDangling || (! isNew && ! fs::is_regular_file (status)))
        return;

    if (! isNew)
    {
        target = workPath = fs::canonical (requested, error); // the file behind a link is replaced, not the link

        if (error || ! opensForWriting (target))
            cannotOpen();
    }

    const auto aside = target.parent_path() / (".pulsewright-" + std::to_string (getpid()));

    if (opensForWriting (aside))
    {
        workPath = aside;

        if (! isNew)
            fs::permissions (workPath, status.permissions(), error);
    }
    else if (isNew)
    {
        cannotOpen();
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
