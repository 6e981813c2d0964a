// Files and standard output, through the C++ and C libraries; errno is read for the reason of a failure, since their
// streams keep none.
#include "Host/Output/ByteSink.h"

#include "Host/HostError.h"
#include "Host/PathText.h"
#include "Platform/Helper/ProcessHelper.h"

#include <algorithm>
#include <cerrno>
#include <random>
#include <system_error>

namespace fs = std::filesystem;

namespace
{

std::string SystemError_Text(int error)
{
    return error == 0 ? "it failed" : std::generic_category().message(error);
}

// Follows the links at the end of a path, also when the file that they name is yet to be made.
fs::path Links_Follow(fs::path path)
{
    constexpr int mostLinks = 40;
    std::error_code error;
    for (int i = 0; i < mostLinks && fs::is_symlink(path, error); ++i)
    {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
}

std::string RandomDigits()
{
    constexpr std::string_view digits = "0123456789abcdef";
    constexpr int digitCount = 16;
    std::random_device device;
    std::uniform_int_distribution<std::size_t> choice(0, digits.size() - 1);
    std::string text;
    for (int i = 0; i < digitCount; ++i)
    {
        text += digits[choice(device)];
    }
    return text;
}

fs::path TemporaryName(const fs::path& target)
{
    // A name that is nearly as long as a name may be leaves no room for another part.
    constexpr std::size_t longestName = 200;
    const fs::path name = target.filename();
    fs::path temporary = ".";
    temporary += name.native().size() <= longestName ? name : fs::path("boards");
    temporary += ".part-" + RandomDigits();
    return target.parent_path() / temporary;
}

// Whether a failed open is the fault of the name that the user gave.
bool IsNameError(int error)
{
    constexpr int errors[] = {EACCES, EPERM, EROFS, ENOENT, ENOTDIR, EISDIR, ENAMETOOLONG, EINVAL, ELOOP};
    return std::find(std::begin(errors), std::end(errors), error) != std::end(errors);
}

} // namespace

COutputFile::COutputFile(const fs::path& target, ESpecialFile specialFile)
    : m_name(Path_Text(target)), m_target(Links_Follow(target))
{
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (fs::is_directory(status) || !target.has_filename())
    {
        throw CInputError(m_name + ": is a folder; give the name of a file");
    }
    if (fs::exists(status) && !fs::is_regular_file(status))
    {
        if (specialFile == ESpecialFile::Refuse)
        {
            throw CInputError(m_name + ": is a device or a pipe; this format needs a regular file");
        }
        m_target = target;
        Open_InPlace();
        return;
    }
    // Replacing a file asks nothing of the file itself; who took away its owner's leave to write meant to keep it.
    if (fs::exists(status) && (status.permissions() & fs::perms::owner_write) == fs::perms::none)
    {
        throw CInputError(m_name + ": is write-protected; name another file, or allow writing to it");
    }
    const fs::path folder = m_target.has_parent_path() ? m_target.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, error))
    {
        throw CInputError(m_name + ": there is no folder " + Path_Shown(folder));
    }
    Open_Temporary();
}

COutputFile::~COutputFile()
{
    Temporary_Remove();
}

void COutputFile::Open_InPlace()
{
    CProcessHelper::WriteSignals_Ignore();
    errno = 0;
    if (m_buffer.open(m_target, std::ios::out | std::ios::binary) == nullptr)
    {
        Open_Refuse(errno);
    }
}

void COutputFile::Open_Temporary()
{
    const fs::path temporary = TemporaryName(m_target);
    errno = 0;
    if (m_buffer.open(temporary, std::ios::in | std::ios::out | std::ios::trunc | std::ios::binary) == nullptr)
    {
        Open_Refuse(errno);
    }
    m_temporary = temporary;
}

void COutputFile::Open_Refuse(int error)
{
    const std::string text = m_name + ": cannot be written: " + SystemError_Text(error);
    if (IsNameError(error))
    {
        throw CInputError(text);
    }
    throw CRunError(text);
}

void COutputFile::Write(const void* pData, std::size_t size)
{
    if (!TryWrite(pData, size))
    {
        throw CRunError(m_name + ": cannot be written: " + m_failure);
    }
}

bool COutputFile::TryWrite(const void* pData, std::size_t size)
{
    errno = 0;
    const auto count = static_cast<std::streamsize>(size);
    if (!m_failure.empty() || !Position_Reach(ELastAction::Write) ||
        m_buffer.sputn(static_cast<const char*>(pData), count) != count)
    {
        Failure_Set();
        return false;
    }
    m_position += count;
    m_bufferPosition = m_position;
    m_size = std::max(m_size, m_position);
    return true;
}

std::size_t COutputFile::TryRead(void* pData, std::size_t size)
{
    errno = 0;
    if (!m_failure.empty() || !Position_Reach(ELastAction::Read))
    {
        Failure_Set();
        return 0;
    }
    const std::streamsize count = m_buffer.sgetn(static_cast<char*>(pData), static_cast<std::streamsize>(size));
    m_position += count;
    m_bufferPosition = m_position;
    return static_cast<std::size_t>(count);
}

// Moves the buffer to m_position where it is not; a buffer also has to be told between reading and writing.
bool COutputFile::Position_Reach(ELastAction action)
{
    const bool bTurn = m_lastAction != ELastAction::None && m_lastAction != action;
    m_lastAction = action;
    if (m_bufferPosition == m_position && !bTurn)
    {
        return true;
    }
    m_bufferPosition = m_position;
    return m_buffer.pubseekpos(m_position) == std::filebuf::pos_type(m_position);
}

void COutputFile::Failure_Set()
{
    if (m_failure.empty())
    {
        m_failure = SystemError_Text(errno);
    }
}

void COutputFile::Finish()
{
    errno = 0;
    if (m_buffer.pubsync() != 0 || m_buffer.close() == nullptr)
    {
        Failure_Set();
    }
    if (!m_failure.empty())
    {
        Temporary_Remove();
        throw CRunError(m_name + ": cannot be written: " + m_failure);
    }
    if (m_temporary.empty())
    {
        return;
    }
    std::error_code error;
    fs::rename(m_temporary, m_target, error);
    if (error)
    {
        Temporary_Remove();
        throw CRunError(m_name + ": cannot be replaced: " + error.message());
    }
    m_temporary.clear();
}

void COutputFile::Temporary_Remove()
{
    m_buffer.close();
    if (!m_temporary.empty())
    {
        std::error_code error;
        fs::remove(m_temporary, error);
        m_temporary.clear();
    }
}

CStandardOutput::CStandardOutput(std::FILE* pStream) : m_pStream(pStream)
{
    CProcessHelper::WriteSignals_Ignore();
    CProcessHelper::StandardOutput_Binary();
}

void CStandardOutput::Write(const void* pData, std::size_t size)
{
    errno = 0;
    if (std::fwrite(pData, 1, size, m_pStream) != size)
    {
        Failure_Throw();
    }
}

void CStandardOutput::Finish()
{
    errno = 0;
    if (std::fflush(m_pStream) != 0)
    {
        Failure_Throw();
    }
}

void CStandardOutput::Failure_Throw() const
{
    throw CRunError(m_name + ": cannot be written: " + SystemError_Text(errno));
}
