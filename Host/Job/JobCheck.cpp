// The library's preconditions, as checks with a message each.
#include "Host/Job/JobCheck.h"

#include "Host/HostError.h"
#include "Host/Job/JobGeometry.h"
#include "Host/Job/JobNames.h"

#include <cstdint>
#include <limits>
#include <string>

namespace
{

constexpr std::int64_t bandLimit = std::numeric_limits<std::int32_t>::max();

[[noreturn]] void Value_Refuse(const SJob& job, const std::string& key, const std::string& text)
{
    throw CInputError(Job_PlaceText(job, key) + text);
}

std::string Number(std::int64_t value)
{
    return std::to_string(value);
}

std::string Style_Text(const SJob& job)
{
    return std::string("style ") + MapClass_Name(job.m_map.m_class);
}

// "DataMapStyle FramePerPixel", by its name whether the file gives a name or a number.
std::string DataMapStyle_Text(const SJob& job)
{
    return "DataMapStyle " + EnumName_Get(EnumNames_DataMapStyle(), static_cast<int>(job.m_dpOption.m_dataMapStyle));
}

std::string Combination_Text(const SJob& job)
{
    const SDPOption& option = job.m_dpOption;
    return DataMapStyle_Text(job) + ", DataPushStyle " +
           EnumName_Get(EnumNames_DataPushStyle(), static_cast<int>(option.m_dataPushStyle)) + ", PrinterSupportBits " +
           EnumName_Get(EnumNames_PrinterSupportBits(), static_cast<int>(option.m_printerSupportBits));
}

// PrinterSupportBits may be left out only where nothing looks at it.
void SupportBits_Check(const SJob& job)
{
    const SDPOption& option = job.m_dpOption;
    const bool bUsed =
        option.m_dataPushStyle == EDataPushStyle::ByPixel && (option.m_dataMapStyle == EDataMapStyle::FramePerPixel ||
                                                              option.m_dataMapStyle == EDataMapStyle::ByteInterleaved);
    if (bUsed && !job.m_places.contains("DPOption.PrinterSupportBits"))
    {
        Value_Refuse(job, "DPOption.PrinterSupportBits",
                     "PrinterSupportBits is missing from [DPOption]; for example: PrinterSupportBits = \"OneBit\"");
    }
}

void Map_Check(const SJob& job)
{
    if (job.m_map.m_class == EMapClass::None)
    {
        Value_Refuse(
            job, "PrintParam.BitsPerPixel",
            "BitsPerPixel is " + Number(job.m_bitsPerPixel) + "; no data map takes that with " + Combination_Text(job) +
                "; a printer of 2-bit data has PrinterSupportBits TwoBit or Multiple, and DataPushStyle ByUnit "
                "pushes 2-bit pixels as 1-bit lines");
    }
    if (job.m_stageKind == EStageKind::Base && !MapClass_IsTableMap(job.m_map.m_class))
    {
        Value_Refuse(job, "DPOption.DataMapStyle",
                     DataMapStyle_Text(job) + " needs the map of " + Style_Text(job) +
                         ", which the base stage cannot run; the base stage runs the maps of styles 1, 2 and 5");
    }
}

// The unit bands must have the depth that the map's table is made for.
void Depth_Check(const SJob& job)
{
    if (Job_UnitBitsPerPixel(job) != job.m_map.m_srcBitCount)
    {
        Value_Refuse(job, "PrintParam.BitsPerPixel",
                     "BitsPerPixel is " + Number(job.m_bitsPerPixel) + "; " + Style_Text(job) + " takes pixels of " +
                         Number(job.m_map.m_srcBitCount) +
                         " bit; DataPushStyle ByUnit pushes 2-bit pixels as 1-bit lines");
    }
}

// The first boards know one width. Every other table map places whole bytes for each source byte.
void FrameWidth_Check(const SJob& job)
{
    constexpr int onlyWidth_Map_1 = 16;
    constexpr int bitsPerByte = 8;
    const int width = job.m_dpOption.m_printerDataWidth;
    const std::string found = "PrinterDataWidth is " + Number(width) + "; " + Style_Text(job) + " needs ";
    if (job.m_map.m_class == EMapClass::Map_1)
    {
        if (width != onlyWidth_Map_1)
        {
            Value_Refuse(job, "DPOption.PrinterDataWidth", found + Number(onlyWidth_Map_1));
        }
    }
    else if (width % bitsPerByte != 0)
    {
        Value_Refuse(job, "DPOption.PrinterDataWidth", found + "a multiple of " + Number(bitsPerByte));
    }
}

void DotSize_Check(const SJob& job)
{
    if (job.m_map.m_class == EMapClass::Map_2 && job.m_dotSizeMode == EDotSizeMode::None)
    {
        const bool bMissing = !job.m_places.contains("PrintParam.DotSizeMode");
        Value_Refuse(job, "PrintParam.DotSizeMode",
                     (bMissing ? "DotSizeMode is missing from [PrintParam]" : "DotSizeMode is None") +
                         std::string("; style 2 prints 1-bit pixels with one drop size: Small (1), Middle (2) or Big "
                                     "(3), for example: DotSizeMode = \"Small\""));
    }
}

void UnitIndex_Check(const SJob& job, const SJobUnit& unit)
{
    const int width = job.m_dpOption.m_printerDataWidth;
    const int unitCount = width / job.m_map.m_dstBitCount;
    if (unit.m_unitId < 0 || unit.m_unitId >= unitCount)
    {
        throw CInputError(Job_PlaceText(job, unit.m_place_UnitId) + "UnitId is " + Number(unit.m_unitId) +
                          "; a frame of " + Number(width) + " bits at " + Number(job.m_map.m_dstBitCount) +
                          (job.m_map.m_dstBitCount == 1 ? " bit" : " bits") + " per unit has the units 0 to " +
                          Number(unitCount - 1));
    }
}

void Units_Check(const SJob& job)
{
    for (std::size_t i = 0; i < job.m_units.size(); ++i)
    {
        const SJobUnit& unit = job.m_units[i];
        UnitIndex_Check(job, unit);
        for (std::size_t j = 0; j < i; ++j)
        {
            if (job.m_units[j].m_unitId == unit.m_unitId)
            {
                throw CInputError(Job_PlaceText(job, unit.m_place_UnitId) + "UnitId is " + Number(unit.m_unitId) +
                                  ", as in line " + Number(job.m_units[j].m_place_UnitId.m_line) +
                                  "; each print unit has an id of its own");
            }
        }
    }
}

void BoardLine_Check(const SJob& job)
{
    const std::int64_t lineBits = std::int64_t{job.m_nozzles} * job.m_dpOption.m_printerDataWidth;
    if (lineBits > bandLimit)
    {
        Value_Refuse(job, "CartInfo.Nozzles",
                     "Nozzles is " + Number(job.m_nozzles) + "; with frames of " +
                         Number(job.m_dpOption.m_printerDataWidth) + " bits a board line has " + Number(lineBits) +
                         " bits, and " + Number(bandLimit) + " is the most; lower Nozzles");
    }
}

[[noreturn]] void Separation_Refuse(const SJob& job, const SJobUnit& unit, const std::string& text)
{
    throw CInputError(Job_PlaceText(job, unit.m_place_Separation) + "Separation " + Text_Printable(unit.m_separation) +
                      " " + text);
}

std::string PageSize_Text(const SSeparationInfo& separation)
{
    return Number(separation.width) + " x " + Number(separation.height) + " pixels";
}

void Separation_Check(const SJob& job, const SJobUnit& unit, const SSeparationInfo& separation,
                      const SSeparationInfo& first)
{
    if (separation.bitsPerPixel != job.m_bitsPerPixel)
    {
        Separation_Refuse(job, unit,
                          "has " + Number(separation.bitsPerPixel) + (separation.bitsPerPixel == 1 ? " bit" : " bits") +
                              " per pixel; BitsPerPixel is " + Number(job.m_bitsPerPixel));
    }
    if (separation.width < 1 || separation.height < 1)
    {
        Separation_Refuse(job, unit, "has " + PageSize_Text(separation) + "; a page has at least one of each");
    }
    if (separation.width != first.width || separation.height != first.height)
    {
        Separation_Refuse(job, unit,
                          "has " + PageSize_Text(separation) + ", but " +
                              Text_Printable(job.m_units.front().m_separation) + " has " + PageSize_Text(first) +
                              "; all separations of a page have one size");
    }
}

void Band_Check(const SJob& job, const std::string& key, const std::string& what, std::int64_t bytesPerLine,
                std::int64_t lineCount, const std::string& advice)
{
    if (bytesPerLine * lineCount > bandLimit)
    {
        Value_Refuse(job, key,
                     what + " of this page has " + Number(lineCount) + " lines of " + Number(bytesPerLine) +
                         " bytes, and a band holds " + Number(bandLimit) + " bytes at most; " + advice);
    }
}

void Bands_Check(const SJob& job, const SSeparationInfo& page)
{
    const SJobGeometry geometry = Job_Geometry(job, page.width, page.height);
    Band_Check(job, "CartInfo.Nozzles", "a unit band", geometry.m_unitBytesPerLine, geometry.m_lineCount,
               "lower Nozzles or AlignByteCountPerLine, or print a narrower page");
    Band_Check(job, "CartInfo.Nozzles", "a board band", geometry.m_boardBytesPerLine, geometry.m_lineCount,
               "lower Nozzles or print a narrower page");
}

} // namespace

void Job_Check(SJob& job)
{
    SupportBits_Check(job);
    job.m_map = Job_MapClass(job.m_dpOption, job.m_bitsPerPixel);
    Map_Check(job);
    Depth_Check(job);
    FrameWidth_Check(job);
    DotSize_Check(job);
    Units_Check(job);
    BoardLine_Check(job);
}

void Job_CheckSeparations(const SJob& job, const std::vector<SSeparationInfo>& separations)
{
    for (std::size_t i = 0; i < job.m_units.size(); ++i)
    {
        Separation_Check(job, job.m_units[i], separations.at(i), separations.front());
    }
    Bands_Check(job, separations.front());
}
