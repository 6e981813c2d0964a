// The library's preconditions, as checks with a message each. A check whose values are not all known is left out: the
// mistake that made them unknown is in the list already.
#include "Host/Job/JobCheck.h"

#include "Host/HostError.h"
#include "Host/Job/JobGeometry.h"
#include "Host/Job/JobNames.h"
#include "Host/Job/StripeColor.h"
#include "Host/PathText.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace
{

constexpr std::int64_t bandLimit = std::numeric_limits<std::int32_t>::max();

std::string Number(std::int64_t value)
{
    return std::to_string(value);
}

// "job.toml has no PrinterDataWidth" and the like know their keys by these names.
constexpr const char* mapStyleKey = "DPOption.DataMapStyle";
constexpr const char* pushStyleKey = "DPOption.DataPushStyle";
constexpr const char* supportBitsKey = "DPOption.PrinterSupportBits";
constexpr const char* widthKey = "DPOption.PrinterDataWidth";
constexpr const char* depthKey = "PrintParam.BitsPerPixel";
constexpr const char* nozzlesKey = "CartInfo.Nozzles";

class CJobChecker
{
public:
    CJobChecker(const SJob& job, CMistakeList& mistakes) : m_job(job), m_mistakes(mistakes) {}

    // What follows from the values alone. The map must be chosen.
    void Values_Check();

    // What follows from the separations.
    void Separations_Check(const std::vector<SUnitSeparation>& separations);

    bool AreKnown(std::initializer_list<const char*> keys) const
    {
        return std::ranges::none_of(keys, [&](const char* pKey) { return m_job.m_mistaken.contains(pKey); });
    }
    bool IsUnitKeyKnown(std::size_t index, const char* pKey) const
    {
        return !m_job.m_mistaken.contains("CartInfo.Unit[" + std::to_string(index) + "]." + pKey);
    }

private:
    void Add(const SJobPlace& place, const char* pRule, std::string what, std::string fix)
    {
        m_mistakes.Add({false, m_job.m_file, place, pRule, std::move(what), std::move(fix)});
    }
    void Add(const char* pKey, const char* pRule, std::string what, std::string fix)
    {
        Add(Job_Place(m_job, pKey), pRule, std::move(what), std::move(fix));
    }
    void Warn(const std::string& key, const char* pRule, std::string what, std::string fix)
    {
        m_mistakes.Add({true, m_job.m_file, Job_Place(m_job, key), pRule, std::move(what), std::move(fix)});
    }
    const SMapClass& Row() const { return MapClass_Get(m_job.m_map.m_class); }
    bool HasMap() const { return m_job.m_map.m_class != EMapClass::None; }
    std::string Style_Text() const { return std::string("style ") + Row().m_pName; }
    std::string DataMapStyle_Text() const;
    std::string Combination_Text() const;
    std::string Room_Text() const;

    void SupportBits_Check();
    void Map_Check();
    void Depth_Check();
    void FrameWidth_Check();
    void Nozzles_Check();
    void DotSize_Check();
    void Units_Check();
    void UnitIndex_Check(const SJobUnit& unit, std::size_t index);
    void UnitPosition_Check(const SJobUnit& unit, std::size_t index);
    void Presence_Check();
    void Masks_Check();
    void StripeFill_Check(const SJobUnit& unit);
    void InkStripe_Check();
    void BoardLine_Check();
    void Separation_Check(const SUnitSeparation& found, const SUnitSeparation& first);
    void Page_Check(const SSeparationInfo& page);
    void Beside_Check(const SSeparationInfo& page, const SJobGeometry& geometry);
    bool Band_Check(const std::string& what, std::int64_t bytesPerLine, std::int64_t lineCount,
                    const std::string& advice);
    void Stripes_Check(int pageWidth);
    bool Stripe_Check(const SJobUnit& unit, int pageWidth, int length, bool bLeftToRight, bool bLeftStripe);

    const SJob& m_job;
    CMistakeList& m_mistakes;
    bool m_bWidthFits = false; // the frame width is known, and one that the map has
};

// "DataMapStyle FramePerPixel", by its name whether the file gives a name or a number.
std::string CJobChecker::DataMapStyle_Text() const
{
    return "DataMapStyle " + EnumName_Get(EnumNames_DataMapStyle(), static_cast<int>(m_job.m_dpOption.m_dataMapStyle));
}

std::string CJobChecker::Combination_Text() const
{
    const SDPOption& option = m_job.m_dpOption;
    return DataMapStyle_Text() + ", DataPushStyle " +
           EnumName_Get(EnumNames_DataPushStyle(), static_cast<int>(option.m_dataPushStyle)) + ", PrinterSupportBits " +
           EnumName_Get(EnumNames_PrinterSupportBits(), static_cast<int>(option.m_printerSupportBits));
}

// PrinterSupportBits may be left out only where nothing looks at it.
void CJobChecker::SupportBits_Check()
{
    const SDPOption& option = m_job.m_dpOption;
    const bool bUsed =
        option.m_dataPushStyle == EDataPushStyle::ByPixel && (option.m_dataMapStyle == EDataMapStyle::FramePerPixel ||
                                                              option.m_dataMapStyle == EDataMapStyle::ByteInterleaved);
    if (bUsed && !m_job.m_places.contains(supportBitsKey))
    {
        Add(supportBitsKey, "missing", "PrinterSupportBits is missing from [DPOption]",
            "for example: PrinterSupportBits = \"OneBit\"");
    }
}

void CJobChecker::Map_Check()
{
    if (!HasMap())
    {
        Add(depthKey, "no-map", "BitsPerPixel is " + Number(m_job.m_bitsPerPixel),
            "no data map takes that with " + Combination_Text() +
                "; a printer of 2-bit data has PrinterSupportBits TwoBit or Multiple, and DataPushStyle ByUnit "
                "pushes 2-bit pixels as 1-bit lines");
        return;
    }
    if (AreKnown({"Stage.Kind"}) && m_job.m_stageKind == EStageKind::Base && !Row().m_bTableMap)
    {
        Add(mapStyleKey, "base-stage-map",
            DataMapStyle_Text() + " needs the map of " + Style_Text() + ", which the base stage cannot run",
            "the base stage runs the maps of styles 1, 2 and 5");
    }
}

// The unit bands must have the depth that the map's table is made for. Style 8 splits whole 2-bit pixels into planes
// itself.
void CJobChecker::Depth_Check()
{
    const std::string found = "BitsPerPixel is " + Number(m_job.m_bitsPerPixel);
    if (Row().m_bPlanePair)
    {
        if (m_job.m_bitsPerPixel != 2)
        {
            Add(depthKey, "depth", found, "style 8 takes pixels of 2 bits");
        }
        if (m_job.m_dpOption.m_dataPushStyle != EDataPushStyle::ByPixel)
        {
            Add(pushStyleKey, "push-style", "DataPushStyle is ByUnit",
                "style 8 takes whole pixels of 2 bits, DataPushStyle = \"ByPixel\"");
        }
    }
    else if (Job_UnitBitsPerPixel(m_job) != m_job.m_map.m_srcBitCount)
    {
        Add(depthKey, "depth", found,
            Style_Text() + " takes pixels of " + Number(m_job.m_map.m_srcBitCount) +
                " bit; DataPushStyle ByUnit pushes 2-bit pixels as 1-bit lines");
    }
}

void CJobChecker::FrameWidth_Check()
{
    const int width = m_job.m_dpOption.m_printerDataWidth;
    const SMapClass& row = Row();
    std::string wanted;
    if (row.m_widthOnly > 0 && width != row.m_widthOnly)
    {
        wanted = Number(row.m_widthOnly);
    }
    else if (width % row.m_widthMultiple != 0)
    {
        wanted = "a multiple of " + Number(row.m_widthMultiple);
    }
    else if (width < row.m_widthLeast)
    {
        wanted = Number(row.m_widthLeast) + " or more";
    }
    m_bWidthFits = wanted.empty();
    if (!m_bWidthFits)
    {
        Add(widthKey, "frame-width", "PrinterDataWidth is " + Number(width), Style_Text() + " needs " + wanted);
    }
}

void CJobChecker::Nozzles_Check()
{
    const SMapClass& row = Row();
    const std::string found = "Nozzles is " + Number(m_job.m_nozzles);
    if (row.m_nozzlesOnly > 0 && m_job.m_nozzles != row.m_nozzlesOnly)
    {
        Add(nozzlesKey, "nozzles", found,
            Style_Text() + " maps heads of " + Number(row.m_nozzlesOnly) + " nozzles, in four blocks of " +
                Number(row.m_nozzlesOnly / 4));
    }
    if (m_job.m_nozzles % row.m_nozzlesMultiple != 0)
    {
        Add(nozzlesKey, "nozzles", found,
            Style_Text() + " needs a multiple of " + Number(row.m_nozzlesMultiple) + ": lines of whole bytes");
    }
    if (m_job.m_nozzles % row.m_nozzlesPerGroup != 0)
    {
        Warn(nozzlesKey, "nozzles-lost", found,
             Style_Text() + " takes nozzles by groups of " + Number(row.m_nozzlesPerGroup) +
                 " and has no place for the rest: the last one never prints");
    }
}

void CJobChecker::DotSize_Check()
{
    if (Row().m_bDotSize && m_job.m_dotSizeMode == EDotSizeMode::None)
    {
        const bool bMissing = !m_job.m_places.contains("PrintParam.DotSizeMode");
        Add("PrintParam.DotSizeMode", "dot-size",
            bMissing ? "DotSizeMode is missing from [PrintParam]" : "DotSizeMode is None",
            Style_Text() + " prints 1-bit pixels with one drop size: Small (1), Middle (2) or Big (3), for example: "
                           "DotSizeMode = \"Small\"");
    }
}

std::string CJobChecker::Room_Text() const
{
    const std::string width = Number(m_job.m_dpOption.m_printerDataWidth);
    if (Row().m_bTableMap)
    {
        return "a frame of " + width + " bits at " + Number(m_job.m_map.m_dstBitCount) +
               (m_job.m_map.m_dstBitCount == 1 ? " bit" : " bits") + " per unit has";
    }
    return Style_Text() + " with a PrinterDataWidth of " + width + " has";
}

void CJobChecker::UnitIndex_Check(const SJobUnit& unit, std::size_t index)
{
    if (!IsUnitKeyKnown(index, "UnitId"))
    {
        return;
    }
    const int unitCount = MapClass_UnitCount(m_job.m_map, m_job.m_dpOption.m_printerDataWidth);
    if (m_bWidthFits && unit.m_unitId >= unitCount)
    {
        Add(unit.m_place_UnitId, "unit-id", "UnitId is " + Number(unit.m_unitId),
            Room_Text() + " the units 0 to " + Number(unitCount - 1));
    }
    for (std::size_t i = 0; i < index; ++i)
    {
        if (IsUnitKeyKnown(i, "UnitId") && m_job.m_units[i].m_unitId == unit.m_unitId)
        {
            Add(unit.m_place_UnitId, "unit-id-twice",
                "UnitId is " + Number(unit.m_unitId) + ", as in line " + Number(m_job.m_units[i].m_place_UnitId.m_line),
                "each print unit has an id of its own");
            return;
        }
    }
}

void CJobChecker::UnitPosition_Check(const SJobUnit& unit, std::size_t index)
{
    const int count = m_job.m_inkStripe.m_unitPositionCount;
    if (AreKnown({"InkStripe.UnitPositionCount"}) && IsUnitKeyKnown(index, "UnitPosition") &&
        unit.m_unitPosition >= count)
    {
        const bool bByPlace = unit.m_unitPosition == static_cast<int>(index);
        Add(unit.m_place_UnitPosition, "unit-position",
            "UnitPosition is " + Number(unit.m_unitPosition) + (bByPlace ? ", the unit's place in the list" : ""),
            "UnitPositionCount is " + Number(count) + ", so the positions are 0 to " + Number(count - 1));
    }
}

void CJobChecker::Units_Check()
{
    for (std::size_t i = 0; i < m_job.m_units.size(); ++i)
    {
        UnitIndex_Check(m_job.m_units[i], i);
        UnitPosition_Check(m_job.m_units[i], i);
    }
}

// The stage runs on bands, and a step without any has no board band.
void CJobChecker::Presence_Check()
{
    bool bAny = false;
    for (std::size_t i = 0; i < m_job.m_units.size(); ++i)
    {
        const SJobUnit& unit = m_job.m_units[i];
        const bool bGiven = unit.HasSeparation() || !IsUnitKeyKnown(i, "Separation");
        bAny = bAny || bGiven;
        if (AreKnown({"Stage.Kind"}) && m_job.m_stageKind == EStageKind::Base && !bGiven)
        {
            Add(unit.m_place_Separation, "missing", "Separation is missing from [[CartInfo.Unit]]",
                "the base stage makes no ink stripes, so every unit prints one, for example: Separation = "
                "\"page.Cyan.tif\"");
        }
    }
    const bool bEachRefused = m_job.m_stageKind == EStageKind::Base && !m_job.m_units.empty();
    if (!bAny && !bEachRefused && AreKnown({"CartInfo", "CartInfo.Unit"}))
    {
        Add("CartInfo.Unit", "no-separation", "no [[CartInfo.Unit]] has a Separation",
            "at least one must print the page");
    }
}

// The stage's output holds three board bands for each mask.
void CJobChecker::Masks_Check()
{
    constexpr int mostMasks = 16;
    const int masks = m_job.m_maskCount_1 * m_job.m_maskCount_2;
    if (masks > mostMasks)
    {
        Add("PrintParam.MaskCount_2", "masks",
            "MaskCount_2 is " + Number(m_job.m_maskCount_2) + " and MaskCount_1 is " + Number(m_job.m_maskCount_1),
            "the stage keeps up to 3 board bands for each of the " + Number(masks) + " masks in memory, and " +
                Number(mostMasks) + " masks are the most");
    }
}

void CJobChecker::StripeFill_Check(const SJobUnit& unit)
{
    const std::optional<EStripeFill> fill = unit.m_stripeColor.m_fill;
    if (fill && m_job.m_bitsPerPixel == 1 && *fill != EStripeFill::None && *fill != EStripeFill::Full)
    {
        Add(unit.m_stripeColor.m_place, "stripe-color",
            "StripeColor is \"" + unit.m_stripeColor.m_text + "\", a drop size of 2-bit pixels",
            "BitsPerPixel is 1, so it takes None, Full or the name of a TIFF file");
    }
}

void CJobChecker::InkStripe_Check()
{
    if (AreKnown({depthKey}))
    {
        std::ranges::for_each(m_job.m_units, [&](const SJobUnit& unit) { StripeFill_Check(unit); });
    }
    if (!AreKnown({"Stage.Kind", "InkStripe.LeftStripeWidth", "InkStripe.RightStripeWidth"}))
    {
        return;
    }
    bool bAny = false;
    for (std::size_t i = 0; i < m_job.m_units.size(); ++i)
    {
        const SJobUnit& unit = m_job.m_units[i];
        if (!Job_HasStripes(m_job, unit) || !IsUnitKeyKnown(i, "Separation"))
        {
            continue;
        }
        bAny = true;
        if (!unit.m_stripeColor.IsGiven() && IsUnitKeyKnown(i, "StripeColor"))
        {
            Add(unit.m_stripeColor.m_place, "missing", "StripeColor is missing from [[CartInfo.Unit]]",
                "a unit without a Separation prints ink stripes, for example: StripeColor = \"Full\"");
        }
    }
    if (bAny && AreKnown({"InkStripe.UnitPitch"}) && m_job.m_inkStripe.m_unitPitch < 1)
    {
        const bool bMissing = !m_job.m_places.contains("InkStripe.UnitPitch");
        Add("InkStripe.UnitPitch", "missing", bMissing ? "UnitPitch is missing from [InkStripe]" : "UnitPitch is 0",
            "from the stripe of one unit position to the next it is 1 or more, for example: UnitPitch = 8");
    }
}

void CJobChecker::BoardLine_Check()
{
    const std::int64_t lineBits = Job_BoardWidth(m_job);
    if (lineBits > bandLimit)
    {
        Add(nozzlesKey, "board-line", "Nozzles is " + Number(m_job.m_nozzles),
            "with frames of " + Number(m_job.m_dpOption.m_printerDataWidth) + " bits a board line has " +
                Number(lineBits) + " bits, and " + Number(bandLimit) + " is the most; lower Nozzles");
    }
}

void CJobChecker::Values_Check()
{
    if (AreKnown({mapStyleKey, pushStyleKey, supportBitsKey}))
    {
        SupportBits_Check();
    }
    if (AreKnown({mapStyleKey, pushStyleKey, supportBitsKey, depthKey}))
    {
        Map_Check();
    }
    if (HasMap())
    {
        Depth_Check();
        if (AreKnown({widthKey}))
        {
            FrameWidth_Check();
        }
        if (AreKnown({nozzlesKey}))
        {
            Nozzles_Check();
        }
        if (AreKnown({"PrintParam.DotSizeMode"}))
        {
            DotSize_Check();
        }
    }
    Units_Check();
    Presence_Check();
    if (AreKnown({"PrintParam.MaskCount_1", "PrintParam.MaskCount_2"}))
    {
        Masks_Check();
    }
    InkStripe_Check();
    if (HasMap() && AreKnown({widthKey, nozzlesKey}))
    {
        BoardLine_Check();
    }
}

// The separations.

std::string PageSize_Text(const SSeparationInfo& separation)
{
    return Number(separation.width) + " x " + Number(separation.height) + " pixels";
}

// "300 x 600 per inch".
std::string Resolution_Text(const SSeparationInfo& separation)
{
    const auto Text = [](double value)
    {
        std::string text = std::to_string(value);
        text.erase(text.find_last_not_of('0') + 1);
        return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
    };
    return Text(separation.xResolution) + " x " + Text(separation.yResolution) + " pixels per inch";
}

bool IsSameResolution(const SSeparationInfo& one, const SSeparationInfo& other)
{
    // What rounding and a change of units leave.
    constexpr double tolerance = 1e-3;
    const auto IsNear = [](double left, double right) { return std::abs(left - right) <= tolerance * right; };
    return !one.HasResolution() || !other.HasResolution() ||
           (IsNear(one.xResolution, other.xResolution) && IsNear(one.yResolution, other.yResolution));
}

void CJobChecker::Separation_Check(const SUnitSeparation& found, const SUnitSeparation& first)
{
    const SSeparationInfo& separation = found.m_info;
    const SSeparationInfo& page = first.m_info;
    const auto Mistake = [&](const char* pRule, const std::string& what, const std::string& fix)
    { return Separation_Mistake(m_job, *found.m_pUnit, found.m_page, pRule, " has " + what, fix); };
    const std::string firstName = Text_Printable(Job_SeparationName(m_job, *first.m_pUnit, first.m_page));
    const std::string all = m_job.m_pages.m_count > 1 ? "job" : "page";
    if (AreKnown({depthKey}) && separation.bitsPerPixel != m_job.m_bitsPerPixel)
    {
        m_mistakes.Add(
            Mistake("separation-depth",
                    Number(separation.bitsPerPixel) + (separation.bitsPerPixel == 1 ? " bit" : " bits") + " per pixel",
                    "BitsPerPixel is " + Number(m_job.m_bitsPerPixel)));
    }
    if (separation.width < 1 || separation.height < 1)
    {
        m_mistakes.Add(Mistake("separation-size", PageSize_Text(separation), "a page has at least one of each"));
    }
    else if (separation.width != page.width || separation.height != page.height)
    {
        m_mistakes.Add(Mistake("separation-size",
                               PageSize_Text(separation) + ", but " + firstName + " has " + PageSize_Text(page),
                               "all separations of a " + all + " have one size"));
    }
    if (!IsSameResolution(separation, page))
    {
        SMistake warning =
            Mistake("separation-resolution",
                    Resolution_Text(separation) + ", but " + firstName + " has " + Resolution_Text(page),
                    "the pixels are printed one to one; make all separations of a " + all + " with one resolution");
        warning.m_bWarning = true;
        m_mistakes.Add(std::move(warning));
    }
}

// False if such a band is too large.
bool CJobChecker::Band_Check(const std::string& what, std::int64_t bytesPerLine, std::int64_t lineCount,
                             const std::string& advice)
{
    if (bytesPerLine * lineCount > bandLimit)
    {
        Add(nozzlesKey, "band-size",
            what + " of this page has " + Number(lineCount) + " lines of " + Number(bytesPerLine) +
                " bytes, and a band holds " + Number(bandLimit) + " bytes at most",
            advice);
        return false;
    }
    return true;
}

// Zones and offsets that dwarf the page are hardly meant; every one of their positions is a line of every band.
void CJobChecker::Beside_Check(const SSeparationInfo& page, const SJobGeometry& geometry)
{
    constexpr std::int64_t muchPositions = 1 << 16; // nearly three metres at 600 per inch
    constexpr std::int64_t muchPages = 4;
    struct SWidth
    {
        std::string m_key;
        int m_positions;
    };
    std::vector<SWidth> widths = {{"InkStripe.LeftStripeWidth", m_job.m_inkStripe.m_leftStripeWidth},
                                  {"InkStripe.RightStripeWidth", m_job.m_inkStripe.m_rightStripeWidth}};
    for (std::size_t i = 0; i < m_job.m_units.size(); ++i)
    {
        const std::string unit = "CartInfo.Unit[" + std::to_string(i) + "].";
        if (m_job.m_bBidirectional)
        {
            widths.push_back({unit + "Horizon_1", m_job.m_units[i].m_horizon_1});
        }
        widths.push_back({unit + "Horizon_2", m_job.m_units[i].m_horizon_2});
    }
    const std::int64_t bytes =
        m_job.m_pages.m_count * geometry.m_swathCount * geometry.m_lineCount * geometry.m_boardBytesPerLine;
    for (const SWidth& width : widths)
    {
        if (width.m_positions > muchPositions && width.m_positions > muchPages * page.width)
        {
            Warn(width.m_key, "beside-page",
                 width.m_key.substr(width.m_key.rfind('.') + 1) + " is " + Number(width.m_positions) +
                     " on a page of " + Number(page.width) + (page.width == 1 ? " column" : " columns"),
                 "the job makes bands of " + Number(geometry.m_lineCount) + " lines, " + Number(bytes) +
                     " bytes of board data");
        }
    }
}

void CJobChecker::Page_Check(const SSeparationInfo& page)
{
    const std::int64_t jobWidth = std::int64_t{page.width} * m_job.m_maskCount_1;
    if (jobWidth > bandLimit)
    {
        Add("PrintParam.MaskCount_1", "job-width", "MaskCount_1 is " + Number(m_job.m_maskCount_1),
            "with this page of " + Number(page.width) + " columns the job is " + Number(jobWidth) +
                " scan positions wide, and " + Number(bandLimit) + " is the most; lower MaskCount_1");
    }
    const SJobGeometry geometry = Job_Geometry(m_job, page.width, page.height);
    if (geometry.m_swathCount * m_job.m_pages.m_count > bandLimit)
    {
        Add(nozzlesKey, "job-bands",
            "the " + Number(m_job.m_pages.m_count) + " pages have " + Number(geometry.m_swathCount) + " swaths each",
            "a job has " + Number(bandLimit) + " bands at most; raise Nozzles, or print the pages in several jobs");
    }
    const bool bFits = Band_Check("a unit band", geometry.m_unitBytesPerLine, geometry.m_lineCount,
                                  "lower Nozzles or AlignByteCountPerLine, or print a narrower page") &&
                       Band_Check("a board band", geometry.m_boardBytesPerLine, geometry.m_lineCount,
                                  "lower Nozzles or print a narrower page");
    if (bFits)
    {
        Beside_Check(page, geometry);
    }
    if (bFits && jobWidth <= bandLimit)
    {
        Stripes_Check(page.width);
    }
}

// The stage copies a stripe to its place without a look at the band. False if it would leave it.
bool CJobChecker::Stripe_Check(const SJobUnit& unit, int pageWidth, int length, bool bLeftToRight, bool bLeftStripe)
{
    const std::optional<SJobStripe> stripe = Job_Stripe(m_job, unit, pageWidth, bLeftToRight, bLeftStripe, length);
    const int positions = Job_PassPositions(m_job, pageWidth, bLeftToRight);
    if (stripe && (stripe->m_begin < 0 || stripe->m_end > positions))
    {
        Add(unit.m_stripeColor.m_place, "stripe-outside",
            std::string("the ") + (bLeftStripe ? "left" : "right") + " stripe of unit " + Number(unit.m_unitId) +
                " in the " + (bLeftToRight ? "left-to-right" : "right-to-left") + " pass takes the scan positions " +
                Number(stripe->m_begin) + " to " + Number(stripe->m_end - 1) + ", and the band has 0 to " +
                Number(positions - 1),
            "lower UnitPitch or StripeLength, or widen the stripe zones");
        return false;
    }
    return true;
}

void CJobChecker::Stripes_Check(int pageWidth)
{
    for (const SJobUnit& unit : m_job.m_units)
    {
        if (!Job_HasStripes(m_job, unit))
        {
            continue;
        }
        try
        {
            const int length = StripeColor_Length(m_job, unit);
            // One for a unit: what puts one of its stripes right moves the others.
            static_cast<void>(Stripe_Check(unit, pageWidth, length, true, true) &&
                              (!m_job.m_bBidirectional || Stripe_Check(unit, pageWidth, length, false, true)) &&
                              Stripe_Check(unit, pageWidth, length, true, false) &&
                              (!m_job.m_bBidirectional || Stripe_Check(unit, pageWidth, length, false, false)));
        }
        catch (const CInputError& error)
        {
            for (const SMistake& mistake : error.Mistakes_Get())
            {
                m_mistakes.Add(mistake);
            }
        }
    }
}

void CJobChecker::Separations_Check(const std::vector<SUnitSeparation>& separations)
{
    for (const SUnitSeparation& separation : separations)
    {
        Separation_Check(separation, separations.front());
    }
    // The sizes of bands follow from nearly every value.
    const SSeparationInfo page = separations.empty() ? SSeparationInfo() : separations.front().m_info;
    if (page.width >= 1 && page.height >= 1 && HasMap() && m_job.m_mistaken.empty())
    {
        Page_Check(page);
    }
}

} // namespace

