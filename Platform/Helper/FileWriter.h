// Bytes to a file, through the system's own calls: a file in the making that takes its name when it is complete, one
// that grows, or something that is there already, a device, a pipe or a standard stream.
//
// Nothing is buffered and nothing is thrown. Every operation returns 0 or the C library's error number. One thread at a
// time; a writer is told to give up waiting through the function that it is given, which may look at an atomic flag.
//
// A file in the making has no name at all where the system knows such files, so that it goes when the process goes,
// whatever ends it. Elsewhere, and for the moment before it takes its place, it has a hidden name, ".page.tif.part-"
// and sixteen hexadecimal digits. A process that is ended at that moment leaves such a file behind; the next writer for
// the same name takes it away, unless another process still has it in the making.
#pragma once

#include "Platform/Helper/HiddenName.h"
#include "Platform/PlatformExport.h"

#include <cstddef>
#include <cstdint>
#include <string>

class PLATFORM_API CFileWriter
{
public:
    using StopTest = bool (*)();

    // What an operation returns that was told to stop waiting.
    static const int stopped;

    CFileWriter() = default;
    ~CFileWriter(); // as Discard
    CFileWriter(const CFileWriter&) = delete;
    CFileWriter& operator=(const CFileWriter&) = delete;

    // Makes a new file in the folder of `target` (UTF-8), which is no link. A file of that name lends it its access
    // rights and its owner; if it may not be written to, or if these cannot be given away, that is an error.
    int Create_For(const std::string& target);

    // Opens a device or a pipe that is there. Waits for a reader of a named pipe, until `isStopped` returns true.
    int Open_Special(const std::string& path, StopTest isStopped);

    // Opens a file to write behind its end; makes it if it is not there. A pipe without a reader is an error.
    int Append_To(const std::string& path);

    // Writes to the standard output of the process, or to the descriptor of the C library's given stream.
    void Standard_Use(int descriptor) { m_descriptor = descriptor; }

    // All of the bytes behind those that were written before. Waits for a reader until `isStopped` returns true.
    int Write(const void* pData, std::size_t size, StopTest isStopped);

    // Of a file in the making. All of the bytes at `position`; as many as there are, up to `size`.
    int Write_At(const void* pData, std::size_t size, std::int64_t position);
    int Read_At(void* pData, std::size_t size, std::int64_t position, std::size_t& count);

    // Brings the file in the making to the disk and then under its name, where it replaces what was there at one
    // stroke; of anything else, closes it. After an error nothing is left of the file in the making.
    int Place();

    // Gives up the file in the making, or closes what was opened.
    void Discard();

    // Takes away the files in the making that have a hidden name, of all writers of the process. For who ends the
    // process without an end of its writers; may be called in a signal handler.
    static void HiddenFiles_Remove();

private:
    int Create_Hidden(const std::string& target);
    int Place_Named();
    int Rights_Take(const std::string& target);

    int m_descriptor = -1;
    bool m_bOwned = false;
    std::string m_target; // of the file in the making
    CHiddenName m_hidden; // its name until it takes its place; not set: it has none
};
