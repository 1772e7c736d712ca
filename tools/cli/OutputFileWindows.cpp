// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

// OutputFile.cpp's and Program.cpp's counterpart for Windows.

#include "OutputFile.h"
#include "Program.h"

#include "export/MidiFileWriter.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>
#include <system_error>
#include <utility>

#ifndef NOMINMAX // as GCC's library does
#define NOMINMAX
#endif

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace pulsewright::cli
{

namespace fs = std::filesystem;

namespace
{
    fs::path aside; // the file that is being written, or none; a handler of Windows' runs in a thread of its own

    extern "C" void endBySignal (int signal)
    {
        std::error_code error;
        fs::remove (aside, error);
        std::_Exit (128 + signal);
    }

    bool isStandardOutput (std::string_view name) noexcept
    {
        return name == "-" || name == "/dev/stdout";
    }

    bool isDevice (const fs::path& path) noexcept
    {
        std::error_code error;
        return fs::exists (path, error) && ! fs::is_regular_file (path, error);
    }
} // namespace

OutputFile::OutputFile (std::string nameToUse, const char* messageWhenCut)
    : name (std::move (nameToUse)), cannotComplete (messageWhenCut), target (name)
{
    constexpr int flags = _O_WRONLY | _O_BINARY | _O_CREAT | _O_TRUNC;

    if (isStandardOutput (name))
    {
        descriptor = ::_dup (_fileno (stdout));
    }
    else if (isDevice (target) || name == "NUL")
    {
        descriptor = ::_open (name.c_str(), _O_WRONLY | _O_BINARY);
    }
    else if (! name.empty())
    {
        aside      = target.parent_path() / (".pulsewright-" + std::to_string (_getpid()));
        isAside    = true;
        descriptor = ::_wopen (aside.c_str(), flags, _S_IREAD | _S_IWRITE);
    }

    if (descriptor < 0)
        fail (MidiFileWriter::cannotOpenMessage);
}

OutputFile::~OutputFile()
{
    if (descriptor >= 0)
        ::_close (descriptor);

    std::error_code error;

    if (isAside)
        fs::remove (aside, error);
}

void OutputFile::fail (const char* message) const
{
    const auto reason = std::generic_category().message (errno);
    throw WriteFailure ((isStandardOutput (name) ? "standard output" : name.empty() ? "\"\"" : name) + ": " + message + " (" + reason + ")");
}

void OutputFile::write (std::string_view bytes)
{
    constexpr std::size_t mostAtOnce = 1 << 20;

    while (! bytes.empty())
    {
        const int written = ::_write (descriptor, bytes.data(), static_cast<unsigned> (std::min (bytes.size(), mostAtOnce)));

        if (written <= 0)
            fail (cannotComplete);

        bytes.remove_prefix (static_cast<std::size_t> (written));
    }
}

void OutputFile::commit()
{
    if (::_close (std::exchange (descriptor, -1)) != 0)
        fail (cannotComplete);

    if (! std::exchange (isAside, false))
        return;

    std::error_code error;
    fs::rename (aside, target, error); // replaces what is there

    if (error)
    {
        const auto reason = error.message();
        fs::remove (aside, error);
        throw WriteFailure (name + ": " + MidiFileWriter::cannotOpenMessage + " (" + reason + ")");
    }
}

//==============================================================================
void writeOutput (const std::string& name, std::string_view bytes, const char* cannotComplete)
{
    OutputFile output (name, cannotComplete);
    output.write (bytes);
    output.commit();
}

bool areSameOutput (const std::string& a, const std::string& b)
{
    if (isStandardOutput (a) || isStandardOutput (b))
        return isStandardOutput (a) && isStandardOutput (b);

    std::error_code error;
    return a != "NUL" && (fs::absolute (a, error).lexically_normal() == fs::absolute (b, error).lexically_normal() || fs::equivalent (a, b, error));
}

bool isStandardOutputTerminal() noexcept
{
    return ::_isatty (_fileno (stdout)) != 0;
}

void prepareProcessForWriting() noexcept
{
    ::SetConsoleOutputCP (CP_UTF8);           // which is what the names of files are in: see windows/Utf8.manifest
    ::_setmode (_fileno (stdout), _O_BINARY); // lines end as in files, and sound stays as it is

    for (const int signal : { SIGINT, SIGTERM })
        std::signal (signal, endBySignal);
}

std::string outputOfProgram (std::string_view name, const std::vector<std::string>&)
{
    throw WriteFailure ("This command needs the program " + std::string (name) + ", which there is not on Windows");
}

} // namespace pulsewright::cli
