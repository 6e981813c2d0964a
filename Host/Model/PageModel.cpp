// The road of the carriage over the page, worked out position by position, and the layouts of its lines.
#include "Host/Model/PageModel.h"

#include "Host/HostError.h"

#include <algorithm>
#include <limits>
#include <set>
#include <string>
#include <string_view>

namespace
{

constexpr int leftToRight = 1;
constexpr int rightToLeft = 2;

struct SStyleName
{
    std::string_view m_name;
    ETwinStyle m_style;
};

constexpr std::array styleNames = {
    SStyleName{"1", ETwinStyle::Style_1},   SStyleName{"2", ETwinStyle::Style_2},
    SStyleName{"03", ETwinStyle::Style_03}, SStyleName{"03_01", ETwinStyle::Style_03_01},
    SStyleName{"5", ETwinStyle::Style_5},   SStyleName{"6", ETwinStyle::Style_6},
    SStyleName{"7", ETwinStyle::Style_7},   SStyleName{"8", ETwinStyle::Style_8},
};

[[noreturn]] void Info_Refuse(const std::string& text)
{
    throw CInputError("the board info " + text);
}

STwinStyle Style_Of(const SBoardInfo& info)
{
    const auto* const found = std::ranges::find(styleNames, std::string_view(info.m_map), &SStyleName::m_name);
    if (found == styleNames.end())
    {
        Info_Refuse("names the map \"" + info.m_map + "\", which is none");
    }
    STwinStyle style;
    style.style = found->m_style;
    style.srcBitCount = info.m_bitsPerPixel / info.m_linesPerPosition;
    style.frameWidth = info.m_printerDataWidth;
    constexpr std::array<std::string_view, 4> sizes = {"None", "Small", "Middle", "Big"};
    const auto* const size = std::ranges::find(sizes, std::string_view(info.m_dotSizeMode));
    style.dotSizeMode = size == sizes.end() ? 0 : static_cast<int>(size - sizes.begin());
    const bool bDotSize = style.style == ETwinStyle::Style_2 || style.style == ETwinStyle::Style_7;
    if (bDotSize && style.dotSizeMode == 0)
    {
        Info_Refuse("has the drop size \"" + info.m_dotSizeMode + "\", which is none");
    }
    return style;
}

void Range_Check(const char* pName, std::int64_t value, std::int64_t least, std::int64_t most)
{
    if (value < least || value > most)
    {
        Info_Refuse("says that " + std::string(pName) + " is " + std::to_string(value) + "; it is " +
                    std::to_string(least) + " to " + std::to_string(most));
    }
}

} // namespace

CPageModel::CPageModel(const SBoardInfo& info) : m_info(info)
{
    Info_Check();
    m_style = Style_Of(info);
    const CBoardTwin twin(m_style);
    if (twin.BitsPerNozzle() * info.m_linesPerPosition != info.m_bitsPerPixel)
    {
        Info_Refuse("has " + std::to_string(info.m_bitsPerPixel) + " bits per pixel, which map " + info.m_map +
                    " does not take");
    }
    const bool bBlocks = m_style.style == ETwinStyle::Style_03 || m_style.style == ETwinStyle::Style_03_01;
    if (bBlocks && info.m_nozzles != 400)
    {
        Info_Refuse("has " + std::to_string(info.m_nozzles) + " nozzles; map " + info.m_map + " has 400");
    }
    m_lineBits = twin.LineBitCount(info.m_nozzles);
    m_swathCount = (info.m_pageHeight - 1) / info.m_nozzles + 1;
    Units_Check();
    Stripes_Place();
}

