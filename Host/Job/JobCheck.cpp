// The library's preconditions, as checks with a message each.
#include "Host/Job/JobCheck.h"

#include "Host/HostError.h"
#include "Host/Job/JobGeometry.h"
#include "Host/Job/JobNames.h"
#include "Host/Job/StripeColor.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
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

// Style 8 splits whole 2-bit pixels into planes itself.
void Depth_Check_Map_8(const SJob& job)
{
    if (job.m_bitsPerPixel != 2)
    {
        Value_Refuse(job, "PrintParam.BitsPerPixel",
                     "BitsPerPixel is " + Number(job.m_bitsPerPixel) + "; style 8 takes pixels of 2 bits");
    }
    if (job.m_dpOption.m_dataPushStyle != EDataPushStyle::ByPixel)
    {
        Value_Refuse(job, "DPOption.DataPushStyle",
                     "DataPushStyle is ByUnit; style 8 takes whole pixels of 2 bits, DataPushStyle = \"ByPixel\"");
    }
}

// The unit bands must have the depth that the map's table is made for.
void Depth_Check(const SJob& job)
{
    if (job.m_map.m_class == EMapClass::Map_8)
    {
        Depth_Check_Map_8(job);
    }
    else if (Job_UnitBitsPerPixel(job) != job.m_map.m_srcBitCount)
    {
        Value_Refuse(job, "PrintParam.BitsPerPixel",
                     "BitsPerPixel is " + Number(job.m_bitsPerPixel) + "; " + Style_Text(job) + " takes pixels of " +
                         Number(job.m_map.m_srcBitCount) +
                         " bit; DataPushStyle ByUnit pushes 2-bit pixels as 1-bit lines");
    }
}

// Byte columns may be any number; all else places whole bytes for each source byte or block.
std::string FrameWidth_Wrong(const SJob& job)
{
    constexpr int onlyWidth_Map_1 = 16;
    constexpr int fewestUnits_Map_03_01 = 4;
    constexpr int bitsPerByte = 8;
    constexpr int bitsPerGroup_Map_03 = 32;
    const int width = job.m_dpOption.m_printerDataWidth;
    const auto multiple_of = [width](int factor)
    { return width % factor == 0 ? std::string() : "a multiple of " + Number(factor); };
    switch (job.m_map.m_class)
    {
    case EMapClass::Map_1:
        return width == onlyWidth_Map_1 ? "" : Number(onlyWidth_Map_1);
    case EMapClass::Map_2:
    case EMapClass::Map_5:
    case EMapClass::Map_8:
        return multiple_of(bitsPerByte);
    case EMapClass::Map_03:
        return multiple_of(bitsPerGroup_Map_03);
    case EMapClass::Map_03_01:
        return width >= fewestUnits_Map_03_01 ? "" : Number(fewestUnits_Map_03_01) + " or more";
    default:
        return "";
    }
}

void FrameWidth_Check(const SJob& job)
{
    if (const std::string wanted = FrameWidth_Wrong(job); !wanted.empty())
    {
        Value_Refuse(job, "DPOption.PrinterDataWidth",
                     "PrinterDataWidth is " + Number(job.m_dpOption.m_printerDataWidth) + "; " + Style_Text(job) +
                         " needs " + wanted);
    }
}

void Nozzles_Check(const SJob& job)
{
    constexpr int nozzles_Map_03 = 400;
    constexpr int nozzlesPerByte_Map_8 = 4;
    const EMapClass map = job.m_map.m_class;
    const std::string found = "Nozzles is " + Number(job.m_nozzles) + "; " + Style_Text(job) + " ";
    if ((map == EMapClass::Map_03 || map == EMapClass::Map_03_01) && job.m_nozzles != nozzles_Map_03)
    {
        Value_Refuse(job, "CartInfo.Nozzles", found + "maps heads of 400 nozzles, in four blocks of 100");
    }
    if (map == EMapClass::Map_8 && job.m_nozzles % nozzlesPerByte_Map_8 != 0)
    {
        Value_Refuse(job, "CartInfo.Nozzles", found + "needs a multiple of 4: lines of whole bytes");
    }
}

void DotSize_Check(const SJob& job)
{
    const bool bUsed = job.m_map.m_class == EMapClass::Map_2 || job.m_map.m_class == EMapClass::Map_7;
    if (bUsed && job.m_dotSizeMode == EDotSizeMode::None)
    {
        const bool bMissing = !job.m_places.contains("PrintParam.DotSizeMode");
        Value_Refuse(job, "PrintParam.DotSizeMode",
                     (bMissing ? "DotSizeMode is missing from [PrintParam]" : "DotSizeMode is None") +
                         std::string("; ") + Style_Text(job) +
                         " prints 1-bit pixels with one drop size: Small (1), Middle (2) or Big (3), for example: "
                         "DotSizeMode = \"Small\"");
    }
}

