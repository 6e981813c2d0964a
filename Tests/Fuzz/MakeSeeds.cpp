// Writes the seeds of the corpora, small files from which the fuzzer starts:
//     FuzzSeeds FOLDER
//
// The folders below are Jobs, Pages, Boards, Maps, Sequences. Files whose names begin with "finding" are regressions:
// inputs that once broke something; this program leaves them alone. The jobs of the repository's folder Jobs/ and the
// board files of version 1 are copied as they are, but for the pages that the jobs name.
#include "Tests/Fuzz/ConvertedJob.h"
#include "Tests/Fuzz/FuzzPages.h"
#include "Tests/Fuzz/FuzzTarget.h"

#include <iostream>
#include <regex>

namespace
{

using Path = std::filesystem::path;

Path Folder_Make(const Path& path)
{
    std::filesystem::create_directories(path);
    return path;
}

// The demonstration's pages become those of FuzzPages.h, heads of 400 nozzles stay: the page is one swath then.
void Jobs_Write(const Path& folder)
{
    for (const auto& entry : std::filesystem::directory_iterator(JOB_FOLDER))
    {
        std::string text = File_Read(entry.path());
        text = std::regex_replace(text, std::regex("page\\.Grey\\.tif"), "two.tif");
        text = std::regex_replace(text, std::regex("page\\.Cyan\\.tif"), "dark.tif");
        text = std::regex_replace(text, std::regex("page\\.\\w+\\.tif"), "one.tif");
        File_Write(folder / entry.path().filename(), text);
    }
}

// One small page in a choice of the layouts that the reader knows; whatever differs in the way it is read.
void Pages_Write(const Path& folder)
{
    int number = 0;
    for (const int bits : {1, 2})
    {
        const SInk ink = Ink_Random(37, 21, bits, 5);
        for (const STiffLayout& layout : TiffLayouts_All(bits, ink.height))
        {
            if (number++ % 7 == 0)
            {
                Tiff_Write(folder / ("layout-" + std::to_string(number) + ".tif"), ink, layout);
            }
        }
    }
    File_Write(folder / "by-hand.tif", CHandMadeTiff(16, 4, "\x01\x02\x03\x04\x05\x06\x07\x08").Bytes_Get());
}

void Boards_Write(const Path& folder)
{
    const CTestFolder work;
    FuzzPages_Write(work.Path());
    File_Write(work / "job.toml", File_Read(Path(FUZZ_FOLDER) / "Boards.toml"));
    const auto convert = [&](const char* name, EBoardFormat format, EBoardCompression compression)
    {
        CJobPage page(work / "job.toml");
        const CJobPage said(work / "job.toml");
        const auto writer = BoardWriter_Make(said, folder / name, format, compression);
        Job_ConvertTo(page, *writer);
    };
    convert("boards.raw", EBoardFormat::Raw, EBoardCompression::None);
    convert("boards.tif", EBoardFormat::Tiff, EBoardCompression::None);
    convert("boards.lzw.tif", EBoardFormat::Tiff, EBoardCompression::Lzw);
    for (const auto& entry : std::filesystem::directory_iterator(VERSION_1_FOLDER))
    {
        if (entry.path().filename().string().starts_with("boards"))
        {
            std::filesystem::copy_file(entry.path(), folder / ("version-1-" + entry.path().filename().string()),
                                       std::filesystem::copy_options::overwrite_existing);
        }
    }
}

// Choices for each style: CFuzzInput takes them in the order in which the target asks.
void Maps_Write(const Path& folder)
{
    for (int style = 0; style < 8; ++style)
    {
        for (const int lines : {1, 7})
        {
            std::vector<int> choices = {style, 0, 0, 0, 1, 0, style == 7 ? 8 : 15, 0, lines - 1};
            for (int line = 0; line < lines; ++line)
            {
                choices.insert(choices.end(), {0, line, 1, 100 + line, 0, 1, 2, 0x5A, line, 0x99, 3});
            }
            choices.insert(choices.end(), {8, 0, 0, 0});
            std::string text;
            std::ranges::transform(choices, std::back_inserter(text), [](int c) { return static_cast<char>(c); });
            File_Write(folder / ("style-" + std::to_string(style) + "-lines-" + std::to_string(lines)), text);
        }
    }
}

void Sequences_Write(const Path& folder)
{
    File_Write(folder / "fifo", std::string("\x00\x00\x03\x04\x01\x05\x02\x06\x03\x01\x02\x04\x00\x00\x07\x01", 16));
    File_Write(folder / "buffer", std::string("\x01\x00\x02\x00\x04\x01\x05\x02\x03\x00\x03\x01\x00\x05", 14));
    File_Write(folder / "worker-that-runs",
               std::string("\x02\x00\x00\x00\x00\x00\x05\x03\x06\x04\x02\x07\x00\x07", 14));
    File_Write(folder / "worker-that-ends", std::string("\x02\x00\x00\x00\x03\x00\x05\x07\x01\x02\x07", 11));
    File_Write(folder / "worker-that-fails", std::string("\x02\x01\x00\x00\x03\x00\x05\x07\x00\x07", 10));
    File_Write(folder / "worker-that-throws", std::string("\x02\x00\x02\x00\x02\x00\x05\x07\x00\x07", 10));
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2)
    {
        std::cerr << "usage: FuzzSeeds FOLDER\n";
        return 2;
    }
    const Path folder = arguments[1];
    Jobs_Write(Folder_Make(folder / "Jobs"));
    Pages_Write(Folder_Make(folder / "Pages"));
    Boards_Write(Folder_Make(folder / "Boards"));
    Maps_Write(Folder_Make(folder / "Maps"));
    Sequences_Write(Folder_Make(folder / "Sequences"));
    return 0;
}
