// A library that is loaded before all others (LD_PRELOAD) and lets one of a program's calls to the system fail.
//
// It stands in front of the C library's allocation, thread and file functions and counts the calls of each kind from
// the first line of main on; what runs before that is the loader's and the libraries' own, and no program can answer
// for it. Nothing fails unless FAULT says so:
//
//   FAULT="KIND FIRST [COUNT [ERRNO]]"  the FIRSTth call (from 1) of this kind fails, and COUNT - 1 more after it
//                                       (1; 0: all that follow), with this number in errno (what suits the kind)
//   FAULT_REPORT=FILE                   a line "KIND CALLS" for each kind is written there when the program exits
//   FAULT_TRACE=1                       the stack of the call that fails is shown on standard error
//
// Kinds: memory, thread, map, open, read, write, part (a read or a write does less than it was asked for, which is no
// failure), seek, rename, link, close, sync, truncate, owner (its owner or its access rights are set). A file that is
// closed is closed, whatever the caller is told. Writes to standard error neither fail nor count: they are how a
// program tells of a failure. For glibc.
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

extern "C"
{
    void* __libc_malloc(std::size_t);
    void* __libc_calloc(std::size_t, std::size_t);
    void* __libc_realloc(void*, std::size_t);
    void* __libc_memalign(std::size_t, std::size_t);
}

namespace
{

enum EKind
{
    Kind_Memory,
    Kind_Thread,
    Kind_Map,
    Kind_Open,
    Kind_Read,
    Kind_Write,
    Kind_Part,
    Kind_Seek,
    Kind_Rename,
    Kind_Link,
    Kind_Close,
    Kind_Sync,
    Kind_Truncate,
    Kind_Owner,
    Kind_Count,
};

struct SKind
{
    const char* m_pName;
    int m_errno; // what a real failure is most likely to say
};

constexpr std::array<SKind, Kind_Count> kinds = {{{"memory", ENOMEM},
                                                  {"thread", EAGAIN},
                                                  {"map", ENOMEM},
                                                  {"open", EMFILE},
                                                  {"read", EIO},
                                                  {"write", ENOSPC},
                                                  {"part", 0},
                                                  {"seek", EIO},
                                                  {"rename", EIO},
                                                  {"link", EIO},
                                                  {"close", EIO},
                                                  {"sync", EIO},
                                                  {"truncate", EIO},
                                                  {"owner", EPERM}}};

std::array<std::atomic<long>, Kind_Count> g_calls;
std::atomic<bool> g_bCounting{false};
int g_kind = -1; // that fails; -1: none
long g_first = 0;
long g_last = 0;
int g_errno = 0;
bool g_bTrace = false;
int (*g_pMain)(int, char**, char**) = nullptr;

// The next library's function of this name.
template<class TFunction>
TFunction* Next(TFunction* /*type*/, const char* pName)
{
    return reinterpret_cast<TFunction*>(dlsym(RTLD_NEXT, pName));
}

void Trace_Show()
{
    static std::atomic<bool> bBusy{false}; // what is shown allocates, too
    if (!g_bTrace || bBusy.exchange(true))
    {
        return;
    }
    g_bCounting = false;
    std::array<void*, 64> frames = {};
    backtrace_symbols_fd(frames.data(), backtrace(frames.data(), static_cast<int>(frames.size())), 2);
    g_bCounting = true;
    bBusy = false;
}

// Counts the call; true if it is one that fails, with errno set.
bool IsFault(EKind kind)
{
    if (!g_bCounting)
    {
        return false;
    }
    const long call = ++g_calls[kind];
    if (kind != g_kind || call < g_first || call > g_last)
    {
        return false;
    }
    Trace_Show();
    errno = g_errno;
    return true;
}

// Less than `size`, if this is the call; at least one byte, so that it is not the end of the file.
std::size_t Part_Of(std::size_t size)
{
    return size > 1 && IsFault(Kind_Part) ? (size + 1) / 2 : size;
}

void Fault_Read()
{
    const char* pFault = std::getenv("FAULT");
    g_bTrace = std::getenv("FAULT_TRACE") != nullptr;
    if (pFault == nullptr)
    {
        return;
    }
    std::array<char, 16> name = {};
    long count = 1;
    int number = -1;
    std::sscanf(pFault, "%15s %ld %ld %d", name.data(), &g_first, &count, &number);
    for (int i = 0; i < Kind_Count; ++i)
    {
        if (std::strcmp(kinds[static_cast<std::size_t>(i)].m_pName, name.data()) == 0)
        {
            g_kind = i;
            g_errno = number >= 0 ? number : kinds[static_cast<std::size_t>(i)].m_errno;
        }
    }
    g_last = count == 0 ? LONG_MAX : g_first + count - 1;
    if (g_kind < 0)
    {
        std::fprintf(stderr, "FAULT: there is no kind %s\n", name.data());
        std::_Exit(99);
    }
}

void Report_Write()
{
    g_bCounting = false;
    const char* pReport = std::getenv("FAULT_REPORT");
    if (pReport == nullptr)
    {
        return;
    }
    const int file = static_cast<int>(syscall(SYS_openat, AT_FDCWD, pReport, O_WRONLY | O_CREAT | O_TRUNC, 0666));
    for (std::size_t i = 0; i < kinds.size(); ++i)
    {
        std::array<char, 48> line = {};
        const int length = std::snprintf(line.data(), line.size(), "%s %ld\n", kinds[i].m_pName, g_calls[i].load());
        syscall(SYS_write, file, line.data(), static_cast<std::size_t>(length));
    }
    syscall(SYS_close, file);
}

int Main_Counted(int count, char** arguments, char** environment)
{
    Fault_Read();
    std::atexit(&Report_Write);
    g_bCounting = true;
    return g_pMain(count, arguments, environment);
}

} // namespace

