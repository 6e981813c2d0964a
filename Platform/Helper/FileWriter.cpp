// Files of a POSIX system.
#include "Platform/Helper/FileWriter.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <random>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>

#include <unistd.h>
#include <utility>

namespace
{

constexpr int lookMs = 50; // how often somebody who waits looks for a stop

std::string Folder_Of(const std::string& path)
{
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// Takes the file away if it is ours and nobody has it in the making: who has holds a lock.
void Stale_Remove(int folder, const char* pName)
{
    const int file = openat(folder, pName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat status = {};
    if (file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
        flock(file, LOCK_EX | LOCK_NB) == 0)
    {
        unlinkat(folder, pName, 0);
    }
    if (file >= 0)
    {
        close(file);
    }
}

// The files that an ended process left.
void Stale_RemoveAll(const std::string& target)
{
    const CHiddenName::Text stem = CHiddenName::Stem_Of(target);
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(Folder_Of(target).c_str()), &closedir);
    while (const dirent* pEntry = folder == nullptr ? nullptr : readdir(folder.get()))
    {
        if (CHiddenName::IsOne(pEntry->d_name, stem))
        {
            Stale_Remove(dirfd(folder.get()), pEntry->d_name);
        }
    }
}

// Where the system shows an open file, so that it can be given a name.
std::string Descriptor_Path(int descriptor)
{
    return "/proc/self/fd/" + std::to_string(descriptor);
}

// Whether the system knows files without a name here, and a way to give them one.
int Nameless_Open([[maybe_unused]] const std::string& folder)
{
#if defined(O_TMPFILE)
    const int file = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (file >= 0 && access(Descriptor_Path(file).c_str(), F_OK) == 0)
    {
        return file;
    }
    if (file >= 0)
    {
        close(file);
    }
#endif
    return -1;
}

// False if there is to be no more waiting.
bool Room_Wait(int descriptor, CFileWriter::StopTest isStopped)
{
    pollfd place = {descriptor, POLLOUT, 0};
    for (;;)
    {
        const int ready = poll(&place, 1, lookMs);
        if (ready > 0 || (ready < 0 && errno != EINTR))
        {
            return true; // an error is the write's to tell
        }
        if (isStopped != nullptr && isStopped())
        {
            return false;
        }
    }
}

// A write of so many bytes does not wait in a pipe that has room at all.
std::size_t Piece_Of(int descriptor)
{
    struct stat status = {};
    const bool bFile = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    return bFile ? std::size_t{1} << 30U : std::size_t{4096};
}

} // namespace

const int CFileWriter::stopped = ECANCELED;

CFileWriter::~CFileWriter()
{
    Discard();
}

int CFileWriter::Create_For(const std::string& target)
{
    if (access(target.c_str(), F_OK) == 0 && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0)
    {
        return errno;
    }
    Stale_RemoveAll(target);
    m_target = target;
    m_bOwned = true;
    m_descriptor = Nameless_Open(Folder_Of(target));
    if (m_descriptor < 0)
    {
        const int error = Create_Hidden(target);
        if (error != 0)
        {
            Discard();
            return error;
        }
    }
    flock(m_descriptor, LOCK_EX | LOCK_NB); // until it is closed: it is in the making
    const int error = Rights_Take(target);
    if (error != 0)
    {
        Discard();
    }
    return error;
}

// Somebody who looks for stale files may take it away before it is locked: then another one is made.
int CFileWriter::Create_Hidden(const std::string& target)
{
    for (;;)
    {
        m_hidden.Set(CHiddenName::Make(target));
        m_descriptor = open(m_hidden.Path().c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        const int error = errno;
        if (m_descriptor < 0)
        {
            m_hidden.Forget();
            return error;
        }
        struct stat status = {};
        if (flock(m_descriptor, LOCK_EX | LOCK_NB) != 0 || fstat(m_descriptor, &status) != 0 || status.st_nlink > 0)
        {
            return 0;
        }
        close(std::exchange(m_descriptor, -1));
    }
}

int CFileWriter::Rights_Take(const std::string& target)
{
    struct stat former = {};
    struct stat own = {};
    if (stat(target.c_str(), &former) != 0)
    {
        return errno == ENOENT ? 0 : errno;
    }
    if (fstat(m_descriptor, &own) != 0)
    {
        return errno;
    }
    const bool bOwner = own.st_uid == former.st_uid && own.st_gid == former.st_gid;
    if (!bOwner && fchown(m_descriptor, former.st_uid, former.st_gid) != 0)
    {
        return errno;
    }
    return fchmod(m_descriptor, former.st_mode & 07777U) == 0 ? 0 : errno;
}

int CFileWriter::Open_Special(const std::string& path, StopTest isStopped)
{
    for (;;)
    {
        m_descriptor = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        m_bOwned = m_descriptor >= 0;
        if (m_descriptor >= 0)
        {
            return 0;
        }
        if (errno != ENXIO && errno != EINTR)
        {
            return errno;
        }
        struct stat status = {};
        if (stat(path.c_str(), &status) != 0 || !S_ISFIFO(status.st_mode))
        {
            return ENXIO;
        }
        if (isStopped != nullptr && isStopped())
        {
            return stopped;
        }
        constexpr timespec pause = {0, 10'000'000};
        nanosleep(&pause, nullptr);
    }
}

int CFileWriter::Append_To(const std::string& path)
{
    m_descriptor = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
    m_bOwned = m_descriptor >= 0;
    return m_bOwned ? 0 : errno;
}

int CFileWriter::Write(const void* pData, std::size_t size, StopTest isStopped)
{
    const std::size_t piece = Piece_Of(m_descriptor);
    const auto* pNext = static_cast<const char*>(pData);
    while (size > 0)
    {
        if (piece == 4096 && !Room_Wait(m_descriptor, isStopped))
        {
            return stopped;
        }
        const ssize_t count = write(m_descriptor, pNext, std::min(size, piece));
        if (count < 0 && errno != EINTR && errno != EAGAIN)
        {
            return errno;
        }
        if (count > 0)
        {
            pNext += count;
            size -= static_cast<std::size_t>(count);
        }
    }
    return 0;
}

int CFileWriter::Write_At(const void* pData, std::size_t size, std::int64_t position)
{
    const auto* pNext = static_cast<const char*>(pData);
    while (size > 0)
    {
        const ssize_t count = pwrite(m_descriptor, pNext, size, position);
        if (count < 0 && errno != EINTR)
        {
            return errno;
        }
        if (count > 0)
        {
            pNext += count;
            position += count;
            size -= static_cast<std::size_t>(count);
        }
    }
    return 0;
}

int CFileWriter::Read_At(void* pData, std::size_t size, std::int64_t position, std::size_t& count)
{
    count = 0;
    while (count < size)
    {
        const ssize_t got = pread(m_descriptor, static_cast<char*>(pData) + count, size - count,
                                  position + static_cast<std::int64_t>(count));
        if (got < 0 && errno != EINTR)
        {
            return errno;
        }
        if (got == 0)
        {
            return 0;
        }
        count += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    }
    return 0;
}

int CFileWriter::Place()
{
    int error = 0;
    if (!m_target.empty())
    {
        error = Place_Named();
    }
    else if (m_bOwned)
    {
        error = close(std::exchange(m_descriptor, -1)) == 0 ? 0 : errno;
    }
    Discard();
    return error;
}

int CFileWriter::Place_Named()
{
    if (fsync(m_descriptor) != 0)
    {
        return errno;
    }
    if (!m_hidden.IsSet())
    {
        m_hidden.Set(CHiddenName::Make(m_target));
        if (linkat(AT_FDCWD, Descriptor_Path(m_descriptor).c_str(), AT_FDCWD, m_hidden.Path().c_str(),
                   AT_SYMLINK_FOLLOW) != 0)
        {
            const int error = errno;
            m_hidden.Forget();
            return error;
        }
    }
    if (rename(m_hidden.Path().c_str(), m_target.c_str()) != 0)
    {
        return errno;
    }
    m_hidden.Forget();
    return 0;
}

void CFileWriter::Discard()
{
    if (m_bOwned && m_descriptor >= 0)
    {
        close(m_descriptor);
    }
    if (m_hidden.IsSet())
    {
        unlink(m_hidden.Path().c_str());
        m_hidden.Forget();
    }
    m_descriptor = -1;
    m_bOwned = false;
    m_target.clear();
}

void CFileWriter::HiddenFiles_Remove()
{
    CHiddenName::ForEach([](const char* pPath) { unlink(pPath); });
}
