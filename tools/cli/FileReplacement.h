// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// Writes a file aside and gives it its name only when it is whole.

#pragma once

#include <filesystem>
#include <stdexcept>
#include <string_view>

namespace pulsewright::cli
{

/** A file that could not be written; the text is what to tell the user. */
struct WriteFailure : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/** Replaces one file. Until commit() the old one stands; without it nothing is left behind.

    What cannot be replaced by a rename (a device, a pipe, a file in a folder where nothing new may
    be made) is written in place.
*/
class FileReplacement
{
public:
    /** @throws WriteFailure  when the target could not be opened for writing */
    explicit FileReplacement (const std::filesystem::path& target);
    ~FileReplacement();

    FileReplacement (const FileReplacement&)            = delete;
    FileReplacement& operator= (const FileReplacement&) = delete;

    /** Where to write. */
    const std::filesystem::path& path() const noexcept { return workPath; }

    /** @throws WriteFailure */
    void commit();

private:
    std::filesystem::path target, workPath;
};

/** Replaces a file by these bytes. @throws WriteFailure */
void writeFile (const std::filesystem::path& target, std::string_view bytes);

} // namespace pulsewright::cli
