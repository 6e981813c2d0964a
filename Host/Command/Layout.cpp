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
#include "Host/TextStream.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <memory>
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
        columns.push_back({BoardUnit_Text(unit)});
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
    CTextStream text;
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