// How many units the map has room for in a frame.
int UnitCount_Get(const SJob& job)
{
    constexpr int unitsPerGroup_Map_03 = 8;
    constexpr int bitsPerGroup_Map_03 = 32;
    constexpr int blocksPerUnit = 4;
    const int width = job.m_dpOption.m_printerDataWidth;
    switch (job.m_map.m_class)
    {
    case EMapClass::Map_03:
        return width / bitsPerGroup_Map_03 * unitsPerGroup_Map_03;
    case EMapClass::Map_03_01:
        return width / blocksPerUnit;
    case EMapClass::Map_6:
    case EMapClass::Map_7:
        return width;
    default:
        return width / job.m_map.m_dstBitCount;
    }
}

std::string Room_Text(const SJob& job)
{
    const std::string width = Number(job.m_dpOption.m_printerDataWidth);
    if (MapClass_IsTableMap(job.m_map.m_class))
    {
        return "a frame of " + width + " bits at " + Number(job.m_map.m_dstBitCount) +
               (job.m_map.m_dstBitCount == 1 ? " bit" : " bits") + " per unit has";
    }
    return Style_Text(job) + " with a PrinterDataWidth of " + width + " has";
}

void UnitIndex_Check(const SJob& job, const SJobUnit& unit)
{
    const int unitCount = UnitCount_Get(job);
    if (unit.m_unitId < 0 || unit.m_unitId >= unitCount)
    {
        throw CInputError(Job_PlaceText(job, unit.m_place_UnitId) + "UnitId is " + Number(unit.m_unitId) + "; " +
                          Room_Text(job) + " the units 0 to " + Number(unitCount - 1));
    }
}

void UnitPosition_Check(const SJob& job, const SJobUnit& unit, std::size_t index)
{
    const int count = job.m_inkStripe.m_unitPositionCount;
    if (unit.m_unitPosition < 0 || unit.m_unitPosition >= count)
    {
        const bool bByPlace = unit.m_unitPosition == static_cast<int>(index);
        throw CInputError(Job_PlaceText(job, unit.m_place_UnitPosition) + "UnitPosition is " +
                          Number(unit.m_unitPosition) + (bByPlace ? ", the unit's place in the list" : "") +
                          "; UnitPositionCount is " + Number(count) + ", so the positions are 0 to " +
                          Number(count - 1));
    }
}

