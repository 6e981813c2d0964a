// Reads board files back, whichever of the two formats and versions they have: band by band, with one band in memory.
// What `info`, `verify` and `explain` look at outputs through. A reader trusts no file: a size is held against the file
// before memory is taken for it, and what is wrong is said with its place, what was found and what would be right.
// After damage it can look for the next band that is sound. One thread at a time.
#pragma once

#include "Host/Board/BoardInfo.h"
#include "Host/HostError.h"
#include "Platform/BandData/BandData.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

enum class EBoardFormat
{
    Tiff,
    Raw,
};

// Where and how a board file is damaged.
struct SBoardDamage
{
    std::int64_t m_offset = -1; // of the stream, in bytes; -1: a TIFF, or the file as a whole
    std::int64_t m_page = -1;   // of the TIFF, from 0; -1: a stream, or the file as a whole
    std::string m_what;         // what was found
    std::string m_fix;          // what would be right; empty if it goes without saying
};

// "page.boards: byte 8: the stream has version 7; this program reads versions 1 and 2", "page.tif: page 3: ...".
class CBoardDamageError : public CInputError
{
public:
    CBoardDamageError(const std::string& file, const SBoardDamage& damage);
    const SBoardDamage& Damage_Get() const { return *m_damage; }

private:
    std::shared_ptr<const SBoardDamage> m_damage; // shared: copying an exception must not fail
};

class CBoardReader
{
public:
    // Opens the file, whatever of the two it is, and reads what it says of its bands. Throws CBoardDamageError if it is
    // neither, has another version, or its beginning is damaged; CInputError if it cannot be opened.
    static std::unique_ptr<CBoardReader> Open(const std::filesystem::path& file);

    virtual ~CBoardReader() = default;
    CBoardReader(const CBoardReader&) = delete;
    CBoardReader& operator=(const CBoardReader&) = delete;

    virtual EBoardFormat Format() const = 0;
    const std::string& Name() const { return m_name; }
    std::int64_t FileSize() const { return m_size; } // bytes
    const SBoardInfo& BoardInfo() const { return m_info; }

    // Replaces `band` by the next one, header and data, its lines as long as the file's; and `pass` by its pass. A file
    // of version 1 does not say the pass: all of it but its direction and m_bBlank is then 0. False behind the last
    // band, once the file has proved complete; both then stay as they are. Throws CBoardDamageError, or CRunError if
    // there is no memory; `band` is then of no use.
    bool Band_Read(CBandData& band, SBoardPass& pass);

    // Bands read so far.
    std::int64_t BandCount() const { return m_bandCount; }

    // Where the band that was read last begins: "byte 1234", "page 3".
    const std::string& Place() const { return m_place; }

    // After a CBoardDamageError: goes on at the next band that is sound, wherever it is. False if there is none.
    bool Resume();

protected:
    CBoardReader(std::string name, std::int64_t size) : m_name(std::move(name)), m_size(size) {}

    virtual bool Band_ReadNext(CBandData& band, SBoardPass& pass) = 0;
    virtual bool Resume_Next() = 0;

    std::string m_name;
    std::int64_t m_size;
    SBoardInfo m_info;
    std::string m_place;
    bool m_bResumed = false; // bands are missing; their number says nothing any more

private:
    std::int64_t m_bandCount = 0;
};
