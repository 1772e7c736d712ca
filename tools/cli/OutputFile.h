// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// What the tool writes: the standard output, or a file that gets its name only when it is whole.
// OutputFile.cpp, or OutputFileWindows.cpp, speaks to the system; so does Program.cpp.

#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace pulsewright::cli
{

/** Something that could not be written; the text names it and is what to tell the user. */
struct WriteFailure : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/** Writes one output from front to back. Until commit() an old file stands; without it nothing is left behind,
    also when a signal ends the process. One at a time.

    The bytes go into a new file beside the target; a rename then replaces the target. These are written directly,
    because a rename would change what they are or is not possible: a device, a pipe, a file that was handed over open
    (/dev/fd/3), a file of another user, one with a second name or an access control list, one that is mounted by itself,
    one in a folder that takes no new files.
*/
class OutputFile
{
public:
    static constexpr const char* cannotCompleteMessage = "The output could not be written completely.";

    /** @param name            a path, or "-" for the standard output
        @param cannotComplete  what to say when not all of it could be written
        @throws WriteFailure   when it cannot be opened for writing
    */
    explicit OutputFile (std::string name, const char* cannotComplete = cannotCompleteMessage);
    ~OutputFile();

    OutputFile (const OutputFile&)            = delete;
    OutputFile& operator= (const OutputFile&) = delete;

    /** Writes all of it, or throws. @throws WriteFailure */
    void write (std::string_view bytes);

    /** Closes the file and gives it its name. @throws WriteFailure */
    void commit();

private:
    int openTarget();
    int openAside (std::filesystem::path newTarget);
    void giveUpAside (int file);
    [[noreturn]] void fail (const char* message) const;

    const std::string name;
    const char* const cannotComplete;
    std::filesystem::path target; // of the rename
    int descriptor = -1;
    bool isAside   = false;
};

/** Writes these bytes as a whole output. @throws WriteFailure */
void writeOutput (const std::string& name, std::string_view bytes, const char* cannotComplete = OutputFile::cannotCompleteMessage);

/** Whether two names of outputs mean the same file or both the standard output. Any number may go to /dev/null. */
bool areSameOutput (const std::string& a, const std::string& b);

bool isStandardOutputTerminal() noexcept;

/** Call this before anything is opened. After it: writing to a standard stream that was closed fails, and no later file
    takes its number; a file that grows too large is an error and does not end the process; a signal that ends the
    process also removes the unfinished file.
*/
void prepareProcessForWriting() noexcept;

} // namespace pulsewright::cli
