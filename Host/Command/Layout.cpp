// Probing a data map, and what it was found to do.
#include "Host/Command/Layout.h"

#include "DataMap/PrintUnitDataMap_03.h"
#include "DataMap/PrintUnitDataMap_03_01.h"
#include "DataMap/PrintUnitDataMap_1.h"
#include "DataMap/PrintUnitDataMap_2.h"
#include "DataMap/PrintUnitDataMap_5.h"
#include "DataMap/PrintUnitDataMap_6.h"
#include "DataMap/PrintUnitDataMap_7.h"
#include "DataMap/PrintUnitDataMap_8.h"
#include "Host/Command/Command.h"
#include "Host/HostError.h"
#include "Host/Input/SeparationInfo.h"
#include "Host/Job/JobGeometry.h"
#include "Host/Job/JobPage.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <sstream>
#include <utility>

namespace
{

using CJson = nlohmann::ordered_json;

constexpr int bitsPerByte = 8;

template<class TMap, class... TArguments>
std::unique_ptr<CPrintUnitDataMap_Base> Map_Init(TArguments... arguments)
{
    auto map = std::make_unique<TMap>();
    if (!map->Init(arguments...))
    {
        throw CRunError("the data map refuses the job's options");
    }
    return map;
}

// The map that the stage gets for this job.
std::unique_ptr<CPrintUnitDataMap_Base> Map_Make(const SJob& job)
{
    const int width = job.m_dpOption.m_printerDataWidth;
    switch (job.m_map.m_class)
    {
    case EMapClass::Map_1:
        return Map_Init<CPrintUnitDataMap_1>(width);
    case EMapClass::Map_2:
        return Map_Init<CPrintUnitDataMap_2>(job.m_dotSizeMode, width);
    case EMapClass::Map_03:
        return Map_Init<CPrintUnitDataMap_03>(1, width);
    case EMapClass::Map_03_01:
        return Map_Init<CPrintUnitDataMap_03_01>(1, width);
    case EMapClass::Map_5:
        return Map_Init<CPrintUnitDataMap_5>(job.m_map.m_srcBitCount, width);
    case EMapClass::Map_6:
        return Map_Init<CPrintUnitDataMap_6>(job.m_map.m_srcBitCount, width);
    case EMapClass::Map_7:
        return Map_Init<CPrintUnitDataMap_7>(job.m_dotSizeMode, width);
    case EMapClass::Map_8:
        return Map_Init<CPrintUnitDataMap_8>(width);
    case EMapClass::None:
        break;
    }
    throw CRunError("there is no data map for the job's options");
}

// The scratch object that a thread has while it maps.
class CScratch
{
public:
    explicit CScratch(const CPrintUnitDataMap_Base& map) : m_map(map), m_pScratch(map.CustomParam_Create()) {}
    ~CScratch()
    {
        if (m_pScratch != nullptr)
        {
            m_map.CustomParam_Release(m_pScratch);
        }
    }
    CScratch(const CScratch&) = delete;
    CScratch& operator=(const CScratch&) = delete;

    void* Get() const { return m_pScratch; }

private:
    const CPrintUnitDataMap_Base& m_map;
    void* m_pScratch;
};

std::vector<std::int64_t> Bits_Find(const std::vector<unsigned char>& line)
{
    std::vector<std::int64_t> places;
    for (std::size_t i = 0; i < line.size(); ++i)
    {
        for (int bit = 0; line[i] != 0 && bit < bitsPerByte; ++bit)
        {
            if ((line[i] >> (bitsPerByte - 1 - bit) & 1) != 0)
            {
                places.push_back(static_cast<std::int64_t>(i) * bitsPerByte + bit);
            }
        }
    }
    return places;
}

std::string Unit_Title(const SBoardUnitInfo& unit)
{
    return "unit " + std::to_string(unit.m_unitId) + (unit.m_name.empty() ? "" : " (" + unit.m_name + ")");
}

// For text between tags.
std::string Xml_Text(const std::string& text)
{
    std::string escaped;
    for (const char letter : text)
    {
        switch (letter)
        {
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '&':
            escaped += "&amp;";
            break;
        default:
            escaped += static_cast<unsigned char>(letter) < ' ' ? ' ' : letter;
        }
    }
    return escaped;
}

// Light enough for black numbers; units beyond take them again.
constexpr std::array colors = {"#8fd3f4", "#f7a8c9", "#f9e784", "#b8bcc2", "#a8e6a1", "#f6b26b", "#c9b1f0", "#9fe0d0",
                               "#e6a5a5", "#bcd08f", "#f4c7e8", "#a7b8e8", "#e0cba8", "#c7ecee", "#d6d6a5", "#e8b7a0"};

// Bits of a frame that stand side by side in the picture.
constexpr int cellsPerRow = 64;
constexpr int cellWidth = 34;
constexpr int cellHeight = 18;
constexpr int leftMargin = 150;
constexpr int topMargin = 64;

struct SSvgBox
{
    std::int64_t m_x;
    std::int64_t m_y;
    std::int64_t m_width;
    std::int64_t m_height;
};

void Svg_Rectangle(std::ostream& svg, const SSvgBox& box, const char* fill, const char* stroke)
{
    svg << R"(<rect x=")" << box.m_x << R"(" y=")" << box.m_y << R"(" width=")" << box.m_width << R"(" height=")"
        << box.m_height << R"(" fill=")" << fill << R"(" stroke=")" << stroke << R"("/>)";
}