extern "C"
{

    int __libc_start_main(int (*pMain)(int, char**, char**), int count, char** arguments, void (*pInit)(),
                          void (*pFini)(), void (*pLoaderFini)(), void* pStackEnd)
    {
        g_pMain = pMain;
        return Next(&__libc_start_main, "__libc_start_main")(&Main_Counted, count, arguments, pInit, pFini, pLoaderFini,
                                                             pStackEnd);
    }

    // Memory.

    void* malloc(std::size_t size)
    {
        return IsFault(Kind_Memory) ? nullptr : __libc_malloc(size);
    }

    void* calloc(std::size_t count, std::size_t size)
    {
        return IsFault(Kind_Memory) ? nullptr : __libc_calloc(count, size);
    }

    void* realloc(void* block, std::size_t size)
    {
        return IsFault(Kind_Memory) ? nullptr : __libc_realloc(block, size);
    }

    void* memalign(std::size_t alignment, std::size_t size)
    {
        return IsFault(Kind_Memory) ? nullptr : __libc_memalign(alignment, size);
    }

    void* aligned_alloc(std::size_t alignment, std::size_t size)
    {
        return memalign(alignment, size);
    }

    int posix_memalign(void** pBlock, std::size_t alignment, std::size_t size)
    {
        const int former = errno;
        *pBlock = memalign(alignment, size);
        errno = former;
        return *pBlock == nullptr ? ENOMEM : 0;
    }

    void* mmap(void* address, std::size_t size, int protection, int flags, int file, off_t offset)
    {
        return IsFault(Kind_Map) ? MAP_FAILED : Next(&mmap, "mmap")(address, size, protection, flags, file, offset);
    }

    void* mmap64(void* address, std::size_t size, int protection, int flags, int file, off64_t offset)
    {
        return mmap(address, size, protection, flags, file, offset);
    }

    // Threads.

    int pthread_create(pthread_t* pThread, const pthread_attr_t* pAttributes, void* (*pStart)(void*), void* argument)
    {
        return IsFault(Kind_Thread) ? g_errno
                                    : Next(&pthread_create, "pthread_create")(pThread, pAttributes, pStart, argument);
    }

    // Files.

    int openat(int folder, const char* pPath, int flags, ...)
    {
        va_list arguments;
        va_start(arguments, flags);
        const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
        va_end(arguments);
        return IsFault(Kind_Open) ? -1 : static_cast<int>(syscall(SYS_openat, folder, pPath, flags, mode));
    }

    int open(const char* pPath, int flags, ...)
    {
        va_list arguments;
        va_start(arguments, flags);
        const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
        va_end(arguments);
        return openat(AT_FDCWD, pPath, flags, mode);
    }

    int open64(const char* pPath, int flags, ...)
    {
        va_list arguments;
        va_start(arguments, flags);
        const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
        va_end(arguments);
        return openat(AT_FDCWD, pPath, flags, mode);
    }

    int openat64(int folder, const char* pPath, int flags, ...)
    {
        va_list arguments;
        va_start(arguments, flags);
        const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
        va_end(arguments);
        return openat(folder, pPath, flags, mode);
    }

    std::FILE* fopen(const char* pPath, const char* pMode)
    {
        return IsFault(Kind_Open) ? nullptr : Next(&fopen, "fopen")(pPath, pMode);
    }

    std::FILE* fopen64(const char* pPath, const char* pMode)
    {
        return IsFault(Kind_Open) ? nullptr : Next(&fopen, "fopen64")(pPath, pMode);
    }

    ssize_t read(int file, void* data, std::size_t size)
    {
        return IsFault(Kind_Read) ? -1 : Next(&read, "read")(file, data, Part_Of(size));
    }

    ssize_t pread(int file, void* data, std::size_t size, off_t offset)
    {
        return IsFault(Kind_Read) ? -1 : Next(&pread, "pread")(file, data, Part_Of(size), offset);
    }

    ssize_t pread64(int file, void* data, std::size_t size, off64_t offset)
    {
        return pread(file, data, size, offset);
    }

    std::size_t fread(void* data, std::size_t size, std::size_t count, std::FILE* stream)
    {
        return IsFault(Kind_Read) ? 0 : Next(&fread, "fread")(data, size, count, stream);
    }

    ssize_t write(int file, const void* data, std::size_t size)
    {
        if (file == 2)
        {
            return Next(&write, "write")(file, data, size);
        }
        return IsFault(Kind_Write) ? -1 : Next(&write, "write")(file, data, Part_Of(size));
    }

    ssize_t pwrite(int file, const void* data, std::size_t size, off_t offset)
    {
        return IsFault(Kind_Write) ? -1 : Next(&pwrite, "pwrite")(file, data, Part_Of(size), offset);
    }

    ssize_t pwrite64(int file, const void* data, std::size_t size, off64_t offset)
    {
        return pwrite(file, data, size, offset);
    }

    ssize_t writev(int file, const iovec* parts, int count)
    {
        if (file == 2)
        {
            return Next(&writev, "writev")(file, parts, count);
        }
        return IsFault(Kind_Write) ? -1 : Next(&writev, "writev")(file, parts, count);
    }

    std::size_t fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* stream)
    {
        return stream != stderr && IsFault(Kind_Write) ? 0 : Next(&fwrite, "fwrite")(data, size, count, stream);
    }

    int fflush(std::FILE* stream)
    {
        return stream != stderr && IsFault(Kind_Write) ? EOF : Next(&fflush, "fflush")(stream);
    }

    off_t lseek(int file, off_t offset, int whence)
    {
        return IsFault(Kind_Seek) ? -1 : Next(&lseek, "lseek")(file, offset, whence);
    }

    off64_t lseek64(int file, off64_t offset, int whence)
    {
        return lseek(file, offset, whence);
    }

    int rename(const char* pFrom, const char* pTo)
    {
        return IsFault(Kind_Rename) ? -1 : Next(&rename, "rename")(pFrom, pTo);
    }

    int link(const char* pFrom, const char* pTo)
    {
        return IsFault(Kind_Link) ? -1 : Next(&link, "link")(pFrom, pTo);
    }

    int linkat(int fromFolder, const char* pFrom, int toFolder, const char* pTo, int flags)
    {
        return IsFault(Kind_Link) ? -1 : Next(&linkat, "linkat")(fromFolder, pFrom, toFolder, pTo, flags);
    }

    int close(int file)
    {
        const bool bFault = IsFault(Kind_Close);
        const int result = Next(&close, "close")(file);
        errno = bFault ? g_errno : errno;
        return bFault ? -1 : result;
    }

    int fclose(std::FILE* stream)
    {
        const bool bFault = IsFault(Kind_Close);
        const int result = Next(&fclose, "fclose")(stream);
        errno = bFault ? g_errno : errno;
        return bFault ? EOF : result;
    }

    int fsync(int file)
    {
        return IsFault(Kind_Sync) ? -1 : Next(&fsync, "fsync")(file);
    }

    int fdatasync(int file)
    {
        return IsFault(Kind_Sync) ? -1 : Next(&fdatasync, "fdatasync")(file);
    }

    int ftruncate(int file, off_t size)
    {
        return IsFault(Kind_Truncate) ? -1 : Next(&ftruncate, "ftruncate")(file, size);
    }

    int ftruncate64(int file, off64_t size)
    {
        return ftruncate(file, size);
    }

    int fchown(int file, uid_t owner, gid_t group)
    {
        return IsFault(Kind_Owner) ? -1 : Next(&fchown, "fchown")(file, owner, group);
    }

    int fchmod(int file, mode_t mode)
    {
        return IsFault(Kind_Owner) ? -1 : Next(&fchmod, "fchmod")(file, mode);
    }
}
