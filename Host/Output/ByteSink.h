// Where a writer's bytes go: a file that appears under its name only when it is complete, or standard output. One
// thread at a time; nothing here knows what the bytes mean. Who has to wait for the reader of a pipe looks for an
// interrupt meanwhile.
#pragma once

#include "Platform/Helper/FileWriter.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

class CByteSink
{
public:
    virtual ~CByteSink() = default;

    // Throws CRunError, with the name and the system's reason, if the bytes cannot be written; CInterruptedError if the
    // user did not want to wait for that.
    virtual void Write(const void* pData, std::size_t size) = 0;

    // All bytes are written: makes the result complete. Throws CRunError. Once, as the last call.
    virtual void Finish() = 0;

    // For messages: the file as the command line named it.
    virtual const std::string& Name() const = 0;
};

// What to do where the name belongs to a device or a pipe.
enum class ESpecialFile
{
    Refuse,
    WriteInPlace, // straight into it: no temporary file, no seeking; a pipe's reader that goes away fails a write
};

// A file in the making. The bytes go to a temporary file in the same folder, without a name or with a hidden one (see
// CFileWriter), which takes the place of the target in Finish, when its bytes are on the disk. Without Finish nothing
// is left of it, and a target that was there before stays as it was. One that is replaced hands on its access rights
// and its owner. A target that is a symbolic link stays one; the file that it names is replaced.
class COutputFile : public CByteSink
{
public:
    // Throws CInputError if the target cannot be a file: it is a folder, its folder is missing or may not be written
    // to, it is write-protected itself; CRunError if the system fails otherwise; CInterruptedError as Write does.
    COutputFile(const std::filesystem::path& target, ESpecialFile specialFile);
    ~COutputFile() override;
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    void Write(const void* pData, std::size_t size) override;
    void Finish() override;
    const std::string& Name() const override { return m_name; }

    // The same file for a library that wants to move about in it and must not see exceptions. False, or fewer bytes: it
    // failed; Failure_Text says why.
    bool TryWrite(const void* pData, std::size_t size);
    std::size_t TryRead(void* pData, std::size_t size);
    void Position_Set(std::int64_t position) { m_position = position; }
    std::int64_t Position() const { return m_position; }
    std::int64_t Size() const { return m_size; }

    // The system's reason for the first failure; empty if there was none.
    std::string Failure_Text() const;

private:
    [[noreturn]] void Open_Refuse(int error) const;
    bool Failure_Set(int error);
    [[noreturn]] void Failure_Throw() const;

    std::string m_name;
    std::filesystem::path m_target; // with links followed
    CFileWriter m_writer;
    bool m_bSpecial = false;
    std::int64_t m_position = 0; // where the next action takes place
    std::int64_t m_size = 0;
    int m_error = 0; // the first that the system told; 0: none
};

// Standard output as a stream of bytes.
class CStandardOutput : public CByteSink
{
public:
    // From here on a reader that goes away makes a write fail instead of ending the process. `pStream` stands in for
    // standard output in tests; it stays the caller's.
    explicit CStandardOutput(std::FILE* pStream = stdout);

    void Write(const void* pData, std::size_t size) override;
    void Finish() override;
    const std::string& Name() const override { return m_name; }

private:
    std::string m_name = "standard output";
    std::FILE* m_pStream;
    CFileWriter m_writer;
};
