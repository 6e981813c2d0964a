// Separations: any bytes as a TIFF file through the separation reader. It refuses the file by a CInputError that names
// it, or gives rows: the same ones when the file is read again, and nothing beyond the last pixel.
#include "Host/HostError.h"
#include "Host/Input/SeparationReader.h"
#include "Tests/Fuzz/FuzzFolder.h"
#include "Tests/Fuzz/FuzzTarget.h"

namespace
{

constexpr int mostRows = 512; // that are looked at
constexpr std::size_t mostBytes = 1 << 20;

// The rows, and what the file was refused with.
struct SPageRead
{
    std::vector<unsigned char> rows;
    std::string refusal;

    bool operator==(const SPageRead&) const = default;
};

void Row_Check(const CSeparationReader& reader, const unsigned char* row)
{
    const int usedBits = (reader.Width() * reader.BitsPerPixel() - 1) % 8 + 1;
    const unsigned last = row[reader.RowBytes() - 1];
    Fuzz_Expect((last & 0xFFU >> usedBits) == 0, "bits beyond the last pixel are 0");
}

SPageRead Page_Read(const std::string& path)
{
    SSeparationLimit limit;
    limit.maxBlockBytes = 1 << 22;
    SPageRead page;
    try
    {
        CSeparationReader reader(path, limit);
        Fuzz_Expect(reader.Width() > 0 && reader.Height() > 0, "a page has pixels");
        Fuzz_Expect(reader.RowBytes() == (reader.Width() * reader.BitsPerPixel() + 7) / 8, "rows are packed");
        std::vector<unsigned char> row(static_cast<std::size_t>(reader.RowBytes()));
        int rowCount = 0;
        const auto mostOfWidth = static_cast<int>(mostBytes / row.size() + 1);
        const int wanted = std::min({mostRows, mostOfWidth, reader.Height()});
        while (rowCount < wanted && reader.Row_Read(row.data()))
        {
            Row_Check(reader, row.data());
            page.rows.insert(page.rows.end(), row.begin(), row.end());
            ++rowCount;
        }
        Fuzz_Expect(rowCount == wanted, "a page has as many rows as it says");
    }
    catch (const CInputError& error)
    {
        page.refusal = error.what();
        Fuzz_Expect(page.refusal.compare(0, path.size() + 2, path + ": ") == 0, "a refusal names the file");
        Fuzz_Expect(page.refusal.find('\n') == std::string::npos, "a refusal is one line");
    }
    return page;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    const std::string path = InputFile_Write("page.tif", bytes, size).string();
    Fuzz_Expect(Page_Read(path) == Page_Read(path), "a page reads the same twice");
    return 0;
}
