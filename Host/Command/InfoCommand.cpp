// The command info: one pass over the file, one band in memory.
#include "Host/Command/InfoCommand.h"

#include "Host/Board/BandHeaderWords.h"
#include "Host/Board/BoardReader.h"
#include "Host/Command/Answer.h"
#include "Host/HostError.h"
#include "Host/Model/BoardDots.h"
#include "Host/Model/Sha256.h"
#include "Host/PathText.h"
#include "Host/TextStream.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace
{

using CJson = nlohmann::ordered_json;

constexpr std::size_t mostDamages = 1000; // that are kept

struct SBandReport
{
    std::string m_place;
    SBandHeader m_header;
    SBoardPass m_pass;
    std::int32_t m_width = 0;
    std::int32_t m_height = 0;
    std::optional<SBandDots> m_dots; // none: the lines are not as long as the board info says
};

struct SOutputReport
{
    std::string m_file;
    std::string m_format; // empty: the file could not be opened as either
    std::int64_t m_fileSize = 0;
    SBoardInfo m_info;
    int m_pixelBits = 1;
    std::vector<SBandReport> m_bands;
    std::vector<SDotCount> m_dots; // of all bands
    std::int64_t m_lines = 0;
    std::int64_t m_bytes = 0; // of the lines, without what the file pads them with
    std::string m_hash;       // of the lines, band after band
    std::vector<SBoardDamage> m_damages;
    std::string m_layoutFault; // why dots cannot be counted
};

void Lines_Hash(const CBandData& band, CSha256& hash)
{
    const auto lineBytes =
        (static_cast<std::size_t>(band.m_width) * static_cast<std::size_t>(band.m_bitsPerPixel) + 7) / 8;
    for (int line = 0; line < band.m_height; ++line)
    {
        hash.Add({band.m_pData + std::int64_t{line} * band.m_bytesPerLine, lineBytes});
    }
}

void Dots_Add(const SBandDots& dots, std::vector<SDotCount>& sum)
{
    if (sum.empty())
    {
        sum = dots.m_units;
        return;
    }
    for (std::size_t i = 0; i < sum.size(); ++i)
    {
        std::ranges::transform(sum[i].m_dots, dots.m_units[i].m_dots, sum[i].m_dots.begin(), std::plus<>());
    }
}

void Band_Add(const CBandData& band, const SBoardPass& pass, const std::string& place, const CBoardDots* pDots,
              SOutputReport& report)
{
    SBandReport entry;
    entry.m_place = place;
    entry.m_header = band;
    entry.m_pass = pass;
    entry.m_width = band.m_width;
    entry.m_height = band.m_height;
    if (pDots != nullptr && pDots->IsFitting(band))
    {
        entry.m_dots = pDots->Count(band);
        Dots_Add(*entry.m_dots, report.m_dots);
    }
    report.m_lines += band.m_height;
    report.m_bytes += (std::int64_t{band.m_width} * band.m_bitsPerPixel + 7) / 8 * band.m_height;
    report.m_bands.push_back(std::move(entry));
}

std::unique_ptr<CBoardDots> Dots_Make(SOutputReport& report)
{
    try
    {
        auto dots = std::make_unique<CBoardDots>(report.m_info);
        report.m_pixelBits = dots->PixelBits();
        return dots;
    }
    catch (const CInputError& error)
    {
        report.m_layoutFault = error.what();
        report.m_damages.push_back({-1, -1, report.m_layoutFault, ""});
        return nullptr;
    }
}

// Whatever the file has, over every damage.
SOutputReport Output_Read(const std::string& file)
{
    SOutputReport report;
    report.m_file = file;
    std::unique_ptr<CBoardReader> reader;
    try
    {
        reader = CBoardReader::Open(Path_FromText(file));
    }
    catch (const CBoardDamageError& error)
    {
        report.m_damages.push_back(error.Damage_Get());
        return report;
    }
    report.m_format = reader->Format() == EBoardFormat::Tiff ? "tiff" : "raw";
    report.m_fileSize = reader->FileSize();
    report.m_info = reader->BoardInfo();
    const std::unique_ptr<CBoardDots> dots = Dots_Make(report);
    CSha256 hash;
    CBandData band;
    SBoardPass pass;
    for (bool bMore = true; bMore;)
    {
        try
        {
            bMore = reader->Band_Read(band, pass);
            if (bMore)
            {
                Lines_Hash(band, hash);
                Band_Add(band, pass, reader->Place(), dots.get(), report);
            }
        }
        catch (const CBoardDamageError& error)
        {
            if (report.m_damages.size() < mostDamages)
            {
                report.m_damages.push_back(error.Damage_Get());
            }
            bMore = reader->Resume();
        }
    }
    report.m_hash = hash.Text_Finish();
    return report;
}

std::string Damage_Text(const SBoardDamage& damage)
{
    std::string text = damage.m_offset >= 0 ? "byte " + std::to_string(damage.m_offset) + ": " : "";
    text += damage.m_page >= 0 ? "page " + std::to_string(damage.m_page) + ": " : "";
    return text + damage.m_what + (damage.m_fix.empty() ? "" : "; " + damage.m_fix);
}

std::string Dots_Text(const SDotCount& count, const SOutputReport& report)
{
    std::string text = std::to_string(count.Total());
    if (report.m_pixelBits == 2)
    {
        text += " (" + std::to_string(count.m_dots[1]) + " small, " + std::to_string(count.m_dots[2]) + " middle, " +
                std::to_string(count.m_dots[3]) + " big)";
    }
    return text;
}

std::string Board_Text(const SBoardInfo& info)
{
    CTextStream text;
    text << "board: " << info.m_dataMapStyle << ", " << info.m_dataPushStyle << ", " << info.m_printerSupportBits
         << "; map " << info.m_map << ", frames of " << info.m_printerDataWidth
         << (info.m_printerDataWidthUnit.empty() ? "" : " " + info.m_printerDataWidthUnit) << "; " << info.m_nozzles
         << " nozzles, " << info.m_bitsPerPixel << (info.m_bitsPerPixel == 1 ? " bit" : " bits") << " per pixel\n";
    if (info.m_version > 1)
    {
        text << "line: " << info.m_lineBits << " bits; " << info.m_linesPerPosition
             << (info.m_linesPerPosition == 1 ? " line" : " lines") << " per scan position"
             << (info.m_dotSizeMode.empty() ? "" : "; drop size " + info.m_dotSizeMode) << '\n'
             << (info.m_pageCount > 1 ? "pages: " + std::to_string(info.m_pageCount) + " of " : "page: ")
             << info.m_pageWidth << " x " << info.m_pageHeight << " pixels";
        if (info.m_xResolution > 0 && info.m_yResolution > 0)
        {
            text << " at " << info.m_xResolution << " x " << info.m_yResolution << " per inch";
        }
        text << "; zones " << info.m_leftZone << " and " << info.m_rightZone << ", offsets up to "
             << std::max(info.m_maxOffset_1, info.m_maxOffset_2) << "; "
             << (info.m_bBidirectional ? "bidirectional" : "left to right only")
             << (info.m_bSkipBlank ? ", blank swaths left out" : "") << "; stage " << info.m_stage << '\n';
        if (info.IsPart())
        {
            text << "part: bands " << info.m_partFirst << " to " << info.m_partLast << " of " << info.StepCount()
                 << "; boardmap join puts parts together\n";
        }
    }
    return text.str();
}

// The file of the first page, and of the last one.
std::string Separation_Text(const SBoardInfo& info, const SBoardUnitInfo& unit)
{
    const std::string first = BoardUnit_Separation(info, unit, 0);
    const bool bMany = info.m_pageCount > 1 && info.m_pageNames == g_pageNames_Pattern;
    return bMany ? first + " to " + BoardUnit_Separation(info, unit, info.m_pageCount - 1) : first;
}

std::string Unit_Text(const SBoardInfo& info, const SBoardUnitInfo& unit)
{
    std::string text =
        "unit " + std::to_string(unit.m_unitId) + (unit.m_name.empty() ? "" : " (" + Text_Printable(unit.m_name) + ")");
    text += unit.m_separation.empty() ? "" : ", prints " + Text_Printable(Separation_Text(info, unit));
    return text + (unit.m_stripeColor.empty() ? "" : ", stripes " + unit.m_stripeColor);
}

std::string Band_Text(std::size_t number, const SBandReport& band, const SOutputReport& report)
{
    const SBandHeader& header = band.m_header;
    CTextStream text;
    text << "band " << number << " (" << band.m_place << "): ";
    if (header.m_bandNo != static_cast<std::int64_t>(number))
    {
        text << "m_bandNo " << header.m_bandNo << ", ";
    }
    text << (report.m_info.m_pageCount > 1 ? "page " + std::to_string(header.m_pageIndex) + ", " : "") << "swath "
         << header.m_swathIndex << ", " << (band.m_pass.m_bLeftToRight ? "left to right" : "right to left") << ", rows "
         << header.m_firstRow << " to " << std::int64_t{header.m_firstRow} + header.m_rowCount - 1 << ", "
         << band.m_height << " lines of " << band.m_width << " bits" << (header.m_bSkip ? ", m_bSkip" : "");
    if (!band.m_dots)
    {
        text << "; not the line length of the board info\n";
        return text.str();
    }
    if (band.m_pass.m_bBlank)
    {
        text << "; blank\n";
        return text.str();
    }
    text << "; dots";
    for (const SDotCount& count : band.m_dots->m_units)
    {
        text << (&count == band.m_dots->m_units.data() ? " " : ", ") << "unit " << count.m_unitId << ": "
             << Dots_Text(count, report);
    }
    if (band.m_dots->m_stray > 0)
    {
        text << "; no nozzle's: " << band.m_dots->m_stray << (band.m_dots->m_stray == 1 ? " bit" : " bits");
    }
    text << '\n';
    return text.str();
}

std::string Report_Text(const SOutputReport& report)
{
    CTextStream text;
    if (!report.m_format.empty())
    {
        const SBoardInfo& info = report.m_info;
        text << Name_Shown(report.m_file) << ": " << (report.m_format == "tiff" ? "TIFF" : "board stream")
             << ", version " << info.m_version << (info.m_generator.empty() ? "" : ", by " + info.m_generator) << "; "
             << report.m_fileSize << " bytes\n"
             << Board_Text(info);
        for (std::size_t i = 0; i < info.m_units.size(); ++i)
        {
            text << Unit_Text(info, info.m_units[i])
                 << (report.m_dots.empty() ? "" : ": " + Dots_Text(report.m_dots[i], report) + " dots") << '\n';
        }
        for (std::size_t i = 0; i < report.m_bands.size(); ++i)
        {
            text << Band_Text(i, report.m_bands[i], report);
        }
        text << report.m_bands.size() << (report.m_bands.size() == 1 ? " band, " : " bands, ") << report.m_lines
             << " lines, " << report.m_bytes << " bytes of board data, SHA-256 " << report.m_hash << '\n';
    }
    for (const SBoardDamage& damage : report.m_damages)
    {
        text << Name_Shown(report.m_file) << ": damaged: " << Damage_Text(damage) << '\n';
    }
    return text.str();
}

CJson Dots_ToJson(const std::vector<SDotCount>& counts, int pixelBits)
{
    CJson list = CJson::array();
    for (const SDotCount& count : counts)
    {
        CJson entry = {{"UnitId", count.m_unitId}, {"Dots", count.Total()}};
        if (pixelBits == 2)
        {
            entry["Small"] = count.m_dots[1];
            entry["Middle"] = count.m_dots[2];
            entry["Big"] = count.m_dots[3];
        }
        list.push_back(entry);
    }
    return list;
}

CJson Band_ToJson(const SBandReport& band, const SOutputReport& report)
{
    const CJson description = CJson::parse(BandHeader_Json(band.m_header, band.m_pass, report.m_info));
    CJson json = {{"Place", band.m_place}, {"Header", description["Header"]}};
    if (report.m_info.m_version > 1)
    {
        json["Pass"] = description["Pass"];
    }
    json["Width"] = band.m_width;
    json["Height"] = band.m_height;
    json["Dots"] = band.m_dots ? Dots_ToJson(band.m_dots->m_units, report.m_pixelBits) : CJson(nullptr);
    json["StrayBits"] = band.m_dots ? CJson(band.m_dots->m_stray) : CJson(nullptr);
    return json;
}

std::string Report_Json(const SOutputReport& report)
{
    CJson json = {{"Output", report.m_file}, {"Sound", report.m_damages.empty()}};
    if (!report.m_format.empty())
    {
        json["Format"] = report.m_format;
        json["Version"] = report.m_info.m_version;
        json["FileBytes"] = report.m_fileSize;
        json["Lines"] = report.m_lines;
        json["Bytes"] = report.m_bytes;
        json["Sha256"] = report.m_hash;
        json["Dots"] = Dots_ToJson(report.m_dots, report.m_pixelBits);
        json["Board"] = CJson::parse(BoardInfo_Json(report.m_info));
        json["Bands"] = CJson::array();
        for (const SBandReport& band : report.m_bands)
        {
            json["Bands"].push_back(Band_ToJson(band, report));
        }
    }
    json["Damages"] = CJson::array();
    for (const SBoardDamage& damage : report.m_damages)
    {
        CJson entry = {{"What", damage.m_what}, {"Fix", damage.m_fix}};
        if (damage.m_offset >= 0)
        {
            entry["Offset"] = damage.m_offset;
        }
        if (damage.m_page >= 0)
        {
            entry["Page"] = damage.m_page;
        }
        json["Damages"].push_back(entry);
    }
    return json.dump(-1, ' ', true, CJson::error_handler_t::replace) + '\n';
}

int Info_Run(const CArguments& arguments)
{
    const SOutputReport report = Output_Read(arguments.Text_Get("OUTPUT"));
    Answer_Print(arguments.Flag_Get("json") ? Report_Json(report) : Report_Text(report));
    return report.m_damages.empty() ? Exit_Done : Exit_Failed;
}

} // namespace

const SCommand& Command_Info()
{
    static const SCommand command = {
        .m_name = "info",
        .m_summary = "Say what a board file holds, and where it breaks",
        .m_text =
            "Sizes, headers, dots of each unit by band and drop size, and the SHA-256 of all lines, which is the same\n"
            "for a TIFF and a board stream of the same bands. Reads on behind damage. Docs/verify.md has an example.",
        .m_options = {{.m_kind = EOptionKind::File,
                       .m_names = "OUTPUT",
                       .m_help = "The board data: a TIFF or a board stream",
                       .m_bRequired = true},
                      Option_Json()},
        .m_examples = {{"boardmap info page.boards.tif", "bands, dots and hash"}},
        .m_exitText = "the file is damaged",
        .m_pRun = &Info_Run,
    };
    return command;
}
