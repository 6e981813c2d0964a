// The row sources; see the header.
#include "Host/Input/SeparationRows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace
{

std::string Place(std::uint32_t row, const char* kind, std::uint32_t index)
{
    return "row " + std::to_string(row) + " (" + kind + ' ' + std::to_string(index) + ')';
}

// Whether what was said while decoding means that pixels are lost, although the decoder went on. These codecs report an
// early end or a row of the wrong length as a warning and fill up with white; the warnings of the others are about
// harmless oddities.
bool IsDamaged(const CTiffFile& file, const STiffPage& page)
{
    constexpr std::array warningMeansLoss = {COMPRESSION_CCITTRLE,  COMPRESSION_CCITTRLEW, COMPRESSION_CCITTFAX3,
                                             COMPRESSION_CCITTFAX4, COMPRESSION_PACKBITS,  COMPRESSION_JBIG};
    return !file.FirstError().empty() ||
           (!file.FirstWarning().empty() &&
            std::ranges::find(warningMeansLoss, int{page.compression}) != warningMeansLoss.end());
}

// Uncompressed strips. libtiff loads a strip as a whole; one strip can be the whole page, so the rows are read past it.
class CPlainStripRows : public CSeparationRows
{
public:
    CPlainStripRows(CTiffFile& file, const STiffPage& page) : m_file(file), m_page(page) {}

    void Row_Read(std::uint32_t row, unsigned char* bytes) override
    {
        const std::uint32_t strip = row / m_page.rowsPerStrip;
        const std::uint64_t position =
            TIFFGetStrileOffset(m_file.Handle(), strip) + row % m_page.rowsPerStrip * m_page.rowBytes;
        const auto count = static_cast<std::size_t>(m_page.rowBytes);
        if (m_file.Bytes_Read(position, bytes, count) != count)
        {
            m_file.Fail("cannot be read: the file ends early", Place(row, "strip", strip));
        }
        if (m_page.fillOrder == FILLORDER_LSB2MSB)
        {
            TIFFReverseBits(bytes, static_cast<tmsize_t>(count));
        }
    }

    std::uint32_t FirstRow_Get(std::uint32_t row) const override { return row; }

private:
    CTiffFile& m_file;
    STiffPage m_page;
};

// Compressed strips, decoded row by row.
class CDecodedStripRows : public CSeparationRows
{
public:
    CDecodedStripRows(CTiffFile& file, const STiffPage& page) : m_file(file), m_page(page) {}

    void Row_Read(std::uint32_t row, unsigned char* bytes) override
    {
        m_file.Messages_Clear();
        const bool bRead = TIFFReadScanline(m_file.Handle(), bytes, row, 0) == 1;
        if (!bRead || IsDamaged(m_file, m_page))
        {
            m_file.Fail_WithMessage("cannot be decoded", Place(row, "strip", row / m_page.rowsPerStrip));
        }
    }

    std::uint32_t FirstRow_Get(std::uint32_t row) const override { return row - row % m_page.rowsPerStrip; }

private:
    CTiffFile& m_file;
    STiffPage m_page;
};

// Blocks of rows that can only be decoded whole: a row of tiles, side by side in the buffer, or one strip.
class CBlockRows : public CSeparationRows
{
public:
    CBlockRows(CTiffFile& file, const STiffPage& page, std::int64_t maxBlockBytes) : m_file(file), m_page(page)
    {
        m_blockHeight = page.bTiled ? page.tileHeight : page.rowsPerStrip;
        m_blocksAcross = page.bTiled ? page.TilesAcross() : 1;
        m_blockRowBytes = page.bTiled ? page.tileRowBytes : page.rowBytes;
        // Each factor is below 2^32 and the limit far below 2^63: dividing keeps the comparison from overflowing.
        const auto limit = static_cast<std::uint64_t>(maxBlockBytes);
        if (m_blockRowBytes * m_blocksAcross > limit / m_blockHeight)
        {
            file.Fail(std::string(page.bTiled ? "a row of tiles (" : "a strip (") + std::to_string(m_blockHeight) +
                      " rows of " + std::to_string(m_blockRowBytes * m_blocksAcross) +
                      " bytes) is too large to be decoded; at most " + std::to_string(limit) + " bytes");
        }
        m_blockBytes = static_cast<std::size_t>(m_blockRowBytes * m_blockHeight);
    }

    void Row_Read(std::uint32_t row, unsigned char* bytes) override
    {
        const std::uint32_t rowInBlock = row % m_blockHeight;
        if (rowInBlock == 0)
        {
            Blocks_Decode(row);
        }
        std::uint64_t done = 0;
        for (std::uint32_t block = 0; block < m_blocksAcross; ++block)
        {
            const std::uint64_t count = std::min(m_blockRowBytes, m_page.rowBytes - done);
            std::memcpy(bytes + done, m_blocks.data() + block * m_blockBytes + rowInBlock * m_blockRowBytes,
                        static_cast<std::size_t>(count));
            done += count;
        }
    }

    std::uint32_t FirstRow_Get(std::uint32_t row) const override { return row - row % m_blockHeight; }

private:
    void Blocks_Decode(std::uint32_t row)
    {
        m_blocks.resize(m_blockBytes * m_blocksAcross); // not before somebody reads: a page may be refused until then
        for (std::uint32_t block = 0; block < m_blocksAcross; ++block)
        {
            const std::uint32_t index = row / m_blockHeight * m_blocksAcross + block;
            m_file.Messages_Clear();
            const std::uint64_t rows = m_page.bTiled ? m_blockHeight : std::min(m_blockHeight, m_page.height - row);
            const auto wanted = static_cast<tmsize_t>(rows * m_blockRowBytes);
            if (Block_Decode(index, m_blocks.data() + block * m_blockBytes, wanted) != wanted ||
                IsDamaged(m_file, m_page))
            {
                m_file.Fail_WithMessage("cannot be decoded", Place(row, m_page.bTiled ? "tile" : "strip", index));
            }
        }
    }

    tmsize_t Block_Decode(std::uint32_t index, unsigned char* bytes, tmsize_t count)
    {
        return m_page.bTiled ? TIFFReadEncodedTile(m_file.Handle(), index, bytes, count)
                             : TIFFReadEncodedStrip(m_file.Handle(), index, bytes, count);
    }

    CTiffFile& m_file;
    STiffPage m_page;
    std::uint32_t m_blockHeight = 0; // rows
    std::uint32_t m_blocksAcross = 0;
    std::uint64_t m_blockRowBytes = 0; // of one block
    std::size_t m_blockBytes = 0;      // of one block
    std::vector<unsigned char> m_blocks;
};

} // namespace

std::unique_ptr<CSeparationRows> CSeparationRows::Create(CTiffFile& file, const STiffPage& page,
                                                         std::int64_t maxBlockBytes)
{
    if (page.bTiled || page.compression == COMPRESSION_JBIG)
    {
        return std::make_unique<CBlockRows>(file, page, maxBlockBytes);
    }
    if (page.compression == COMPRESSION_NONE)
    {
        return std::make_unique<CPlainStripRows>(file, page);
    }
    return std::make_unique<CDecodedStripRows>(file, page);
}