// attributes: further ones, each with a space before it.
void Svg_Text(std::ostream& svg, std::int64_t x, std::int64_t y, const std::string& text, const char* attributes = "")
{
    svg << R"(<text x=")" << x << R"(" y=")" << y << '"' << attributes << '>' << text << "</text>";
}

// The nozzle, and with two bits for each which of them.
std::string Cell_Text(const SLayout& layout, const SLayoutBit& bit)
{
    const char* drop = layout.m_bitsPerNozzle < 2 ? "" : bit.m_bit == 0 ? "h" : "l";
    return std::to_string(bit.m_nozzle) + drop;
}

} // namespace

SLayout Layout_Probe(const SJob& job)
{
    const std::unique_ptr<CPrintUnitDataMap_Base> map = Map_Make(job);
    const CScratch scratch(*map);
    SLayout layout;
    layout.m_info = Job_BoardInfo(job, SSeparationInfo(), ProgramName_Get());
    const int lineBits = Job_UnitWidth(job) * Job_UnitBitsPerPixel(job);
    layout.m_bitsPerNozzle = lineBits / job.m_nozzles;
    const int boardBits = map->SrcPixelCount_2_BoardBitCount(Job_UnitWidth(job));
    std::vector<unsigned char> source(static_cast<std::size_t>((lineBits + bitsPerByte - 1) / bitsPerByte));
    std::vector<unsigned char> board(static_cast<std::size_t>((boardBits + bitsPerByte - 1) / bitsPerByte));
    for (const SJobUnit& unit : job.m_units)
    {
        SSrcBandDataParam param;
        param.m_unitIndex = unit.m_unitId;
        param.m_unitDirection = unit.m_direction;
        param.m_lineBitCount = lineBits;
        param.m_customParam = scratch.Get();
        for (int bit = 0; bit < lineBits; ++bit)
        {
            std::ranges::fill(source, static_cast<unsigned char>(0));
            std::ranges::fill(board, static_cast<unsigned char>(0));
            source[static_cast<std::size_t>(bit / bitsPerByte)] = static_cast<unsigned char>(0x80 >> bit % bitsPerByte);
            if (!map->MapData_Line(param, source.data(), board.data(), static_cast<int>(board.size())))
            {
                throw CRunError("the data map refuses a line of unit " + std::to_string(unit.m_unitId));
            }
            layout.m_bits.push_back(
                {unit.m_unitId, bit / layout.m_bitsPerNozzle, bit % layout.m_bitsPerNozzle, Bits_Find(board)});
        }
    }
    return layout;
}