// Limits that keep every sum below inside 32 bits, and every division away from 0.
void CPageModel::Info_Check() const
{
    constexpr std::int64_t mostPositions = 1 << 24;
    constexpr std::int64_t mostUnits = 512;
    const SBoardInfo& info = m_info;
    if (info.m_version < 2)
    {
        Info_Refuse("is of version 1, which says neither zones, offsets nor the page's size; convert the job again");
    }
    Range_Check("PrinterDataWidth", info.m_printerDataWidth, 1, mostUnits);
    Range_Check("Nozzles", info.m_nozzles, 1, std::numeric_limits<std::int32_t>::max());
    Range_Check("BitsPerPixel", info.m_bitsPerPixel, 1, 2);
    Range_Check("LinesPerPosition", info.m_linesPerPosition, 1, info.m_bitsPerPixel);
    Range_Check("Page.Width", info.m_pageWidth, 1, mostPositions);
    Range_Check("Page.Height", info.m_pageHeight, 1, std::numeric_limits<std::int32_t>::max());
    Range_Check("Pages.Count", info.m_pageCount, 1, std::numeric_limits<std::int32_t>::max());
    Range_Check("the number of bands", info.StepCount(), 1, std::numeric_limits<std::int32_t>::max());
    Range_Check("LeftStripeWidth", info.m_leftZone, 0, mostPositions);
    Range_Check("RightStripeWidth", info.m_rightZone, 0, mostPositions);
    Range_Check("UnitPitch", info.m_unitPitch, 0, mostPositions);
    Range_Check("UnitPositionCount", info.m_unitPositionCount, 0, mostUnits);
    Range_Check("MaxOffset_1", info.m_maxOffset_1, 0, mostPositions);
    Range_Check("MaxOffset_2", info.m_maxOffset_2, 0, mostPositions);
    Range_Check("the number of units", static_cast<std::int64_t>(info.m_units.size()), 0, mostUnits);
    for (const SBoardUnitInfo& unit : info.m_units)
    {
        Range_Check("UnitId", unit.m_unitId, 0, mostUnits - 1);
        Range_Check("UnitPosition", unit.m_unitPosition, 0, mostUnits - 1);
        Range_Check("Horizon_1", unit.m_horizon_1, 0, info.m_maxOffset_1);
        Range_Check("Horizon_2", unit.m_horizon_2, 0, info.m_maxOffset_2);
        Range_Check("StripeLength", unit.m_stripeLength, 0, mostPositions);
    }
}

bool CPageModel::HasStripes(const SBoardUnitInfo& unit) const
{
    return unit.m_separation.empty() && !unit.m_stripeColor.empty() && m_info.m_stage != "base" &&
           m_info.m_leftZone + m_info.m_rightZone > 0;
}

// In the zone that comes first, stripes are counted from the pass's beginning: the left ones from the unit position 0,
// the right ones from the last. In the other zone they are counted from the end of the pass less the largest offset.
// Everywhere a unit comes later by its own offset.
void CPageModel::Stripes_Place()
{
    for (const SBoardUnitInfo& unit : m_info.m_units)
    {
        if (!HasStripes(unit))
        {
            continue;
        }
        const std::int64_t pitch = m_info.m_unitPitch;
        const std::int64_t before = unit.m_unitPosition;
        const std::int64_t behind = std::int64_t{m_info.m_unitPositionCount} - 1 - unit.m_unitPosition;
        SStripes stripes;
        for (const bool bLeftToRight : {false, true})
        {
            const std::int64_t offset = Offset_Of(unit, bLeftToRight);
            const std::int64_t end = std::int64_t{PositionCount(bLeftToRight)} -
                                     (bLeftToRight ? m_info.m_maxOffset_2 : m_info.m_maxOffset_1);
            const std::int64_t left = bLeftToRight ? before * pitch : end - (before + 1) * pitch;
            const std::int64_t right = bLeftToRight ? end - (behind + 1) * pitch : behind * pitch;
            const auto Place = [&](int zone, std::int64_t begin, std::array<int, 2>& places)
            {
                const bool bPrinted = bLeftToRight || m_info.m_bBidirectional;
                if (zone < 1 || !bPrinted)
                {
                    return;
                }
                if (begin + offset < 0 || begin + offset + unit.m_stripeLength > PositionCount(bLeftToRight))
                {
                    Info_Refuse("puts a stripe of unit " + std::to_string(unit.m_unitId) + " outside of its band");
                }
                places[bLeftToRight ? 1 : 0] = static_cast<int>(begin + offset);
            };
            Place(m_info.m_leftZone, left, stripes.m_left);
            Place(m_info.m_rightZone, right, stripes.m_right);
        }
        m_stripes[unit.m_unitId] = stripes;
    }
}

void CPageModel::Units_Check() const
{
    std::set<int> ids;
    for (const SBoardUnitInfo& unit : m_info.m_units)
    {
        if (unit.m_unitId >= m_style.UnitCount() || !ids.insert(unit.m_unitId).second)
        {
            Info_Refuse("has the unit " + std::to_string(unit.m_unitId) +
                        ", which is there twice or has no place in a frame");
        }
    }
}

int CPageModel::PositionCount(bool bLeftToRight) const
{
    return (bLeftToRight ? m_info.m_maxOffset_2 : m_info.m_maxOffset_1) + m_info.m_leftZone + m_info.m_pageWidth +
           m_info.m_rightZone;
}

const SBoardUnitInfo* CPageModel::Unit_Find(int unitId) const
{
    const auto found = std::ranges::find(m_info.m_units, unitId, &SBoardUnitInfo::m_unitId);
    return found == m_info.m_units.end() ? nullptr : &*found;
}

