// One TIFF file open for reading, with everything that libtiff says about it kept inside.
//
// Used by the separation reader alone, on the reader's thread. libtiff reads through this object's own stream, so a
// path is UTF-8 on every system, nothing is mapped into memory, and the same stream can be read past libtiff. libtiff
// never writes to standard error on behalf of such a file: its first error and first warning are kept for the reader to
// judge.
#pragma once

#include <tiffio.h>

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

class CTiffFile
{
public:
    // Opens the file at `path` (UTF-8) at its first page. No single piece of memory that libtiff asks for may be larger
    // than `maxBlockBytes`. Throws CInputError if there is no such file, it cannot be read, or it is no TIFF file.
    CTiffFile(std::string path, std::int64_t maxBlockBytes);
    CTiffFile(const CTiffFile&) = delete;
    CTiffFile& operator=(const CTiffFile&) = delete;
    ~CTiffFile() = default;

    TIFF* Handle() const { return m_tiff.get(); }
    std::uint64_t Size() const { return m_size; } // bytes

    // Reads up to `count` bytes from `position` on; returns how many there were. Moves nothing that libtiff relies on.
    std::size_t Bytes_Read(std::uint64_t position, unsigned char* bytes, std::size_t count);

    // What libtiff has said since the last Messages_Clear; empty if nothing.
    const std::string& FirstError() const { return m_firstError; }
    const std::string& FirstWarning() const { return m_firstWarning; }
    const std::string& ReadError() const { return m_readError; } // the system's reason why bytes could not be read
    void Messages_Clear();

    // Throws the CInputError "<path>: <where> <what>". Where bytes could not be read since Messages_Clear it says that,
    // with the system's reason, in place of `what`: what is missing is then no fault of the file's.
    [[noreturn]] void Fail(const std::string& what, const std::string& where = "") const;
    // The same, followed by why: libtiff's first error, or else its first warning.
    [[noreturn]] void Fail_WithMessage(const std::string& what, const std::string& where = "") const;

private:
    struct SCloser
    {
        void operator()(TIFF* tiff) const { TIFFClose(tiff); }
    };

    void File_Open();
    void Tiff_Open(std::int64_t maxBlockBytes);
    bool HasTiffMark();

    // What libtiff calls; `file` is the CTiffFile.
    static tmsize_t Client_Read(thandle_t file, void* bytes, tmsize_t count);
    static tmsize_t Client_Write(thandle_t file, void* bytes, tmsize_t count);
    static toff_t Client_Seek(thandle_t file, toff_t offset, int whence);
    static int Client_Close(thandle_t file);
    static toff_t Client_Size(thandle_t file);
    static int Error_Keep(TIFF* tiff, void* file, const char* module, const char* format, va_list arguments);
    static int Warning_Keep(TIFF* tiff, void* file, const char* module, const char* format, va_list arguments);

    std::string m_path;
    std::ifstream m_stream;
    std::uint64_t m_size = 0;
    std::uint64_t m_streamPosition = 0; // where m_stream stands
    std::uint64_t m_clientPosition = 0; // where libtiff believes that it stands
    std::string m_firstError;
    std::string m_firstWarning;
    std::string m_readError;
    std::unique_ptr<TIFF, SCloser> m_tiff; // last: closing it still reads the members above
};
