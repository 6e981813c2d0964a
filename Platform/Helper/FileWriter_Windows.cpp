// Files of Windows. A file in the making has a hidden name from the start: the system knows none without. Who has it in
// the making has it open and lets nobody else write to it, which tells it from one that an ended process left. A pipe
// is written to as it is: nobody waits for its reader first.
#include "Platform/Helper/FileWriter.h"

#include "Platform/Thread/CreateThread.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <io.h>
#include <random>
#include <share.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace
{

std::filesystem::path Path_Of(const std::string& utf8)
{
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

int LastError_Number()
{
    switch (GetLastError())
    {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_WRITE_PROTECT:
        return EACCES;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return ENOSPC;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
        return ENOMEM;
    case ERROR_BROKEN_PIPE:
    case ERROR_NO_DATA:
        return EPIPE;
    default:
        return EIO;
    }
}

// Opening it alone fails while somebody has it in the making; closing it takes it away.
void Stale_RemoveAll(const std::filesystem::path& target)
{
    const CHiddenName::Text stem = CHiddenName::Stem_Of(target);
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : L".";
    std::error_code error;
    for (auto entry = std::filesystem::directory_iterator(folder, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
    {
        if (CHiddenName::IsOne(entry->path().filename().native(), stem))
        {
            const HANDLE file = CreateFileW(entry->path().c_str(), GENERIC_WRITE | DELETE, 0, nullptr, OPEN_EXISTING,
                                            FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
            if (file != INVALID_HANDLE_VALUE)
            {
                CloseHandle(file);
            }
        }
    }
}

} // namespace

const int CFileWriter::stopped = ECANCELED;

CFileWriter::~CFileWriter()
{
    Discard();
}

int CFileWriter::Create_For(const std::string& target)
{
    const std::filesystem::path path = Path_Of(target);
    Stale_RemoveAll(path);
    m_target = target;
    const int error = Create_Hidden(target);
    if (error != 0)
    {
        Discard();
    }
    return error;
}

int CFileWriter::Create_Hidden(const std::string& target)
{
    const std::filesystem::path path = CHiddenName::Make(Path_Of(target));
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return LastError_Number();
    }
    m_hidden.Set(path);
    m_descriptor = _open_osfhandle(reinterpret_cast<std::intptr_t>(file), _O_RDWR | _O_BINARY);
    m_bOwned = true;
    if (m_descriptor < 0)
    {
        CloseHandle(file);
        return EMFILE;
    }
    return 0;
}

// Rights and owner stay those of the file that is replaced: see Place_Named.
int CFileWriter::Rights_Take(const std::string& /*target*/)
{
    return 0;
}

int CFileWriter::Open_Special(const std::string& path, StopTest /*isStopped*/)
{
    const int error =
        _wsopen_s(&m_descriptor, Path_Of(path).c_str(), _O_WRONLY | _O_BINARY, _SH_DENYNO, _S_IREAD | _S_IWRITE);
    m_bOwned = error == 0;
    return error;
}

int CFileWriter::Append_To(const std::string& path)
{
    const int error = _wsopen_s(&m_descriptor, Path_Of(path).c_str(), _O_WRONLY | _O_APPEND | _O_CREAT | _O_BINARY,
                                _SH_DENYNO, _S_IREAD | _S_IWRITE);
    m_bOwned = error == 0;
    return error;
}

int CFileWriter::Write(const void* pData, std::size_t size, StopTest /*isStopped*/)
{
    constexpr std::size_t piece = std::size_t{1} << 20U;
    const auto* pNext = static_cast<const char*>(pData);
    while (size > 0)
    {
        const int count = _write(m_descriptor, pNext, static_cast<unsigned>(std::min(size, piece)));
        if (count <= 0)
        {
            return count < 0 ? errno : ENOSPC; // less than it was asked for: there is no room
        }
        pNext += count;
        size -= static_cast<std::size_t>(count);
    }
    return 0;
}

int CFileWriter::Write_At(const void* pData, std::size_t size, std::int64_t position)
{
    return _lseeki64(m_descriptor, position, SEEK_SET) < 0 ? errno : Write(pData, size, nullptr);
}

int CFileWriter::Read_At(void* pData, std::size_t size, std::int64_t position, std::size_t& count)
{
    constexpr std::size_t piece = std::size_t{1} << 20U;
    count = 0;
    if (_lseeki64(m_descriptor, position, SEEK_SET) < 0)
    {
        return errno;
    }
    while (count < size)
    {
        const int got = _read(m_descriptor, static_cast<char*>(pData) + count,
                              static_cast<unsigned>(std::min(size - count, piece)));
        if (got < 0)
        {
            return errno;
        }
        if (got == 0)
        {
            break;
        }
        count += static_cast<std::size_t>(got);
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
        error = _close(std::exchange(m_descriptor, -1)) == 0 ? 0 : errno;
    }
    Discard();
    return error;
}

// A file that is replaced hands its access rights on.
int CFileWriter::Place_Named()
{
    if (_commit(m_descriptor) != 0 || _close(std::exchange(m_descriptor, -1)) != 0)
    {
        return errno;
    }
    const std::filesystem::path hidden = m_hidden.Path();
    const std::filesystem::path target = Path_Of(m_target);
    const bool bPlaced =
        ReplaceFileW(target.c_str(), hidden.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr) != 0 ||
        MoveFileExW(hidden.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    if (!bPlaced)
    {
        return LastError_Number();
    }
    m_hidden.Forget();
    return 0;
}

void CFileWriter::Discard()
{
    if (m_bOwned && m_descriptor >= 0)
    {
        _close(m_descriptor);
    }
    if (m_hidden.IsSet())
    {
        DeleteFileW(m_hidden.Path().c_str());
        m_hidden.Forget();
    }
    m_descriptor = -1;
    m_bOwned = false;
    m_target.clear();
}

// A file that is open is gone when it is closed, at the latest with the process.
void CFileWriter::HiddenFiles_Remove()
{
    CHiddenName::ForEach([](const wchar_t* pPath) { DeleteFileW(pPath); });
}