std::string Layout_Text(const SLayout& layout)
{
    const SBoardInfo& info = layout.m_info;
    std::vector<std::vector<std::string>> columns = {{"nozzle"}};
    for (int nozzle = 0; nozzle < info.m_nozzles; ++nozzle)
    {
        columns.front().push_back(std::to_string(nozzle));
    }
    for (const SBoardUnitInfo& unit : info.m_units)
    {
        columns.push_back({Unit_Title(unit)});
        columns.back().resize(columns.front().size());
    }
    std::map<int, std::size_t> columnOf;
    for (std::size_t i = 0; i < info.m_units.size(); ++i)
    {
        columnOf[info.m_units[i].m_unitId] = i + 1;
    }
    for (const SLayoutBit& bit : layout.m_bits)
    {
        std::string& cell = columns[columnOf.at(bit.m_unitId)][static_cast<std::size_t>(bit.m_nozzle) + 1];
        cell += bit.m_bit > 0 ? " " : "";
        for (const std::int64_t place : bit.m_places)
        {
            cell += (place == bit.m_places.front() ? "" : "+") + std::to_string(place / bitsPerByte) + "." +
                    std::to_string(place % bitsPerByte);
        }
        cell += bit.m_places.empty() ? "-" : "";
    }
    std::ostringstream text;
    text << "Layout " << info.m_map << ": lines of " << info.m_lineBits << " bits, frames of " << info.m_frameBits
         << ". byte.bit of each bit of a nozzle; bit 0 is the most significant"
         << (layout.m_bitsPerNozzle > 1 ? "; the high bit, then the low bit" : "")
         << (info.m_linesPerPosition > 1 ? "; a line for the high bits, then a line for the low bits" : "") << ".\n";
    for (std::size_t row = 0; row < columns.front().size(); ++row)
    {
        std::string line;
        for (const std::vector<std::string>& column : columns)
        {
            const auto widest = std::ranges::max_element(column, {}, &std::string::size);
            line += (&column == &columns.front() ? "" : "  ") + column[row] +
                    std::string(widest->size() - column[row].size(), ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text << line << '\n';
    }
    return text.str();
}

std::string Layout_Json(const SLayout& layout)
{
    const SBoardInfo& info = layout.m_info;
    CJson units = CJson::array();
    for (const SBoardUnitInfo& unit : info.m_units)
    {
        CJson bits = CJson::array();
        for (const SLayoutBit& bit : layout.m_bits)
        {
            if (bit.m_unitId == unit.m_unitId)
            {
                bits.push_back({{"Nozzle", bit.m_nozzle}, {"PixelBit", bit.m_bit}, {"LineBits", bit.m_places}});
            }
        }
        units.push_back({{"UnitId", unit.m_unitId},
                         {"Name", unit.m_name},
                         {"Direction", unit.m_direction},
                         {"Bits", std::move(bits)}});
    }
    const CJson json = {{"Map", info.m_map},
                        {"LineBits", info.m_lineBits},
                        {"FrameBits", info.m_frameBits},
                        {"Planes", info.m_planes},
                        {"LinesPerPosition", info.m_linesPerPosition},
                        {"Nozzles", info.m_nozzles},
                        {"BitsPerNozzle", layout.m_bitsPerNozzle},
                        {"Units", std::move(units)}};
    return json.dump(-1, ' ', true, CJson::error_handler_t::replace) + '\n';
}

std::string Layout_Svg(const SLayout& layout, std::int64_t firstFrame, std::int64_t frameCount)
{
    const SBoardInfo& info = layout.m_info;
    const std::int64_t frames =
        std::clamp<std::int64_t>(info.m_lineBits / info.m_frameBits - firstFrame, 0, frameCount);
    const std::int64_t firstBit = firstFrame * info.m_frameBits;
    const int across = std::min(info.m_frameBits, cellsPerRow);
    const std::int64_t rowsPerFrame = (info.m_frameBits + across - 1) / across;
    const std::int64_t width = std::max<std::int64_t>(leftMargin + std::int64_t{across} * cellWidth + 10, 700);
    const auto legendRows = static_cast<std::int64_t>((info.m_units.size() + 3) / 4);
    const std::int64_t top = topMargin + legendRows * cellHeight;
    std::ostringstream svg;
    svg << R"(<svg xmlns="http://www.w3.org/2000/svg" width=")" << width << "\" height=\""
        << top + frames * rowsPerFrame * cellHeight + 10
        << "\" font-family=\"sans-serif\" font-size=\"11\">\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
        << R"(<text x="10" y="18" font-size="14">Layout )" << info.m_map << ": " << info.m_lineBits
        << " bits, frames of " << info.m_frameBits << "</text>\n"
        << R"(<text x="10" y="36">A cell is a bit, with its nozzle's number)"
        << (layout.m_bitsPerNozzle > 1 ? " and h or l, the high or the low bit of its pixel" : "")
        << "; grey cells are never set.</text>\n";
    std::map<int, const char*> colorOf;
    for (std::size_t i = 0; i < info.m_units.size(); ++i)
    {
        const char* pColor = colors[i % colors.size()];
        colorOf[info.m_units[i].m_unitId] = pColor;
        const auto x = static_cast<std::int64_t>(10 + i % 4 * 170);
        const auto y = static_cast<std::int64_t>(44 + i / 4 * cellHeight);
        Svg_Rectangle(svg, {x, y, 14, 12}, pColor, "#666");
        Svg_Text(svg, x + 20, y + 10, Xml_Text(Unit_Title(info.m_units[i])));
        svg << '\n';
    }
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
            Svg_Text(svg, 10, y + 13,
                     "frame " + std::to_string(firstFrame + i / info.m_frameBits) + ", byte " +
                         std::to_string((firstBit + i) / bitsPerByte));
            svg << '\n';
        }
        const auto found = bitAt.find(firstBit + i);
        Svg_Rectangle(svg, {x, y, cellWidth, cellHeight},
                      found == bitAt.end() ? "#eeeeee" : colorOf.at(found->second->m_unitId), "#999");
        if (found != bitAt.end())
        {
            Svg_Text(svg, x + cellWidth / 2, y + 13, Cell_Text(layout, *found->second), R"( text-anchor="middle")");
        }
        svg << '\n';
    }
    svg << "</svg>\n";
    return svg.str();
}
