// The hash through libgcrypt.
#include "Host/Model/Sha256.h"

#include "Host/HostError.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gcrypt.h>

namespace
{

constexpr std::size_t hashBytes = 32;

// The library ends the process where it finds something wrong with the system, not where it is asked to. It has said
// why before it aborts, but not before it tells that there is no memory; both are a failed run.
extern "C" void Abort_Handle(int /*signalNumber*/)
{
    std::_Exit(1);
}

extern "C" void Fatal_Handle(void* /*own*/, int /*error*/, const char* /*pText*/)
{
    std::fputs("out of memory\n", stderr);
    std::_Exit(1);
}

// Once in a process, before anything else is asked of the library.
bool Library_Begin()
{
    gcry_set_fatalerror_handler(&Fatal_Handle, nullptr);
    auto* const pFormer = std::signal(SIGABRT, &Abort_Handle);
    const bool bReady = gcry_check_version(GCRYPT_VERSION) != nullptr && gcry_control(GCRYCTL_DISABLE_SECMEM, 0) == 0 &&
                        gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0) == 0;
    std::signal(SIGABRT, pFormer);
    return bReady;
}

} // namespace

void CSha256::SRelease::operator()(gcry_md_handle* pHash) const
{
    gcry_md_close(pHash);
}

CSha256::CSha256()
{
    static const bool bReady = Library_Begin();
    gcry_md_hd_t pHash = nullptr;
    if (!bReady || gcry_md_open(&pHash, GCRY_MD_SHA256, 0) != 0)
    {
        throw CRunError("libgcrypt cannot make a SHA-256");
    }
    m_hash.reset(pHash);
}

void CSha256::Add(std::span<const unsigned char> bytes)
{
    gcry_md_write(m_hash.get(), bytes.data(), bytes.size());
}

std::string CSha256::Text_Finish()
{
    std::string text;
    for (const unsigned char byte : std::span(gcry_md_read(m_hash.get(), GCRY_MD_SHA256), hashBytes))
    {
        text += "0123456789abcdef"[byte >> 4U];
        text += "0123456789abcdef"[byte & 0xFU];
    }
    return text;
}
