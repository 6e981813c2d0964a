// Files and standard output; what the system says of a failure becomes a text.
#include "Host/Output/ByteSink.h"

#include "Host/HostError.h"
#include "Host/Interrupt.h"
#include "Host/PathText.h"
#include "Platform/Helper/ProcessHelper.h"

#include <algorithm>
#include <cerrno>
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
        CProcessHelper::WriteSignals_Ignore();
        m_bSpecial = true;
        if (const int failed = m_writer.Open_Special(Path_Text(target), &CInterrupt::IsRequested); failed != 0)
        {
            Open_Refuse(failed);
        }
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
    if (const int failed = m_writer.Create_For(Path_Text(m_target)); failed != 0)
    {
        if (failed == EPERM && fs::exists(status))
        {
            throw CInputError(m_name + ": its owner and its access rights cannot be given to a new file; name another "
                                       "file, or take this one away");
        }
        Open_Refuse(failed);
    }
}

COutputFile::~COutputFile() = default;

void COutputFile::Open_Refuse(int error) const
{
    const std::string text = m_name + ": cannot be written: " + SystemError_Text(error);
    if (error == CFileWriter::stopped)
    {
        throw CInterruptedError(text);
    }
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
        Failure_Throw();
    }
}

bool COutputFile::TryWrite(const void* pData, std::size_t size)
{
    if (m_error != 0 || Failure_Set(m_bSpecial ? m_writer.Write(pData, size, &CInterrupt::IsRequested)
                                               : m_writer.Write_At(pData, size, m_position)))
    {
        return false;
    }
    m_position += static_cast<std::int64_t>(size);
    m_size = std::max(m_size, m_position);
    return true;
}

std::size_t COutputFile::TryRead(void* pData, std::size_t size)
{
    std::size_t count = 0;
    if (m_error != 0 || Failure_Set(m_writer.Read_At(pData, size, m_position, count)))
    {
        return 0;
    }
    m_position += static_cast<std::int64_t>(count);
    return count;
}

// True if it is one. Throws nothing: libtiff may be calling, which knows no exceptions.
bool COutputFile::Failure_Set(int error)
{
    m_error = m_error == 0 ? error : m_error;
    return error != 0;
}

std::string COutputFile::Failure_Text() const
{
    return m_error == 0 ? "" : SystemError_Text(m_error);
}

void COutputFile::Failure_Throw() const
{
    const std::string text = m_name + ": cannot be written: " + Failure_Text();
    if (m_error == CFileWriter::stopped)
    {
        throw CInterruptedError(text);
    }
    throw CRunError(text);
}

void COutputFile::Finish()
{
    if (m_error != 0)
    {
        m_writer.Discard();
        Failure_Throw();
    }
    if (const int error = m_writer.Place(); error != 0)
    {
        throw CRunError(m_name + (m_bSpecial ? ": cannot be written: " : ": cannot be completed: ") +
                        SystemError_Text(error));
    }
}

CStandardOutput::CStandardOutput(std::FILE* pStream) : m_pStream(pStream)
{
    CProcessHelper::WriteSignals_Ignore();
    CProcessHelper::StandardOutput_Binary();
    std::fflush(m_pStream);
    m_writer.Standard_Use(CProcessHelper::Descriptor_Of(m_pStream));
}

void CStandardOutput::Write(const void* pData, std::size_t size)
{
    const int error = m_writer.Write(pData, size, &CInterrupt::IsRequested);
    if (error == CFileWriter::stopped)
    {
        throw CInterruptedError(m_name + ": nobody reads it");
    }
    if (error != 0)
    {
        throw CRunError(m_name + ": cannot be written: " + SystemError_Text(error));
    }
}

void CStandardOutput::Finish() {}
