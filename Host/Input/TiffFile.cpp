// Opening a TIFF file and catching what libtiff says; see the header.
#include "Host/Input/TiffFile.h"

#include "Host/HostError.h"
#include "Host/InputFile.h"
#include "Host/PathText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <limits>
#include <new>
#include <string_view>
#include <utility>

namespace
{

// One line of printable characters, whatever a damaged file made libtiff quote.
std::string Message_Format(const char* format, va_list arguments)
{
    std::array<char, 512> text = {};
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    std::string message = length < 0 ? format : text.data();
    std::replace_if(
        message.begin(), message.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    while (!message.empty() && (message.back() == '.' || message.back() == ' ' || message.back() == '?'))
    {
        message.pop_back();
    }
    return message;
}

void KeepFirst(std::string& kept, const char* format, va_list arguments) noexcept
{
    try
    {
        kept = kept.empty() ? Message_Format(format, arguments) : kept;
    }
    catch (const std::bad_alloc&)
    {
    }
}

// Where libtiff has no memory for one more tag it has counted it already, and goes on to walk over the end of its list:
// nothing but the end of the process keeps it from that.
void ListOfTags_Check(std::string_view format) noexcept
{
    if (format.find("list of custom values") == std::string_view::npos)
    {
        return;
    }
    try
    {
        throw std::bad_alloc();
    }
    catch (const std::bad_alloc&)
    {
        std::terminate(); // which says what was thrown
    }
}

struct SOptionsFree
{
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

} // namespace

CTiffFile::CTiffFile(std::string path, std::int64_t maxBlockBytes) : m_path(std::move(path))
{
    File_Open();
    Tiff_Open(maxBlockBytes);
}

void CTiffFile::File_Open()
{
    m_stream = InputFile_Open(Path_FromText(m_path), "TIFF file");
    m_stream.seekg(0, std::ios::end);
    const std::streamoff size = m_stream ? std::streamoff(m_stream.tellg()) : std::streamoff(-1);
    if (size < 0)
    {
        m_readError = SystemError_Text(errno);
        Fail("its size is unknown");
    }
    m_size = static_cast<std::uint64_t>(size);
    m_streamPosition = m_size;
    if (m_size == 0)
    {
        Fail("the file is empty");
    }
}

void CTiffFile::Tiff_Open(std::int64_t maxBlockBytes)
{
    if (!HasTiffMark())
    {
        Fail("this is not a TIFF file");
    }
    const std::unique_ptr<TIFFOpenOptions, SOptionsFree> options(TIFFOpenOptionsAlloc());
    if (options == nullptr)
    {
        throw std::bad_alloc();
    }
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), &CTiffFile::Error_Keep, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), &CTiffFile::Warning_Keep, this);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(maxBlockBytes));
    // r: read; m: no memory mapping; c: strips as the file has them, none cut up.
    m_tiff.reset(TIFFClientOpenExt(m_path.c_str(), "rmc", this, &CTiffFile::Client_Read, &CTiffFile::Client_Write,
                                   &CTiffFile::Client_Seek, &CTiffFile::Client_Close, &CTiffFile::Client_Size, nullptr,
                                   nullptr, options.get()));
    if (m_tiff == nullptr)
    {
        Fail_WithMessage("the TIFF header cannot be read (damaged or truncated)");
    }
    if (!m_readError.empty())
    {
        Fail("a tag is missing"); // libtiff goes on without what it could not read
    }
}

bool CTiffFile::HasTiffMark()
{
    std::array<unsigned char, 4> mark = {};
    if (Bytes_Read(0, mark.data(), mark.size()) != mark.size())
    {
        return false;
    }
    const std::string_view text(reinterpret_cast<const char*>(mark.data()), mark.size());
    using namespace std::string_view_literals;
    return text == "II*\0"sv || text == "MM\0*"sv || text == "II+\0"sv || text == "MM\0+"sv;
}

std::size_t CTiffFile::Bytes_Read(std::uint64_t position, unsigned char* bytes, std::size_t count)
{
    if (position >= m_size)
    {
        return 0;
    }
    m_stream.clear();
    errno = 0;
    if (position != m_streamPosition)
    {
        m_stream.seekg(static_cast<std::streamoff>(position));
    }
    const bool bThere = m_stream.good();
    m_stream.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(count));
    if (!bThere || m_stream.bad())
    {
        m_readError = SystemError_Text(errno);
    }
    const auto got = static_cast<std::size_t>(m_stream.gcount());
    m_streamPosition = position + got;
    return got;
}

void CTiffFile::Messages_Clear()
{
    m_firstError.clear();
    m_firstWarning.clear();
    m_readError.clear();
}

void CTiffFile::Fail(const std::string& what, const std::string& where) const
{
    const std::string text = m_readError.empty() ? what : "cannot be read: " + m_readError;
    throw CInputError({SMistake{false, m_path, {0, 0}, "file", where + (where.empty() ? "" : " ") + text, ""}});
}

void CTiffFile::Fail_WithMessage(const std::string& what, const std::string& where) const
{
    const std::string& message = m_firstError.empty() ? m_firstWarning : m_firstError;
    Fail(message.empty() ? what : what + ": " + message, where);
}

tmsize_t CTiffFile::Client_Read(thandle_t file, void* bytes, tmsize_t count)
{
    auto* self = static_cast<CTiffFile*>(file);
    const std::size_t got = self->Bytes_Read(self->m_clientPosition, static_cast<unsigned char*>(bytes),
                                             static_cast<std::size_t>(std::max<tmsize_t>(count, 0)));
    self->m_clientPosition += got;
    return static_cast<tmsize_t>(got);
}

tmsize_t CTiffFile::Client_Write(thandle_t, void*, tmsize_t)
{
    return -1;
}

toff_t CTiffFile::Client_Seek(thandle_t file, toff_t offset, int whence)
{
    auto* self = static_cast<CTiffFile*>(file);
    // Unsigned on purpose: a step back arrives as a number that wraps around.
    const std::uint64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? self->m_clientPosition : self->m_size;
    const std::uint64_t position = base + offset;
    if (position > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
    {
        return static_cast<toff_t>(-1);
    }
    self->m_clientPosition = position;
    return position;
}

int CTiffFile::Client_Close(thandle_t)
{
    return 0;
}

toff_t CTiffFile::Client_Size(thandle_t file)
{
    return static_cast<CTiffFile*>(file)->m_size;
}

// Both return 1: dealt with, so that libtiff's process-wide handlers, which print, are not called. Nothing may be
// thrown through its frames, which are C: where there is no memory for the message, it is left out.
int CTiffFile::Error_Keep(TIFF*, void* file, const char*, const char* format, va_list arguments)
{
    ListOfTags_Check(format);
    KeepFirst(static_cast<CTiffFile*>(file)->m_firstError, format, arguments);
    return 1;
}

int CTiffFile::Warning_Keep(TIFF*, void* file, const char*, const char* format, va_list arguments)
{
    KeepFirst(static_cast<CTiffFile*>(file)->m_firstWarning, format, arguments);
    return 1;
}
