// Random jobs of every map, push style, pass, zone, offset and stripe, with random separations, for tests that convert
// them with the real program.
#pragma once

#include "Tests/Host/Command/CommandSupport.h"
#include "Tests/Host/Job/StripeTiff.h"

#include <algorithm>
#include <array>
#include <compare>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <vector>

struct SRandomBoard
{
    const char* m_pOptions;
    int m_bits;
    int m_width; // 0: any that is a multiple of 8; -1: any
    int m_nozzles;
    int m_nozzleStep;
};

inline constexpr std::array randomBoards = {
    SRandomBoard{"DataMapStyle = 1\n", 1, 16, 0, 1},
    SRandomBoard{"DataMapStyle = 1\nDataPushStyle = 1\n", 2, 16, 0, 1},
    SRandomBoard{"DataMapStyle = 3\n", 1, 64, 400, 1},
    SRandomBoard{"DataMapStyle = 3\nDataPushStyle = 1\n", 2, 64, 400, 1},
    SRandomBoard{"DataMapStyle = 4\n", 1, 19, 400, 1},
    SRandomBoard{"DataMapStyle = 4\nDataPushStyle = 1\n", 2, 16, 400, 1},
    SRandomBoard{"DataMapStyle = 6\nPrinterSupportBits = 1\n", 1, 0, 0, 1},
    SRandomBoard{"DataMapStyle = 6\nDataPushStyle = 1\n", 2, 0, 0, 1},
    SRandomBoard{"DataMapStyle = 6\nPrinterSupportBits = 2\n", 2, 0, 0, 1},
    SRandomBoard{"DataMapStyle = 6\nPrinterSupportBits = 2\n", 1, 0, 0, 1},
    SRandomBoard{"DataMapStyle = 6\nPrinterSupportBits = 5\n", 2, 0, 0, 1},
    SRandomBoard{"DataMapStyle = 7\nPrinterSupportBits = 1\n", 1, -1, 0, 1},
    SRandomBoard{"DataMapStyle = 7\nPrinterSupportBits = 2\n", 2, -1, 0, 1},
    SRandomBoard{"DataMapStyle = 7\nPrinterSupportBits = 2\n", 1, -1, 0, 1},
    SRandomBoard{"DataMapStyle = 7\nDataPushStyle = 1\n", 2, -1, 0, 1},
    SRandomBoard{"DataMapStyle = 9\n", 2, 0, 0, 4},
};

// Of the separation of a unit.
struct SPixel
{
    int unit = 0;
    int row = 0;
    int column = 0;

    auto operator<=>(const SPixel&) const = default;
};

class CRandomJobTest : public CCommandTest
{
protected:
    int Number(int least, int most) { return std::uniform_int_distribution<int>(least, most)(m_random); }

    void Page_Write(const std::string& name, int width, int height, int bits, bool bBlank)
    {
        std::vector<std::string> rows(static_cast<std::size_t>(height),
                                      std::string(static_cast<std::size_t>((width * bits + 7) / 8), '\0'));
        for (std::string& row : rows)
        {
            for (int bit = 0; bit < width * bits && !bBlank; ++bit)
            {
                row[static_cast<std::size_t>(bit / 8)] |= static_cast<char>(Number(0, 1) << (7 - bit % 8));
            }
        }
        StripeTiff_Write((m_folder / name).string(), width, bits, rows);
    }

