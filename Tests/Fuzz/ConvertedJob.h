// A job converted and verified in this process, as `boardmap convert` and `boardmap verify` do it, for the targets and
// for the maker of the corpora.
#pragma once

#include "Host/Board/BoardReader.h"
#include "Host/Command/BoardOutput.h"
#include "Host/Command/Conversion.h"
#include "Host/Command/Verification.h"
#include "Host/HostError.h"
#include "Host/Job/JobPage.h"
#include "Host/Output/BoardRawWriter.h"
#include "Host/Output/BoardTiffWriter.h"

#include <filesystem>
#include <memory>

inline std::unique_ptr<CBoardWriter> BoardWriter_Make(const CJobPage& page, const std::filesystem::path& output,
                                                      EBoardFormat format,
                                                      EBoardCompression compression = EBoardCompression::None)
{
    const SBoardInfo info = Page_BoardInfo(page, "fuzz 1");
    if (format == EBoardFormat::Raw)
    {
        return std::make_unique<CBoardRawWriter>(output, info);
    }
    SBoardTiffSize size;
    size.m_bandCount = page.Geometry().m_swathCount;
    size.m_bandLineCount = page.Geometry().m_lineCount;
    size.m_bandBytesPerLine = page.Geometry().m_boardBytesPerLine;
    return std::make_unique<CBoardTiffWriter>(output, info, size, compression);
}

// Throws what the conversion throws.
inline void Job_ConvertTo(CJobPage& page, CBoardWriter& writer)
{
    constexpr unsigned lookMs = 50;
    CConversion conversion(page);
    conversion.Start();
    CBoardOutput output(*conversion.Output(), writer);
    if (!output.Start("CBoardOutput"))
    {
        throw CRunError("no thread");
    }
    while (!output.WaitExit(lookMs))
    {
        conversion.Error_Check();
    }
    output.Error_Check();
    conversion.Error_Check();
    writer.Finish();
}

inline SVerifyResult Output_Verify(const CJobPage& page, const std::filesystem::path& output)
{
    const auto reader = CBoardReader::Open(output);
    return CVerification(page, *reader, {}, 4, [](std::int64_t, std::int64_t) { return true; }).Run();
}
