// An independent model of an output: from what a job is and where its separations have ink, what every bit of every
// board band must be; and back from a bit to the unit, the nozzle and the pixel that it prints. `verify` holds outputs
// against it, `explain` answers from it. It shares no line with the library, nor with the host's own geometry and band
// making: it knows the board info, which is data, the layouts of CBoardTwin and the stripes of CStripeModel.
//
// The questions are pure functions of the info; any thread.
#pragma once

#include "Host/Board/BoardInfo.h"
#include "Host/Model/BoardTwin.h"

#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

// What a unit has at a scan position of a band.
enum class EModelArea
{
    Page,        // a column of the page
    Below,       // a column of the page, but a row below its last one
    FirstZone,   // in the zone that the carriage meets first; no stripe
    LastZone,    // in the zone that it meets last; no stripe
    Margin,      // between a zone and the page, or behind the last zone: room that the offsets need
    LeftStripe,  // an ink stripe of the unit
    RightStripe, // the other one
    Nothing,     // the unit prints neither page nor stripes
};

// What one nozzle of a unit prints at one scan position.
struct SModelPoint
{
    EModelArea m_area = EModelArea::Nothing;
    int m_row = -1;            // of the page; -1 outside of Page and Below
    int m_column = -1;         // of the page; -1 outside of Page and Below
    int m_stripePosition = -1; // of the stripe, from its first scan position; -1 outside of stripes

    bool operator==(const SModelPoint&) const = default;
};

// A bit of a board band.
struct SModelBit
{
    int m_line = 0;
    std::int64_t m_bit = 0; // of the line, from the most significant bit of its first byte

    bool operator==(const SModelBit&) const = default;
};

// What a bit of a band shows.
struct SModelSource
{
    // What is said of the layout: a unit's pixel, or nothing that a unit prints.
    STwinSource m_layout;
    const SBoardUnitInfo* m_pUnit = nullptr; // null: padding, or a unit that the job does not have
    int m_position = 0;                      // scan position of the line
    int m_nozzle = -1;                       // -1 without a unit
    int m_pixelBit = -1;                     // of the pixel, 0 = the more significant; -1: any ink counts
    int m_pixelBitCount = 1;                 // bits of a pixel
    SModelPoint m_point;                     // what the nozzle prints there
};

// The pixels of one swath, as the model asks for them: ink of a separation's page row and column, and of a stripe.
class CModelInk
{
public:
    virtual ~CModelInk() = default;

    // The pixel's value, 0 to 3, of the unit's separation.
    virtual int Page_Get(const SBoardUnitInfo& unit, int row, int column) const = 0;

    // The same of its stripe, at the nozzle.
    virtual int Stripe_Get(const SBoardUnitInfo& unit, int nozzle, int stripePosition) const = 0;

    // Whether the unit's separation has no ink in the rows of this swath. Asked for jobs that skip blank swaths only.
    virtual bool IsBlank(const SBoardUnitInfo& unit, int swath) const = 0;

    // Whether the unit has a separation on the page; without one the page is blank for it.
    virtual bool HasPage(const SBoardUnitInfo& unit) const { return !unit.m_separation.empty(); }
};

class CPageModel
{
public:
    // Throws CInputError if the info is of version 1, which does not say enough, or contradicts itself.
    explicit CPageModel(const SBoardInfo& info);

    const SBoardInfo& Info() const { return m_info; }

    // Swaths of a page; without SkipBlank there is a band for each. Swaths are counted by page everywhere here: each
    // page begins with one from left to right.
    int SwathCount() const { return m_swathCount; }
    int PageCount() const { return m_info.m_pageCount; }
    bool IsLeftToRight(int swath) const { return !m_info.m_bBidirectional || swath % 2 == 0; }

    int PositionCount(bool bLeftToRight) const;
    int LineCount(bool bLeftToRight) const { return PositionCount(bLeftToRight) * m_info.m_linesPerPosition; }
    std::int64_t LineBits() const { return m_lineBits; }
    std::int64_t LineBytes() const { return (m_lineBits + 7) / 8; }

    // The unit of this id; null if there is none.
    const SBoardUnitInfo* Unit_Find(int unitId) const;
    static int Offset_Of(const SBoardUnitInfo& unit, bool bLeftToRight)
    {
        return bLeftToRight ? unit.m_horizon_2 : unit.m_horizon_1;
    }

    // What the nozzle prints at the scan position, both in their ranges.
    SModelPoint Point_Get(const SBoardUnitInfo& unit, int nozzle, int position, int swath) const;

    // The scan position at which the unit prints this column of the page.
    int Position_OfColumn(const SBoardUnitInfo& unit, int column, bool bLeftToRight) const;

    // The bits of a band that show this nozzle's pixel at the scan position: none if the layout has no place for it.
    std::vector<SModelBit> Bits_Of(const SBoardUnitInfo& unit, int nozzle, int position) const;

    // What a bit of the swath's band shows; line and bit in their ranges.
    SModelSource Source_Of(int swath, const SModelBit& bit) const;

    // What the bit must be, if its pixel has this value.
    static bool Bit_IsSet(const SModelSource& source, int pixel);

    // The pixel that the source prints; 0 where it prints none.
    static int Pixel_Of(const SModelSource& source, const CModelInk& ink);

    // What the header of the swath's band must be, as the `bandNo`th of the output.
    SBandHeader Header_Get(int swath, int bandNo, const CModelInk& ink, int page = 0) const;
    SBoardPass Pass_Get(int swath) const; // but for m_bBlank

    // Whether the output has no band for this swath.
    bool IsSkipped(int swath, const CModelInk& ink) const;

    // Sets the bits of lines `firstLine` on: `bytes` holds whole lines of LineBytes(), zeroed. Goes by the units'
    // pixels; what Source_Of says of the same bit is the same.
    void Lines_Make(int swath, int firstLine, std::span<unsigned char> bytes, const CModelInk& ink) const;

private:
    void Info_Check() const;
    void Stripes_Place();
    void Units_Check() const;
    int PixelBit_Of(const STwinSource& source, int line) const;
    bool HasStripes(const SBoardUnitInfo& unit) const;

    SBoardInfo m_info;
    STwinStyle m_style;
    int m_swathCount = 0;
    std::int64_t m_lineBits = 0;

    // The first scan positions of a unit's left and right stripe, for right to left and left to right; -1: none.
    struct SStripes
    {
        std::array<int, 2> m_left = {-1, -1};
        std::array<int, 2> m_right = {-1, -1};
    };
    std::map<int, SStripes> m_stripes; // by unit id
};