void Job_Check(SJob& job, CMistakeList& mistakes)
{
    CJobChecker checker(job, mistakes);
    if (checker.AreKnown({mapStyleKey, pushStyleKey, supportBitsKey, depthKey}))
    {
        job.m_map = Job_MapClass(job.m_dpOption, job.m_bitsPerPixel);
    }
    checker.Values_Check();
}

void Job_CheckSeparations(const SJob& job, const std::vector<SUnitSeparation>& separations, CMistakeList& mistakes)
{
    CJobChecker(job, mistakes).Separations_Check(separations);
}

SMistake Separation_Mistake(const SJob& job, const SJobUnit& unit, int page, std::string rule, const std::string& what,
                            std::string fix)
{
    const bool bListed = static_cast<std::size_t>(page) < unit.m_places_Separation.size();
    return {false,
            job.m_file,
            bListed ? unit.m_places_Separation[static_cast<std::size_t>(page)] : unit.m_place_Separation,
            std::move(rule),
            Job_UnitText(unit) + (job.m_pages.m_count > 1 ? ", page " + std::to_string(page) : "") + ": Separation " +
                Text_Printable(Job_SeparationName(job, unit, page)) + what,
            std::move(fix)};
}

SMistake Separation_Fault(const SJob& job, const SJobUnit& unit, int page, const CInputError& error)
{
    return Separation_Mistake(job, unit, page, "separation", ": " + error.WithoutFile(), "");
}
