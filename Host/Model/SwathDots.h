// The dots of one swath where they lie on the page: what a band of an output says, put back into rows and columns, with
// the offsets of the units taken out and the passes turned round. Beside the page's columns lie those of the zones,
// with the ink stripes. Memory is that of a swath. One thread at a time.
#pragma once

#include "Host/Model/BoardDots.h"
#include "Host/Model/PageModel.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

// Dots of a unit by value, as in SDotCount, by where they lie.
struct SPlacedDots
{
    std::array<std::int64_t, 4> m_page = {};   // on the page
    std::array<std::int64_t, 4> m_beside = {}; // in the zones, and below the page

    bool operator==(const SPlacedDots&) const = default;
};

class CSwathDots
{
public:
    // The model must outlive this. Throws CInputError as CBoardDots does.
    explicit CSwathDots(const CPageModel& model);

    // Columns count as those of the page: the first one is below 0 where there is a left zone. Rows are nozzles.
    int FirstColumn() const { return m_firstColumn; }
    int ColumnCount() const { return m_columnCount; }
    int RowCount() const { return m_model.Info().m_nozzles; }

    // Values of a dot: 1 bit, or 2.
    int PixelBits() const { return m_dots.PixelBits(); }

    // No dot anywhere; so it begins.
    void Clear();
    bool IsBlank() const { return m_bBlank; }

    // Takes the dots of a band, instead of those that were there. Its sizes are what the model says.
    void Load(const CBandData& band);

    // What was taken so far: by unit as in the info; bits that are no nozzle's; dots in the room for offsets, which lie
    // at no column.
    const std::vector<SPlacedDots>& Counts() const { return m_counts; }
    std::int64_t StrayCount() const { return m_strayCount; }
    std::int64_t OutsideCount() const { return m_outsideCount; }

    // The values of all units at a place: two bits for each unit, the first four in the first byte, from its high bits
    // on. A row begins at FirstColumn(). Not for a blank swath: memory is taken when the first band is there, whose
    // size has then been held against its file.
    static constexpr int unitsPerByte = 4;
    std::size_t BytesPerDot() const { return m_bytesPerDot; }
    const unsigned char* Row_Get(int row) const
    {
        return m_bytes.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columnCount) * m_bytesPerDot;
    }
    static int Value_Get(const unsigned char* pDot, int unit)
    {
        return pDot[unit / unitsPerByte] >> (6 - unit % unitsPerByte * 2) & 3;
    }

private:
    const CPageModel& m_model;
    CBoardDots m_dots;
    int m_firstColumn;
    int m_columnCount;
    std::size_t m_bytesPerDot;
    std::vector<unsigned char> m_bytes;
    bool m_bBlank = true;
    std::vector<SPlacedDots> m_counts;
    std::int64_t m_strayCount = 0;
    std::int64_t m_outsideCount = 0;
};