int CPageModel::Position_OfColumn(const SBoardUnitInfo& unit, int column, bool bLeftToRight) const
{
    const int met = bLeftToRight ? column : m_info.m_pageWidth - 1 - column;
    return (bLeftToRight ? m_info.m_leftZone : m_info.m_rightZone) + Offset_Of(unit, bLeftToRight) + met;
}

SModelPoint CPageModel::Point_Get(const SBoardUnitInfo& unit, int nozzle, int position, int swath) const
{
    const bool bLeftToRight = IsLeftToRight(swath);
    const int firstZone = bLeftToRight ? m_info.m_leftZone : m_info.m_rightZone;
    const int lastZone = bLeftToRight ? m_info.m_rightZone : m_info.m_leftZone;
    const int met = position - firstZone - Offset_Of(unit, bLeftToRight); // columns of the page before this one
    SModelPoint point;
    if (const auto stripes = m_stripes.find(unit.m_unitId); stripes != m_stripes.end())
    {
        // Where the two meet, the right one is made last.
        const auto Within = [&](const std::array<int, 2>& begins)
        {
            const int begin = begins[bLeftToRight ? 1 : 0];
            const bool bWithin = begin >= 0 && position >= begin && position < begin + unit.m_stripeLength;
            point.m_stripePosition = bWithin ? position - begin : -1;
            return bWithin;
        };
        if (Within(stripes->second.m_right))
        {
            point.m_area = EModelArea::RightStripe;
            return point;
        }
        if (Within(stripes->second.m_left))
        {
            point.m_area = EModelArea::LeftStripe;
            return point;
        }
    }
    if (met >= 0 && met < m_info.m_pageWidth)
    {
        if (!unit.m_separation.empty())
        {
            const std::int64_t row = std::int64_t{swath} * m_info.m_nozzles + nozzle;
            point.m_area = row < m_info.m_pageHeight ? EModelArea::Page : EModelArea::Below;
            point.m_row = static_cast<int>(std::min<std::int64_t>(row, std::numeric_limits<int>::max()));
            point.m_column = bLeftToRight ? met : m_info.m_pageWidth - 1 - met;
        }
    }
    else if (met < 0)
    {
        point.m_area = position < firstZone ? EModelArea::FirstZone : EModelArea::Margin;
    }
    else
    {
        point.m_area = met < m_info.m_pageWidth + lastZone ? EModelArea::LastZone : EModelArea::Margin;
    }
    return point;
}

std::vector<SModelBit> CPageModel::Bits_Of(const SBoardUnitInfo& unit, int nozzle, int position) const
{
    std::vector<SModelBit> bits;
    const auto places = CBoardTwin(m_style).Places_Of(unit.m_unitId, unit.m_direction, nozzle, m_info.m_nozzles);
    for (int plane = 0; plane < m_info.m_linesPerPosition; ++plane)
    {
        for (const STwinPlace& place : places)
        {
            bits.push_back({position * m_info.m_linesPerPosition + plane, place.position});
        }
    }
    return bits;
}

// By unit, the lines of a position are the pixel's bits, the more significant first.
int CPageModel::PixelBit_Of(const STwinSource& source, int line) const
{
    if (source.place.bDotCode)
    {
        return -1;
    }
    return m_info.m_linesPerPosition > 1 ? line % m_info.m_linesPerPosition : source.place.bit;
}

SModelSource CPageModel::Source_Of(int swath, const SModelBit& bit) const
{
    SModelSource source;
    source.m_position = bit.m_line / m_info.m_linesPerPosition;
    source.m_layout = CBoardTwin(m_style).Source_Of(bit.m_bit, m_info.m_nozzles,
                                                    [&](int unitId)
                                                    {
                                                        const SBoardUnitInfo* pUnit = Unit_Find(unitId);
                                                        return pUnit == nullptr ? leftToRight : pUnit->m_direction;
                                                    });
    source.m_pUnit = Unit_Find(source.m_layout.unitIndex);
    if (source.m_pUnit == nullptr || source.m_layout.nozzle < 0)
    {
        return source;
    }
    source.m_nozzle = source.m_layout.nozzle;
    source.m_pixelBit = PixelBit_Of(source.m_layout, bit.m_line);
    source.m_point = Point_Get(*source.m_pUnit, source.m_nozzle, source.m_position, swath);
    source.m_pixelBitCount = m_info.m_bitsPerPixel;
    return source;
}

bool CPageModel::Bit_IsSet(const SModelSource& source, int pixel)
{
    if (source.m_pUnit == nullptr || source.m_nozzle < 0)
    {
        return false;
    }
    if (source.m_layout.place.bDotCode)
    {
        return pixel != 0 && source.m_layout.place.bDotBit;
    }
    return (pixel >> (source.m_pixelBitCount - 1 - source.m_pixelBit) & 1) == 1;
}

