// SHA-256 of bytes that come piece by piece: `info` names board data by it, and every system has a tool that makes the
// same number. libgcrypt computes it, which Debian has for both of our systems. Not meant for secrets. One thread at a
// time.
#pragma once

#include <memory>
#include <span>
#include <string>

struct gcry_md_handle;

class CSha256
{
public:
    // Throws CRunError if the library cannot be used.
    CSha256();

    void Add(std::span<const unsigned char> bytes);

    // 64 hexadecimal digits, in lower case. Once, after the last bytes.
    std::string Text_Finish();

private:
    struct SRelease
    {
        void operator()(gcry_md_handle* pHash) const;
    };

    std::unique_ptr<gcry_md_handle, SRelease> m_hash;
};
