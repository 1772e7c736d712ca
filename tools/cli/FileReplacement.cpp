// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "FileReplacement.h"

#include "export/MidiFileWriter.h"

#include <cstdlib>
#include <fstream>
#include <sys/stat.h>
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

    /** A new file with a name of its own in the same folder; empty when there can be none. */
    fs::path makeFileBeside (const fs::path& target)
    {
        auto name      = (target.parent_path() / ".pulsewright-XXXXXX").string();
        const int file = mkstemp (name.data());

        if (file < 0)
            return {};

        close (file);
        return name;
    }

    fs::perms permissionsOfNewFiles()
    {
        const auto mask = umask (0);
        umask (mask);
        return static_cast<fs::perms> (0666u & ~mask);
    }

    /** Whether a file can be opened for writing; what is in it stays. */
    bool opensForWriting (const fs::path& path)
    {
        return std::ofstream (path, std::ios::binary | std::ios::app).is_open();
    }
} // namespace

FileReplacement::FileReplacement (const fs::path& requested)
{
    std::error_code error;
    const auto status = fs::status (requested, error);
    const bool isNew  = ! fs::exists (status);
    const bool isLink = fs::is_symlink (fs::symlink_status (requested, error));
    error.clear(); // what is not there yet is no error

    target = workPath = requested;

    if (fs::is_directory (status))
        cannotOpen();

    if (! isNew && ! fs::is_regular_file (status))
        return; // a device or a pipe: nothing to put in its place

    // The file behind a link is replaced, or made, not the link.
    if (! isNew)
        target = fs::canonical (requested, error);
    else if (isLink)
        target = requested.parent_path() / fs::read_symlink (requested, error);

    workPath = target;

    if (error || (! isNew && ! opensForWriting (target)))
        cannotOpen();

    if (auto aside = makeFileBeside (target); ! aside.empty())
    {
        workPath = std::move (aside);
        fs::permissions (workPath, isNew ? permissionsOfNewFiles() : status.permissions(), error);
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