void Units_Check(const SJob& job)
{
    for (std::size_t i = 0; i < job.m_units.size(); ++i)
    {
        const SJobUnit& unit = job.m_units[i];
        UnitIndex_Check(job, unit);
        UnitPosition_Check(job, unit, i);
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

// The stage runs on bands, and a step without any has no board band.
void Presence_Check(const SJob& job)
{
    bool bAny = false;
    for (const SJobUnit& unit : job.m_units)
    {
        bAny = bAny || unit.HasSeparation();
        if (job.m_stageKind == EStageKind::Base && !unit.HasSeparation())
        {
            throw CInputError(Job_PlaceText(job, unit.m_place_Separation) +
                              "Separation is missing from [[CartInfo.Unit]]; the base stage makes no ink stripes, so "
                              "every unit prints one, for example: Separation = \"page.Cyan.tif\"");
        }
    }
    if (!bAny)
    {
        Value_Refuse(job, "CartInfo.Unit", "no [[CartInfo.Unit]] has a Separation; at least one must print the page");
    }
}

// The stage's output holds three board bands for each mask.
void Masks_Check(const SJob& job)
{
    constexpr int mostMasks = 16;
    const int masks = job.m_maskCount_1 * job.m_maskCount_2;
    if (masks > mostMasks)
    {
        Value_Refuse(job, "PrintParam.MaskCount_2",
                     "MaskCount_2 is " + Number(job.m_maskCount_2) + " and MaskCount_1 is " +
                         Number(job.m_maskCount_1) + "; the stage keeps up to 3 board bands for each of the " +
                         Number(masks) + " masks in memory, and " + Number(mostMasks) + " masks are the most");
    }
}

void StripeFill_Check(const SJob& job, const SJobUnit& unit)
{
    const std::optional<EStripeFill> fill = unit.m_stripeColor.m_fill;
    if (fill && job.m_bitsPerPixel == 1 && *fill != EStripeFill::None && *fill != EStripeFill::Full)
    {
        throw CInputError(Job_PlaceText(job, unit.m_stripeColor.m_place) + "StripeColor is \"" +
                          unit.m_stripeColor.m_text +
                          "\", a drop size of 2-bit pixels; BitsPerPixel is 1, so it takes None, Full or the name of a "
                          "TIFF file");
    }
}

void InkStripe_Check(const SJob& job)
{
    for (const SJobUnit& unit : job.m_units)
    {
        StripeFill_Check(job, unit);
    }
    if (!Job_HasStripes(job))
    {
        return;
    }
    if (job.m_inkStripe.m_unitPitch < 1)
    {
        const bool bMissing = !job.m_places.contains("InkStripe.UnitPitch");
        Value_Refuse(job, "InkStripe.UnitPitch",
                     (bMissing ? "UnitPitch is missing from [InkStripe]" : "UnitPitch is 0") +
                         std::string("; from the stripe of one unit position to the next it is 1 or more, for "
                                     "example: UnitPitch = 8"));
    }
    for (const SJobUnit& unit : job.m_units)
    {
        if (Job_HasStripes(job, unit) && !unit.m_stripeColor.IsGiven())
        {
            throw CInputError(Job_PlaceText(job, unit.m_stripeColor.m_place) +
                              "StripeColor is missing from [[CartInfo.Unit]]; a unit without a Separation prints ink "
                              "stripes, for example: StripeColor = \"Full\"");
        }
    }
}

void BoardLine_Check(const SJob& job)
{
    const std::int64_t lineBits = Job_BoardWidth(job);
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
                      const SJobUnit& firstUnit, const SSeparationInfo& first)
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
                          "has " + PageSize_Text(separation) + ", but " + Text_Printable(firstUnit.m_separation) +
                              " has " + PageSize_Text(first) + "; all separations of a page have one size");
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

void JobWidth_Check(const SJob& job, const SSeparationInfo& page)
{
    const std::int64_t jobWidth = std::int64_t{page.width} * job.m_maskCount_1;
    if (jobWidth > bandLimit)
    {
        Value_Refuse(job, "PrintParam.MaskCount_1",
                     "MaskCount_1 is " + Number(job.m_maskCount_1) + "; with this page of " + Number(page.width) +
                         " columns the job is " + Number(jobWidth) + " scan positions wide, and " + Number(bandLimit) +
                         " is the most; lower MaskCount_1");
    }
}

// The stage copies a stripe to its place without a look at the band.
void Stripe_Check(const SJob& job, const SJobUnit& unit, int pageWidth, int length, bool bLeftToRight, bool bLeftStripe)
{
    const std::optional<SJobStripe> stripe = Job_Stripe(job, unit, pageWidth, bLeftToRight, bLeftStripe, length);
    const int positions = Job_PassPositions(job, pageWidth, bLeftToRight);
    if (stripe && (stripe->m_begin < 0 || stripe->m_end > positions))
    {
        throw CInputError(Job_PlaceText(job, unit.m_stripeColor.m_place) + "the " + (bLeftStripe ? "left" : "right") +
                          " stripe of unit " + Number(unit.m_unitId) + " in the " +
                          (bLeftToRight ? "left-to-right" : "right-to-left") + " pass takes the scan positions " +
                          Number(stripe->m_begin) + " to " + Number(stripe->m_end - 1) + ", and the band has 0 to " +
                          Number(positions - 1) + "; lower UnitPitch or StripeLength, or widen the stripe zones");
    }
}

void Stripes_Check(const SJob& job, int pageWidth)
{
    for (const SJobUnit& unit : job.m_units)
    {
        if (!Job_HasStripes(job, unit))
        {
            continue;
        }
        const int length = StripeColor_Length(job, unit);
        for (const bool bLeftStripe : {true, false})
        {
            Stripe_Check(job, unit, pageWidth, length, true, bLeftStripe);
            if (job.m_bBidirectional)
            {
                Stripe_Check(job, unit, pageWidth, length, false, bLeftStripe);
            }
        }
    }
}

} // namespace

void Job_Check(SJob& job)
{
    SupportBits_Check(job);
    job.m_map = Job_MapClass(job.m_dpOption, job.m_bitsPerPixel);
    Map_Check(job);
    Depth_Check(job);
    FrameWidth_Check(job);
    Nozzles_Check(job);
    DotSize_Check(job);
    Units_Check(job);
    Presence_Check(job);
    Masks_Check(job);
    InkStripe_Check(job);
    BoardLine_Check(job);
}

void Job_CheckSeparations(const SJob& job, const std::vector<SSeparationInfo>& separations)
{
    const SJobUnit* pFirst = nullptr;
    std::size_t index = 0;
    for (const SJobUnit& unit : job.m_units)
    {
        if (unit.HasSeparation())
        {
            pFirst = pFirst == nullptr ? &unit : pFirst;
            Separation_Check(job, unit, separations.at(index), *pFirst, separations.front());
            ++index;
        }
    }
    const SSeparationInfo& page = separations.front();
    JobWidth_Check(job, page);
    Bands_Check(job, page);
    Stripes_Check(job, page.width);
}
