// Targets, checked and opened.
#include "Host/Command/BoardTarget.h"

#include "Host/HostError.h"
#include "Host/Output/BoardRawWriter.h"
#include "Platform/Helper/ProcessHelper.h"

#include <system_error>

bool IsStandardOutput(const std::filesystem::path& path)
{
    return path == "-";
}

bool IsSameFile(const std::filesystem::path& one, const std::filesystem::path& other)
{
    std::error_code error;
    if (std::filesystem::equivalent(one, other, error))
    {
        return true;
    }
    // What cannot be looked up, for example behind a folder that may not be entered, is told by who opens it.
    const auto Full = [&error](const std::filesystem::path& path)
    { return std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error); };
    const std::filesystem::path full = Full(one);
    return !full.empty() && full == Full(other);
}

void BoardTarget_Check(const SBoardTarget& target)
{
    if (target.m_format == EBoardFormat::Tiff && IsStandardOutput(target.m_path))
    {
        throw CInputError("--output -: a TIFF cannot be written to standard output; use --format raw or name a file");
    }
    if (IsStandardOutput(target.m_path) && !target.m_bForce && CProcessHelper::IsOutputTerminal())
    {
        throw CInputError("--output -: standard output is a terminal, and board data is no text; redirect it, name a "
                          "file, or give --force");
    }
    if (target.m_format == EBoardFormat::Raw && target.m_compression != EBoardCompression::None)
    {
        throw CInputError("--compress: only TIFF pages are compressed; leave it out with --format raw");
    }
}

std::unique_ptr<CBoardWriter> BoardTarget_Open(const SBoardTarget& target, const SBoardInfo& info)
{
    if (target.m_format == EBoardFormat::Raw)
    {
        return std::make_unique<CBoardRawWriter>(target.m_path, info);
    }
    return std::make_unique<CBoardTiffWriter>(target.m_path, info, BoardTiff_Size(info), target.m_compression);
}
