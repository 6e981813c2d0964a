// Parts put in their order, held against each other, and copied band by band.
#include "Host/Command/Join.h"

#include "Host/Command/Command.h"
#include "Host/HostError.h"
#include "Host/Interrupt.h"
#include "Host/PathText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <utility>

namespace
{

using CJson = nlohmann::ordered_json;

struct SPart
{
    std::filesystem::path m_file;
    EBoardFormat m_format = EBoardFormat::Tiff;
    SBoardInfo m_info;
};

std::string Bands_Text(std::int64_t first, std::int64_t last)
{
    return first == last ? "band " + std::to_string(first)
                         : "bands " + std::to_string(first) + " to " + std::to_string(last);
}

// What the file says of itself. A job that needs no second part is a whole.
SPart Part_Open(const std::filesystem::path& file)
{
    const auto reader = CBoardReader::Open(file);
    SPart part = {file, reader->Format(), reader->BoardInfo()};
    if (part.m_info.m_version < g_boardVersion)
    {
        throw CInputError(Path_Shown(file) + ": is of version 1, which has no parts; convert the job again");
    }
    if (!part.m_info.IsPart())
    {
        throw CInputError(Path_Shown(file) + ": is the output of a whole job; boardmap convert --bands makes parts");
    }
    return part;
}

SBoardInfo Whole_Of(SBoardInfo info)
{
    info.m_partFirst = -1;
    info.m_partLast = -1;
    return info;
}

// The word in which two board infos differ, "" if they do not.
std::string Difference_Of(const SBoardInfo& one, const SBoardInfo& other)
{
    const CJson left = CJson::parse(BoardInfo_Json(one)).flatten();
    const CJson right = CJson::parse(BoardInfo_Json(other)).flatten();
    for (const auto& [key, value] : left.items())
    {
        if (!right.contains(key) || right.at(key) != value)
        {
            return key.substr(1);
        }
    }
    return left.size() == right.size() ? "" : "Units";
}

// All parts belong to one job, and nothing of it is missing or there twice.
void Parts_Check(const std::vector<SPart>& parts)
{
    const SBoardInfo whole = Whole_Of(parts.front().m_info);
    std::int64_t next = 0;
    const SPart* pBefore = nullptr;
    const auto Gap_Refuse = [&](std::int64_t last, const SPart* pAfter)
    {
        throw CInputError(
            Bands_Text(next, last) + " of the job " + (next == last ? "is" : "are") + " in none of the parts" +
            (pBefore == nullptr ? ""
                                : "; " + Path_Shown(pBefore->m_file) + " ends with band " + std::to_string(next - 1)) +
            (pAfter == nullptr ? ""
                               : "; " + Path_Shown(pAfter->m_file) + " begins with band " + std::to_string(last + 1)));
    };
    for (const SPart& part : parts)
    {
        const std::string difference = Difference_Of(whole, Whole_Of(part.m_info));
        if (!difference.empty())
        {
            throw CInputError(Path_Shown(part.m_file) + ": is no part of the same job as " +
                              Path_Shown(parts.front().m_file) + ": " + difference + " of the board info differs");
        }
        if (part.m_info.m_partFirst < next)
        {
            throw CInputError(Path_Shown(part.m_file) + ": has " +
                              Bands_Text(part.m_info.m_partFirst, std::min(next - 1, part.m_info.m_partLast)) +
                              " of the job, which " + Path_Shown(pBefore->m_file) + " has, too");
        }
        if (part.m_info.m_partFirst > next)
        {
            Gap_Refuse(part.m_info.m_partFirst - 1, &part);
        }
        next = part.m_info.m_partLast + 1;
        pBefore = &part;
    }
    if (next < whole.StepCount())
    {
        Gap_Refuse(whole.StepCount() - 1, nullptr);
    }
}

// Copies a part's bands. False if the user interrupted it.
class CPartCopy
{
public:
    CPartCopy(CBoardWriter& writer, CProgress& progress, SJoinResult& result)
        : m_writer(writer), m_progress(progress), m_result(result)
    {
    }

