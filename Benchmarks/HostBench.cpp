// What boardmap adds around the library: the swath turn, separations in, board data out.
//
//   HostBench [--page FILE] [--rounds N] [--json FILE]
//
// Every figure is a rate and has a limit that is measured in turns with it: the turn a plain copy of as many band
// bytes, reading a separation what libtiff needs alone to decode its rows, writing board data a plain write of the same
// bytes to a file. The ratio is the limit's time by ours: 1 is as fast as the limit. --page reads a separation of the
// user's beside the drawn one. Files are made in the system's folder for temporary files and removed again. README.md
// beside this file tells how to read the result.
#include "Benchmarks/Figures.h"
#include "Host/Input/SeparationReader.h"
#include "Host/Input/SwathTurn.h"
#include "Host/Output/BoardRawWriter.h"
#include "Host/Output/BoardTiffWriter.h"
#include "Host/PathText.h"

#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <random>
#include <tiffio.h>

namespace
{

using CBytes = std::vector<unsigned char>;
using Work = std::function<void()>;

// A4 at 600 dpi, and the head of the demonstration.
constexpr int pageColumns = 4961;
constexpr int pageRows = 7016;
constexpr int nozzles = 400;

struct SPair
{
    double work = 0;
    double limit = 0;
};

// Medians of both, taken in turns so that whatever else the machine does falls on both.
SPair Pair_Measure(int rounds, int repeats, const Work& work, const Work& limit)
{
    const auto Repeat = [repeats](const Work& one)
    {
        for (int i = 0; i < repeats; ++i)
        {
            one();
        }
    };
    Repeat(work); // caches and pages become warm
    Repeat(limit);
    std::vector<double> works;
    std::vector<double> limits;
    for (int i = 0; i < rounds; ++i)
    {
        works.push_back(Seconds_Of([&] { Repeat(work); }) / repeats);
        limits.push_back(Seconds_Of([&] { Repeat(limit); }) / repeats);
    }
    return {Median_Of(works), Median_Of(limits)};
}

void Figure_Add(CFigures& figures, const std::string& name, double bytes, const SPair& pair)
{
    figures.Add({name, "", bytes / pair.work / 1e9, "GB/s", pair.limit / pair.work});
}

// The swath turn.

struct STurnCase
{
    const char* name;
    int bitsPerPixel;
    bool bReverse;
    bool bUnitPlanes;
    bool bBlank;
};

void Turn_Measure(CFigures& figures, int rounds, const STurnCase& one)
{
    const int planes = SwathLinesPerPosition_Get(one.bitsPerPixel, one.bUnitPlanes);
    const auto Bytes_Of = [](int pixels, int bits)
    { return (static_cast<std::size_t>(pixels) * static_cast<std::size_t>(bits) + 7) / 8; };
    SSwathShape shape;
    shape.rowCount = nozzles;
    shape.columnCount = pageColumns;
    shape.nozzles = nozzles;
    shape.bitsPerPixel = one.bitsPerPixel;
    shape.bReverse = one.bReverse;
    shape.bUnitPlanes = one.bUnitPlanes;
    shape.rowStride = SwathRowStride_Get(Bytes_Of(pageColumns, one.bitsPerPixel));
    shape.lineStride = Bytes_Of(nozzles, one.bitsPerPixel / planes);
    CBytes rows(shape.rowStride * nozzles);
    if (!one.bBlank)
    {
        std::mt19937 random(1);
        std::generate(rows.begin(), rows.end(), [&] { return static_cast<unsigned char>(random()); });
    }
    CBytes lines(shape.lineStride * static_cast<std::size_t>(pageColumns * planes), 1);
    CBytes copy(lines.size(), 1);
    const SPair pair = Pair_Measure(
        rounds, 4, [&] { Swath_Turn(rows.data(), lines.data(), shape); },
        [&] { std::memcpy(copy.data(), lines.data(), lines.size()); });
    Require(lines[0] == 0 || !one.bBlank, "the turn");
    Figure_Add(figures, std::string("swath turn, ") + one.name, static_cast<double>(lines.size()), pair);
}

void Turns_Measure(CFigures& figures, int rounds)
{
    constexpr STurnCase cases[] = {
        {"1 bit", 1, false, false, false},
        {"1 bit, right to left", 1, true, false, false},
        {"1 bit, no ink", 1, false, false, true},
        {"2 bits", 2, false, false, false},
        {"2 bits by unit planes", 2, false, true, false},
        {"2 bits by unit planes, right to left", 2, true, true, false},
    };
    for (const STurnCase& one : cases)
    {
        Turn_Measure(figures, rounds, one);
    }
}

// A folder that is gone in the end.
class CFolder
{
public:
    CFolder()
        : m_path(std::filesystem::temp_directory_path() / ("boardmap-bench-" + std::to_string(std::random_device()())))
    {
        std::filesystem::create_directory(m_path);
    }
    CFolder(const CFolder&) = delete;
    CFolder& operator=(const CFolder&) = delete;
    ~CFolder()
    {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }

    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

// Separations in.

struct STiffClose
{
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using CTiffHandle = std::unique_ptr<TIFF, STiffClose>;

// Lines of something like letters: runs of ink and white between blank rows, as a page of text has them.
CBytes Row_Draw(int row, std::mt19937& random)
{
    CBytes bytes(static_cast<std::size_t>(pageColumns + 7) / 8);
    if (row % 100 < 60)
    {
        for (std::size_t i = 60; i < 560; i += 1 + random() % 6)
        {
            bytes[i] = static_cast<unsigned char>(0xFFU << (random() % 8));
        }
    }
    return bytes;
}

void Page_Draw(const std::string& path, std::uint16_t compression)
{
    const CTiffHandle tiff(TIFFOpen(path.c_str(), "w"));
    Require(tiff != nullptr, "the drawn page");
    TIFFSetField(tiff.get(), TIFFTAG_IMAGEWIDTH, pageColumns);
    TIFFSetField(tiff.get(), TIFFTAG_IMAGELENGTH, pageRows);
    TIFFSetField(tiff.get(), TIFFTAG_BITSPERSAMPLE, 1);
    TIFFSetField(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff.get(), TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
    TIFFSetField(tiff.get(), TIFFTAG_COMPRESSION, compression);
    TIFFSetField(tiff.get(), TIFFTAG_ROWSPERSTRIP, 128);
    std::mt19937 random(1);
    for (int row = 0; row < pageRows; ++row)
    {
        CBytes bytes = Row_Draw(row, random);
        Require(TIFFWriteScanline(tiff.get(), bytes.data(), static_cast<std::uint32_t>(row), 0) == 1, "the drawn page");
    }
}

void Read_Measure(CFigures& figures, int rounds, const std::string& path, const std::string& name)
{
    const CSeparationReader page(path);
    CBytes row(static_cast<std::size_t>(page.RowBytes()));
    const SPair pair = Pair_Measure(
        rounds, 1,
        [&]
        {
            CSeparationReader reader(path);
            while (reader.Row_Read(row.data()))
            {
            }
        },
        [&]
        {
            const CTiffHandle tiff(TIFFOpen(path.c_str(), "rm"));
            for (int i = 0; i < page.Height(); ++i)
            {
                Require(TIFFReadScanline(tiff.get(), row.data(), static_cast<std::uint32_t>(i), 0) == 1, "libtiff");
            }
        });
    Figure_Add(figures, "separation in, " + name, double(page.RowBytes()) * page.Height(), pair);
}

void Reads_Measure(CFigures& figures, int rounds, const CFolder& folder, const std::string& page)
{
    const std::pair<const char*, std::uint16_t> compressions[] = {
        {"uncompressed", COMPRESSION_NONE},
        {"PackBits", COMPRESSION_PACKBITS},
        {"LZW", COMPRESSION_LZW},
        {"CCITT group 4", COMPRESSION_CCITTFAX4},
    };
    for (const auto& [name, compression] : compressions)
    {
        const std::string path = Path_Text(folder / "page.tif");
        Page_Draw(path, compression);
        Read_Measure(figures, rounds, path, name);
    }
    if (!page.empty())
    {
        Read_Measure(figures, rounds, page, Path_Text(Path_FromText(page).filename()));
    }
}

// Board data out.

constexpr int boardBandCount = 8;

// A band as the demonstration has them: a page's columns, 400 frames of 16 bits each.
std::unique_ptr<CBandData> BoardBand_Make()
{
    auto band = std::make_unique<CBandData>();
    Require(band->Create(nozzles * 16, pageColumns, 1, 1), "the board band");
    std::mt19937 random(1);
    std::generate_n(band->m_pData, band->m_dataSize, [&] { return static_cast<unsigned char>(random()); });
    return band;
}

void Write_Measure(CFigures& figures, int rounds, const CFolder& folder, const std::string& name,
                   const std::function<std::unique_ptr<CBoardWriter>(const std::filesystem::path&)>& writer)
{
    const auto band = BoardBand_Make();
    const auto size = static_cast<std::size_t>(band->m_dataSize);
    const SPair pair = Pair_Measure(
        rounds, 1,
        [&]
        {
            const auto output = writer(folder / "boards");
            for (int i = 0; i < boardBandCount; ++i)
            {
                output->Band_Write(*band);
            }
            output->Finish();
            std::filesystem::remove(folder / "boards");
        },
        [&]
        {
            {
                std::ofstream file(folder / "plain", std::ios::binary);
                for (int i = 0; i < boardBandCount; ++i)
                {
                    file.write(reinterpret_cast<const char*>(band->m_pData), static_cast<std::streamsize>(size));
                }
                file.close();
                Require(!file.fail(), "the plain file");
            }
            std::filesystem::remove(folder / "plain");
        });
    Figure_Add(figures, "board data out, " + name, double(size) * boardBandCount, pair);
}

void Writes_Measure(CFigures& figures, int rounds, const CFolder& folder)
{
    Write_Measure(figures, rounds, folder, "raw",
                  [](const std::filesystem::path& path)
                  { return std::make_unique<CBoardRawWriter>(path, SBoardInfo{}); });
    Write_Measure(figures, rounds, folder, "TIFF",
                  [](const std::filesystem::path& path)
                  {
                      const SBoardTiffSize size = {boardBandCount, true, pageColumns, nozzles * 2};
                      return std::make_unique<CBoardTiffWriter>(path, SBoardInfo{}, size);
                  });
}

} // namespace

int main(int argumentCount, char** arguments)
{
    try
    {
        std::map<std::string, std::string> options = {{"--page", ""}, {"--rounds", "15"}, {"--json", ""}};
        Options_Read(argumentCount, arguments, options);
        const int rounds = std::stoi(options["--rounds"]);
        CFigures figures;
        const CFolder folder;
        Turns_Measure(figures, rounds);
        Reads_Measure(figures, rounds, folder, options["--page"]);
        Writes_Measure(figures, rounds, folder);
        if (!options["--json"].empty())
        {
            figures.Json_Write(options["--json"]);
        }
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "HostBench: %s\n", error.what());
        return 1;
    }
}