int CPageModel::Pixel_Of(const SModelSource& source, const CModelInk& ink)
{
    const SModelPoint& point = source.m_point;
    if (source.m_pUnit == nullptr || source.m_nozzle < 0)
    {
        return 0;
    }
    if (point.m_area == EModelArea::Page)
    {
        return ink.Page_Get(*source.m_pUnit, point.m_row, point.m_column);
    }
    const bool bStripe = point.m_area == EModelArea::LeftStripe || point.m_area == EModelArea::RightStripe;
    return bStripe ? ink.Stripe_Get(*source.m_pUnit, source.m_nozzle, point.m_stripePosition) : 0;
}

SBandHeader CPageModel::Header_Get(int swath, int bandNo, const CModelInk& ink, int page) const
{
    const std::int64_t firstRow = std::int64_t{swath} * m_info.m_nozzles;
    SBandHeader header;
    header.m_bandNo = bandNo;
    header.m_bandAttr = IsLeftToRight(swath) ? leftToRight : rightToLeft;
    header.m_swathIndex = swath;
    header.m_pageIndex = page;
    header.m_firstRow = static_cast<std::int32_t>(firstRow);
    header.m_rowCount =
        static_cast<std::int32_t>(std::min<std::int64_t>(m_info.m_nozzles, m_info.m_pageHeight - firstRow));
    header.m_columnCount = m_info.m_pageWidth;
    for (const SBoardUnitInfo& unit : m_info.m_units)
    {
        if (!unit.m_separation.empty())
        {
            header.m_unitIndex = unit.m_unitId;
            header.m_unitDirection = unit.m_direction;
            header.m_bSkip = m_info.m_bSkipBlank && ink.IsBlank(unit, swath);
            break;
        }
    }
    return header;
}

SBoardPass CPageModel::Pass_Get(int swath) const
{
    const bool bLeftToRight = IsLeftToRight(swath);
    SBoardPass pass;
    pass.m_bLeftToRight = bLeftToRight;
    pass.m_positions = PositionCount(bLeftToRight);
    pass.m_firstLineColumn = bLeftToRight ? -m_info.m_leftZone : m_info.m_pageWidth + m_info.m_rightZone - 1;
    pass.m_columnStep = bLeftToRight ? 1 : -1;
    pass.m_firstZone = bLeftToRight ? m_info.m_leftZone : m_info.m_rightZone;
    pass.m_lastZone = bLeftToRight ? m_info.m_rightZone : m_info.m_leftZone;
    pass.m_maxOffset = bLeftToRight ? m_info.m_maxOffset_2 : m_info.m_maxOffset_1;
    return pass;
}

bool CPageModel::IsSkipped(int swath, const CModelInk& ink) const
{
    return m_info.m_bSkipBlank &&
           std::ranges::all_of(m_info.m_units, [&](const SBoardUnitInfo& unit)
                               { return unit.m_separation.empty() || ink.IsBlank(unit, swath); });
}

void CPageModel::Lines_Make(int swath, int firstLine, std::span<unsigned char> bytes, const CModelInk& ink) const
{
    const auto lineBytes = static_cast<std::size_t>(LineBytes());
    const auto lineCount = static_cast<int>(bytes.size() / lineBytes);
    const CBoardTwin twin(m_style);
    for (const SBoardUnitInfo& unit : m_info.m_units)
    {
        for (int nozzle = 0; nozzle < m_info.m_nozzles; ++nozzle)
        {
            const auto places = twin.Places_Of(unit.m_unitId, unit.m_direction, nozzle, m_info.m_nozzles);
            for (int i = 0; i < lineCount; ++i)
            {
                const int line = firstLine + i;
                SModelSource source;
                source.m_pUnit = &unit;
                source.m_nozzle = nozzle;
                source.m_pixelBitCount = m_info.m_bitsPerPixel;
                source.m_point = Point_Get(unit, nozzle, line / m_info.m_linesPerPosition, swath);
                const int pixel = Pixel_Of(source, ink);
                if (pixel == 0)
                {
                    continue;
                }
                for (const STwinPlace& place : places)
                {
                    source.m_layout.place = place;
                    source.m_pixelBit = PixelBit_Of(source.m_layout, line);
                    if (Bit_IsSet(source, pixel))
                    {
                        bytes[static_cast<std::size_t>(i) * lineBytes + static_cast<std::size_t>(place.position / 8)] |=
                            static_cast<unsigned char>(0x80 >> (place.position % 8));
                    }
                }
            }
        }
    }
}
