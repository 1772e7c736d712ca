// SPDX-FileCopyrightText: 2026 Tolm
// SPDX-License-Identifier: AGPL-3.0-only

#include "OutputFile.h"

#include "export/MidiFileWriter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#if defined(__linux__)
#include <sys/xattr.h>
#endif

namespace pulsewright::cli
{

namespace fs = std::filesystem;

namespace
{
    //==============================================================================
    // The file that is written aside, where a signal handler can find it.
    std::array<char, PATH_MAX> asidePath {};
    std::atomic<bool> hasAside { false };
    static_assert (std::atomic<bool>::is_always_lock_free, "a signal handler reads it");

    void removeAside() noexcept
    {
        if (hasAside.exchange (false))
            ::unlink (asidePath.data());
    }

    extern "C" void endBySignal (int signal)
    {
        removeAside();
        ::raise (signal); // its default action again, once this handler has returned
    }

    void installHandler (int signal) noexcept
    {
        struct sigaction action = {};
        const bool isIgnored    = ::sigaction (signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;

        action            = {};
        action.sa_handler = endBySignal;
        action.sa_flags   = static_cast<int> (SA_RESETHAND);
        ::sigfillset (&action.sa_mask); // no other signal ends the process before the file is removed

        if (! isIgnored) // by nohup, say
            ::sigaction (signal, &action, nullptr);
    }

    //==============================================================================
    mode_t permissionsOfNewFiles() noexcept
    {
        const auto mask = ::umask (0);
        ::umask (mask);
        return 0666u & ~mask;
    }

    /** Where a new file belongs when its name is a link that leads nowhere yet. The system has followed the links
        before, so they have an end.
    */
    fs::path endOfLinks (fs::path path)
    {
        constexpr int most = 64;
        std::error_code error;

        for (int i = 0; i < most && fs::is_symlink (fs::symlink_status (path, error)); ++i)
            path = path.parent_path() / fs::read_symlink (path, error);

        return path;
    }

    /** Opens a new file with a name of its own in the target's folder. @returns -1 when there can be none */
    int createBeside (const fs::path& target)
    {
        const auto path = (target.parent_path() / ".pulsewright-XXXXXX").string();

        if (path.size() >= asidePath.size())
            return -1;

        *std::copy (path.begin(), path.end(), asidePath.begin()) = 0;
        hasAside                                                 = true; // first, so that no signal falls between
        const int file                                           = ::mkstemp (asidePath.data());

        if (file < 0)
            hasAside = false;

        return file;
    }

    /** Gives a new file the group and the permissions of an old one. */
    bool becomesLike (const struct stat& old, int file) noexcept
    {
        return ::fchown (file, static_cast<uid_t> (-1), old.st_gid) == 0 && ::fchmod (file, old.st_mode & 07777u) == 0;
    }

    /** Whether a new file in this one's place would have other rights, or there can be none. */
    bool isMoreThanAName (const fs::path& file) noexcept
    {
#if defined(__linux__)
        struct statx status = {};
        const bool isMount  = ::statx (AT_FDCWD, file.c_str(), 0, 0, &status) == 0 && (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
        return isMount || ::getxattr (file.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
#else
        return false;
#endif
    }

    /** The number of a file that the process was given open, where a name means one. */
    std::optional<int> openFileOf (std::string_view name) noexcept
    {
        if (name == "-" || name == "/dev/stdout")
            return STDOUT_FILENO;

        if (name == "/dev/stderr")
            return STDERR_FILENO;

        for (const std::string_view folder : { "/dev/fd/", "/proc/self/fd/" })
            if (name.starts_with (folder))
            {
                int number      = -1;
                const auto* end = name.data() + name.size();

                if (const auto read = std::from_chars (name.data() + folder.size(), end, number); read.ec == std::errc() && read.ptr == end)
                    return number;
            }

        return {};
    }

    bool isStandardOutput (std::string_view name) noexcept
    {
        return openFileOf (name) == STDOUT_FILENO;
    }

    std::optional<struct stat> statusOf (const std::string& name) noexcept
    {
        struct stat status = {};
        const auto number  = openFileOf (name);
        const bool exists  = (number ? ::fstat (*number, &status) : ::stat (name.c_str(), &status)) == 0;
        return exists ? std::optional (status) : std::nullopt;
    }
} // namespace

//==============================================================================
OutputFile::OutputFile (std::string nameToUse, const char* messageWhenCut) : name (std::move (nameToUse)), cannotComplete (messageWhenCut)
{
    const auto number = openFileOf (name);
    descriptor        = number ? ::dup (*number) : openTarget();

    if (descriptor < 0)
        fail (MidiFileWriter::cannotOpenMessage);
}

OutputFile::~OutputFile()
{
    if (descriptor >= 0)
        ::close (descriptor);

    if (isAside)
        removeAside();
}

int OutputFile::openTarget()
{
    struct stat old  = {};
    const bool isNew = ::stat (name.c_str(), &old) != 0;

    if (isNew && (errno != ENOENT || name.empty()))
        return -1; // a loop of links, a folder that cannot be looked into

    if (isNew)
    {
        const int aside = openAside (endOfLinks (name));

        if (isAside)
            ::fchmod (aside, permissionsOfNewFiles());

        return aside;
    }

    const int inPlace = ::open (name.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);

    if (inPlace < 0 || ! S_ISREG (old.st_mode))
        return inPlace;

    std::error_code error;
    const auto file = fs::canonical (name, error);
    const bool isOurs =
        ! error && old.st_uid == ::geteuid() && old.st_nlink == 1 && ! isMoreThanAName (file); // a second name would keep the old file

    if (const int aside = isOurs ? openAside (file) : -1; isAside)
    {
        if (becomesLike (old, aside))
        {
            ::close (inPlace);
            return aside;
        }

        giveUpAside (aside);
    }

    return ::ftruncate (inPlace, 0) == 0 ? inPlace : (::close (inPlace), -1);
}

int OutputFile::openAside (fs::path newTarget)
{
    target         = std::move (newTarget);
    const int file = createBeside (target);
    isAside        = file >= 0;
    return file;
}

void OutputFile::giveUpAside (int file)
{
    isAside = false;
    removeAside();
    ::close (file);
}

void OutputFile::fail (const char* message) const
{
    const auto reason = std::generic_category().message (errno);
    throw WriteFailure ((isStandardOutput (name) ? "standard output" : name.empty() ? "\"\"" : name) + ": " + message + " (" + reason + ")");
}

void OutputFile::write (std::string_view bytes)
{
    while (! bytes.empty())
    {
        const auto written = ::write (descriptor, bytes.data(), bytes.size());

        if (written >= 0)
            bytes.remove_prefix (static_cast<std::size_t> (written));
        else if (errno == EAGAIN) // a pipe that another program has set not to wait
        {
            struct pollfd reader
            {
                descriptor, POLLOUT, 0
            };
            ::poll (&reader, 1, -1);
        }
        else if (errno != EINTR)
            fail (cannotComplete);
    }
}

void OutputFile::commit()
{
    if (::close (std::exchange (descriptor, -1)) != 0)
        fail (cannotComplete); // a quota, a server: some tell only now

    if (isAside && ::rename (asidePath.data(), target.c_str()) != 0)
        fail (MidiFileWriter::cannotOpenMessage);

    if (std::exchange (isAside, false))
        hasAside = false;
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
    const auto first = statusOf (a), second = statusOf (b);
    const auto numberOfA = openFileOf (a), numberOfB = openFileOf (b);

    if (first && second)
        return first->st_dev == second->st_dev && first->st_ino == second->st_ino
            && (! S_ISCHR (first->st_mode) || (numberOfA && numberOfA == numberOfB));

    std::error_code error;
    const auto here  = fs::current_path (error);
    const auto place = [&here] (const std::string& name) { return endOfLinks (here / name).lexically_normal(); };
    return numberOfA == numberOfB && place (a) == place (b);
}

bool isStandardOutputTerminal() noexcept
{
    return ::isatty (STDOUT_FILENO) == 1;
}

void prepareProcessForWriting() noexcept
{
    int unused = -1;

    do
        unused = ::open ("/dev/null", O_RDONLY | O_CLOEXEC);
    while (unused >= 0 && unused <= STDERR_FILENO);

    ::close (unused);
    ::signal (SIGXFSZ, SIG_IGN);

    for (const int signal : { SIGHUP, SIGINT, SIGPIPE, SIGQUIT, SIGTERM, SIGXCPU })
        installHandler (signal);
}

} // namespace pulsewright::cli
