// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "Program.h"

#include "OutputFile.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

#if __APPLE__
#include <mach-o/dyld.h>
#endif

extern char** environ; // NOLINT(readability-redundant-declaration): not everywhere in unistd.h

namespace pulsewright::cli
{

namespace fs = std::filesystem;

namespace
{
    fs::path ownPath (std::error_code& error)
    {
#if __APPLE__
        std::array<char, 4096> path {};
        auto size = static_cast<std::uint32_t> (path.size());

        ::_NSGetExecutablePath (path.data(), &size); // too long a path leaves it empty, which is no file
        return fs::canonical (path.data(), error);
#else
        return fs::read_symlink ("/proc/self/exe", error);
#endif
    }

    fs::path placeOf (std::string_view name)
    {
        std::error_code error;
        const auto folder = ownPath (error).parent_path();

        if (error) // never a program of the working directory's
            throw WriteFailure ("This command does not find its own folder (" + error.message() + ")");

        for (const auto& place : { folder / name, folder.parent_path() / "lib" / "pulsewright" / name })
            if (fs::exists (place, error))
                return place;

        throw WriteFailure ("This command needs the program " + std::string (name) + ", which comes with the plug-in and is not installed");
    }

    /** Both ends of a pipe, closed in time. */
    struct Pipe
    {
        Pipe()
        {
            if (::pipe (ends.data()) != 0)
                throw WriteFailure ("No pipe could be made (" + std::generic_category().message (errno) + ")");

            for (const int end : ends)
                ::fcntl (end, F_SETFD, FD_CLOEXEC);
        }

        ~Pipe()
        {
            ::close (ends[0]);
            closeWriter();
        }

        void closeWriter()
        {
            if (ends[1] >= 0)
                ::close (ends[1]);
            ends[1] = -1;
        }

        std::array<int, 2> ends { -1, -1 };
    };

    std::string allThatComes (int reader)
    {
        std::string bytes;
        std::array<char, 65536> part {};

        for (;;)
        {
            const auto count = ::read (reader, part.data(), part.size());

            if (count > 0)
                bytes.append (part.data(), static_cast<std::size_t> (count));
            else if (count == 0)
                return bytes;
            else if (errno != EINTR)
                throw WriteFailure ("The picture could not be read (" + std::generic_category().message (errno) + ")");
        }
    }
} // namespace

std::string outputOfProgram (std::string_view name, const std::vector<std::string>& arguments)
{
    const auto path = placeOf (name).string();
    Pipe pipe;

    std::vector<char*> argv { const_cast<char*> (path.c_str()) };
    for (const auto& argument : arguments)
        argv.push_back (const_cast<char*> (argument.c_str()));
    argv.push_back (nullptr);

    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init (&actions);
    ::posix_spawn_file_actions_adddup2 (&actions, pipe.ends[1], STDOUT_FILENO);

    pid_t process     = 0;
    const int problem = ::posix_spawn (&process, path.c_str(), &actions, nullptr, argv.data(), environ);
    ::posix_spawn_file_actions_destroy (&actions);
    pipe.closeWriter();

    if (problem != 0)
        throw WriteFailure (path + ": could not be started (" + std::generic_category().message (problem) + ")");

    auto bytes = allThatComes (pipe.ends[0]);
    int status = 0;

    while (::waitpid (process, &status, 0) < 0 && errno == EINTR)
        ;

    if (! WIFEXITED (status) || WEXITSTATUS (status) != 0)
        throw WriteFailure (path + ": ended with an error");

    return bytes;
}

} // namespace pulsewright::cli