    bool Copy(const SPart& part)
    {
        const auto reader = CBoardReader::Open(part.m_file);
        if (!(reader->BoardInfo() == part.m_info))
        {
            throw CInputError(Path_Shown(part.m_file) + ": has changed since it was looked at");
        }
        std::int64_t next = part.m_info.m_partFirst;
        CBandData band;
        SBoardPass pass;
        while (reader->Band_Read(band, pass))
        {
            Step_Check(part, *reader, band, next);
            band.m_bandNo = static_cast<std::int32_t>(m_result.m_bands);
            m_writer.Band_Write(band);
            ++m_result.m_bands;
            m_result.m_lines += band.m_height;
            m_result.m_bytes += band.m_dataSize;
            m_progress.Update(next, m_result.m_bytes);
            if (CInterrupt::IsRequested())
            {
                return false;
            }
        }
        if (next <= part.m_info.m_partLast && !part.m_info.m_bSkipBlank)
        {
            throw CInputError(Path_Shown(part.m_file) + ": ends before " + Bands_Text(next, part.m_info.m_partLast) +
                              " of the job");
        }
        return true;
    }

private:
    // The band is that of the swath that comes next; of a job that leaves out blank ones, of any that comes.
    static void Step_Check(const SPart& part, const CBoardReader& reader, const CBandData& band, std::int64_t& next)
    {
        const std::int64_t step = band.m_pageIndex * part.m_info.SwathCount() + band.m_swathIndex;
        const bool bRight = band.m_pageIndex >= 0 && band.m_pageIndex < part.m_info.m_pageCount &&
                            band.m_swathIndex >= 0 && band.m_swathIndex < part.m_info.SwathCount() &&
                            (part.m_info.m_bSkipBlank ? step >= next && step <= part.m_info.m_partLast : step == next);
        if (!bRight)
        {
            throw CInputError(Path_Shown(part.m_file) + ": " + reader.Place() + ": a band of page " +
                              std::to_string(band.m_pageIndex) + ", swath " + std::to_string(band.m_swathIndex) +
                              " stands where band " + std::to_string(next) + " of the job should");
        }
        next = step + 1;
    }

    CBoardWriter& m_writer;
    CProgress& m_progress;
    SJoinResult& m_result;
};

} // namespace

std::optional<SJoinResult> Join_Run(const SJoinOptions& options)
{
    const CInterrupt interrupt(Exit_Interrupted, "interrupted; nothing was written\n");
    std::vector<SPart> parts;
    for (const std::filesystem::path& file : options.m_parts)
    {
        if (!IsStandardOutput(options.m_target.m_path) && IsSameFile(file, options.m_target.m_path))
        {
            throw CInputError(Path_Shown(file) + ": is a part and the output; name another file");
        }
        parts.push_back(Part_Open(file));
    }
    SBoardTarget target = options.m_target;
    target.m_format = options.m_bFormatGiven ? target.m_format : parts.front().m_format;
    BoardTarget_Check(target);
    std::ranges::stable_sort(parts, {}, [](const SPart& part) { return part.m_info.m_partFirst; });
    Parts_Check(parts);
    const SBoardInfo whole = Whole_Of(parts.front().m_info);
    SJoinResult result;
    result.m_pages = whole.m_pageCount;
    try
    {
        const auto writer = BoardTarget_Open(target, whole);
        CProgress progress(options.m_progress, whole.StepCount());
        CPartCopy copy(*writer, progress, result);
        for (const SPart& part : parts)
        {
            if (!copy.Copy(part))
            {
                return std::nullopt;
            }
        }
        writer->Finish();
        progress.Finish(whole.StepCount(), result.m_bytes);
    }
    catch (const CInterruptedError&)
    {
        return std::nullopt;
    }
    return result;
}