    // A job for one of the boards; its text is in job.toml, its separations beside it. `bMaySkip`: blank swaths may be
    // left out.
    void Job_WriteRandom(int board, bool bMaySkip = true)
    {
        const SRandomBoard& options = randomBoards.at(static_cast<std::size_t>(board));
        const int width = options.m_width > 0    ? options.m_width
                          : options.m_width == 0 ? 8 * Number(1, 4)
                                                 : Number(2, 9);
        const int nozzles = options.m_nozzles > 0 ? options.m_nozzles
                                                  : options.m_nozzleStep * Number(1, options.m_nozzleStep > 1 ? 9 : 37);
        const int columns = Number(1, 40);
        const int rows = std::max(1, nozzles * Number(0, 3) + Number(0, nozzles));
        m_pages.clear();
        m_columns = columns;
        m_rows = rows;
        m_bits = options.m_bits;
        const int unitCount = std::min(Number(1, 4), options.m_width == 64 ? 4 : 2);
        const int pitch = Number(1, 6);
        const int count = unitCount + Number(0, 2);
        const int zone = pitch * count;
        const bool bSkip = Number(0, 2) == 0 && bMaySkip;
        std::string text = "Version = 1\n[Stage]\nKind = \"" +
                           std::string(Number(0, 3) == 0 ? "one-fifo" : "ink-stripe") +
                           "\"\nSkipBlank = " + (bSkip ? "true" : "false") + "\n[DPOption]\n" + options.m_pOptions +
                           "PrinterDataWidth = " + std::to_string(width) +
                           "\n[PrintParam]\nDotSizeMode = " + std::to_string(Number(1, 3)) +
                           "\nBitsPerPixel = " + std::to_string(options.m_bits) +
                           "\nAlignByteCountPerLine = " + std::to_string(1 << Number(0, 4)) +
                           "\nBidirectional = " + (Number(0, 3) == 0 ? "false" : "true") + "\n";
        if (Number(0, 4) > 0)
        {
            text += "[InkStripe]\nLeftStripeWidth = " + std::to_string(Number(0, 2) == 0 ? 0 : zone + Number(0, 5)) +
                    "\nRightStripeWidth = " + std::to_string(Number(0, 2) == 0 ? 0 : zone + Number(0, 5)) +
                    "\nUnitPitch = " + std::to_string(pitch) + "\nUnitPositionCount = " + std::to_string(count) + "\n";
        }
        text += "[CartInfo]\nNozzles = " + std::to_string(nozzles) + "\n";
        for (int i = 0; i < unitCount; ++i)
        {
            text += "[[CartInfo.Unit]]\nUnitId = " + std::to_string(unitCount - 1 - i) +
                    "\nDirection = " + std::to_string(Number(1, 2)) + "\nHorizon_1 = " + std::to_string(Number(0, 5)) +
                    "\nHorizon_2 = " + std::to_string(Number(0, 5)) + "\n";
            if (i == 0 || Number(0, 1) == 0)
            {
                const std::string name = "page." + std::to_string(i) + ".tif";
                m_pages[unitCount - 1 - i] = name;
                Page_Write(name, columns, rows, options.m_bits, bSkip && Number(0, 2) == 0);
                text += "Separation = \"" + name + "\"\n";
            }
            else if (Number(0, 1) == 0)
            {
                Page_Write("stripe.tif", nozzles, 1, options.m_bits, false);
                text += "StripeColor = \"stripe.tif\"\n";
            }
            else
            {
                text += "StripeColor = \"Full\"\n";
            }
        }
        File_Write(In("job.toml"), text);
    }

    // Separations with these values.
    void Pages_Write(const std::function<int(const SPixel&)>& value)
    {
        for (const auto& [unit, name] : m_pages)
        {
            std::vector<std::string> rows(static_cast<std::size_t>(m_rows),
                                          std::string(static_cast<std::size_t>((m_columns * m_bits + 7) / 8), '\0'));
            for (int row = 0; row < m_rows; ++row)
            {
                for (int column = 0; column < m_columns; ++column)
                {
                    const int at = column * m_bits;
                    rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(at / 8)] |=
                        static_cast<char>(value({unit, row, column}) << (8 - m_bits - at % 8));
                }
            }
            StripeTiff_Write(In(name), m_columns, m_bits, rows);
        }
    }

    std::mt19937 m_random{20};

    // Of the job that was written last.
    std::map<int, std::string> m_pages; // the separations by unit id
    int m_columns = 0;
    int m_rows = 0;
    int m_bits = 1;
};
