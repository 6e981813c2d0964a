// Pictures of a page out of its board bands: composed in ink colours, one unit alone, or what differs between two
// outputs. The page goes by swath after swath; memory holds one of each output. The main thread; `OnSwath` is called
// before each swath.
#pragma once

#include "Host/Command/PageBands.h"
#include "Host/Model/SwathDots.h"
#include "Host/Output/ByteSink.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

// A page on its way through.
class CPreviewPage
{
public:
    CPreviewPage(const std::filesystem::path& output, std::optional<int> page);

    const SBoardInfo& Info() const { return m_bands.Model().Info(); }
    const CPageBands& Bands() const { return m_bands; }
    const CSwathDots& Dots() const { return m_dots; }

    // Swaths in their order; Dots() are then this one's. Throws as CPageBands does.
    void Swath_Take(int swath);
    void Finish() { m_bands.Finish(); }

private:
    CPageBands m_bands;
    CSwathDots m_dots;
};

// The part of the page that a picture shows, in dots; rows and columns count as those of the page.
struct SPreviewArea
{
    std::int64_t m_firstRow = 0;
    std::int64_t m_rowCount = 0;
    std::int64_t m_firstColumn = 0;
    std::int64_t m_columnCount = 0;
    int m_reduce = 1; // dots of a pixel, in both directions

    std::int64_t Width() const; // pixels
    std::int64_t Height() const;
};

inline constexpr int g_mostReduction = 4096;

// All of the page, with its zones and what is printed below it if it has zones, or without them.
SPreviewArea PreviewArea_Whole(const SBoardInfo& info, bool bZones);

// The reduction at which neither side has more than `most` pixels.
int Reduction_Choose(const SPreviewArea& area, int most);

// Throws what shall end the work.
using OnSwath = std::function<void(int swath)>;

// In the colours of the units' inks (0xRRGGBB, in the info's order), which darken one another and the paper as
// transparent inks do; the smaller drops of 2-bit pixels by a third and by two thirds. The page is white, what lies
// around it light grey.
void Preview_Compose(CPreviewPage& page, const SPreviewArea& area, const std::vector<std::uint32_t>& colors,
                     CByteSink& sink, const OnSwath& onSwath);

// One unit in black, by its place in the info; smaller drops in grey.
void Preview_Plane(CPreviewPage& page, const SPreviewArea& area, std::size_t unit, CByteSink& sink,
                   const OnSwath& onSwath);

// Dots of a unit in two outputs.
struct SDotChanges
{
    std::int64_t m_both = 0;  // the same in both
    std::int64_t m_onlyA = 0; // in the first one only
    std::int64_t m_onlyB = 0; // in the second one only
    std::int64_t m_size = 0;  // in both, but of another drop size

    std::int64_t Count() const { return m_onlyA + m_onlyB + m_size; }
};

// The colours of a picture of changes, 0xRRGGBB. A pixel that has a change has its colour, however many dots it stands
// for; one that has changes of several kinds, Color_Several. Dots of both outputs are grey.
enum EChangeColor : std::uint32_t
{
    Color_OnlyA = 0xd62728,
    Color_OnlyB = 0x1f77ff,
    Color_Size = 0xff9f0e,
    Color_Several = 0x8b1fb0,
    Color_Both = 0xc0c0c0,
};

// What differs between two pages of the same shape (Shapes_Check), in the units of these places in the info. Returns
// the changes of each of all units, wherever they are.
std::vector<SDotChanges> Preview_Diff(CPreviewPage& a, CPreviewPage& b, const SPreviewArea& area,
                                      const std::vector<std::size_t>& units, CByteSink& sink, const OnSwath& onSwath);

// Throws CInputError, which says what differs, unless both have the same page, zones, nozzles and units. Their layouts,
// passes and offsets may differ.
void Shapes_Check(const CPreviewPage& a, const CPreviewPage& b);
