// The walk over the bits of a line that all pictures of it share.
#include "Host/Command/LayoutPicture.h"

#include <algorithm>
#include <array>
#include <map>

namespace
{

constexpr int bitsPerByte = 8;

// Light enough for black numbers; units beyond take them again.
constexpr std::array<std::uint32_t, 16> unitColors = {0x8fd3f4, 0xf7a8c9, 0xf9e784, 0xb8bcc2, 0xa8e6a1, 0xf6b26b,
                                                      0xc9b1f0, 0x9fe0d0, 0xe6a5a5, 0xbcd08f, 0xf4c7e8, 0xa7b8e8,
                                                      0xe0cba8, 0xc7ecee, 0xd6d6a5, 0xe8b7a0};

// Places in the picture's colours; the units' begin behind the others but black.
enum EColor : std::size_t
{
    Color_Ground,
    Color_Unused,
    Color_CellEdge,
    Color_LegendEdge,
    Color_FirstUnit,
};

// Bits of a frame that stand side by side in the picture.
constexpr int cellsPerRow = 64;
constexpr int cellWidth = 34;
constexpr int cellHeight = 18;
constexpr int leftMargin = 150;
constexpr int topMargin = 64;
constexpr int edge = 10;
constexpr int leastWidth = 700; // the words above the cells need it
constexpr int letterDrop = 13;  // from the top of a row to where its letters stand
constexpr int legendColumns = 4;
constexpr int legendWidth = 170;

SPictureFrame Frame_Make(std::int64_t width, std::int64_t height)
{
    SPictureFrame frame = {width, height, {0xffffff, 0xeeeeee, 0x999999, 0x666666}};
    frame.m_colors.insert(frame.m_colors.end(), unitColors.begin(), unitColors.end());
    frame.m_colors.push_back(0x000000);
    return frame;
}

// The nozzle, and with two bits for each which of them.
std::string Cell_Text(const SLayout& layout, const SLayoutBit& bit)
{
    const char* drop = layout.m_bitsPerNozzle < 2 ? "" : bit.m_bit == 0 ? "H" : "L";
    return std::to_string(bit.m_nozzle) + drop;
}

void Title_Draw(const SLayout& layout, CPicture& picture)
{
    const SBoardInfo& info = layout.m_info;
    picture.Text_Draw(edge, 18,
                      "Layout " + info.m_map + ": " + std::to_string(info.m_lineBits) + " bits, frames of " +
                          std::to_string(info.m_frameBits),
                      ETextAnchor::Left, ETextSize::Big);
    picture.Text_Draw(
        edge, 36,
        std::string("A cell is a bit, with its nozzle's number") +
            (layout.m_bitsPerNozzle > 1 ? " and H or L, the high or the low bit of its pixel" : "") +
            (info.m_linesPerPosition > 1 ? "; a line for the high bits, then a line for the low bits" : "") +
            "; grey cells are never set.",
        ETextAnchor::Left, ETextSize::Small);
}

void Legend_Draw(const SBoardInfo& info, const std::map<int, std::size_t>& colorOf, CPicture& picture)
{
    for (std::size_t i = 0; i < info.m_units.size(); ++i)
    {
        const SBoardUnitInfo& unit = info.m_units[i];
        const auto x = static_cast<std::int64_t>(edge + i % legendColumns * legendWidth);
        const auto y = static_cast<std::int64_t>(44 + i / legendColumns * cellHeight);
        picture.Box_Draw({x, y, 14, 12}, colorOf.at(unit.m_unitId), Color_LegendEdge);
        picture.Text_Draw(x + 20, y + 10, BoardUnit_Text(unit), ETextAnchor::Left, ETextSize::Small);
    }
}

} // namespace

void Layout_Draw(const SLayout& layout, std::int64_t firstFrame, std::int64_t frameCount, const PictureMaker& make)
{
    const SBoardInfo& info = layout.m_info;
    const std::int64_t frames =
        std::clamp<std::int64_t>(info.m_lineBits / info.m_frameBits - firstFrame, 0, frameCount);
    const std::int64_t firstBit = firstFrame * info.m_frameBits;
    const int across = std::min(info.m_frameBits, cellsPerRow);
    const std::int64_t rowsPerFrame = (info.m_frameBits + across - 1) / across;
    const auto legendRows = static_cast<std::int64_t>((info.m_units.size() + legendColumns - 1) / legendColumns);
    const std::int64_t top = topMargin + legendRows * cellHeight;
    const std::unique_ptr<CPicture> picture = make(Frame_Make(
        std::max(leftMargin + across * cellWidth + edge, leastWidth), top + frames * rowsPerFrame * cellHeight + edge));
    std::map<int, std::size_t> colorOf;
    for (std::size_t i = 0; i < info.m_units.size(); ++i)
    {
        colorOf[info.m_units[i].m_unitId] = Color_FirstUnit + i % unitColors.size();
    }
    Title_Draw(layout, *picture);
    Legend_Draw(info, colorOf, *picture);
    std::map<std::int64_t, const SLayoutBit*> bitAt;
    for (const SLayoutBit& bit : layout.m_bits)
    {
        for (const std::int64_t place : bit.m_places)
        {
            bitAt[place] = &bit;
        }
    }
    for (std::int64_t i = 0; i < frames * info.m_frameBits; ++i)
    {
        const std::int64_t inFrame = i % info.m_frameBits;
        const std::int64_t x = leftMargin + inFrame % across * cellWidth;
        const std::int64_t y = top + (i / info.m_frameBits * rowsPerFrame + inFrame / across) * cellHeight;
        if (inFrame % across == 0)
        {
            picture->Above_Finish(y);
            picture->Text_Draw(edge, y + letterDrop,
                               "frame " + std::to_string(firstFrame + i / info.m_frameBits) + ", byte " +
                                   std::to_string((firstBit + i) / bitsPerByte),
                               ETextAnchor::Left, ETextSize::Small);
        }
        const auto found = bitAt.find(firstBit + i);
        picture->Box_Draw({x, y, cellWidth, cellHeight},
                          found == bitAt.end() ? Color_Unused : colorOf.at(found->second->m_unitId), Color_CellEdge);
        if (found != bitAt.end())
        {
            picture->Text_Draw(x + cellWidth / 2, y + letterDrop, Cell_Text(layout, *found->second),
                               ETextAnchor::Middle, ETextSize::Small);
        }
    }
    picture->Finish();
}
