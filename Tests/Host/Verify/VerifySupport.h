// A job with stripes, its output as a board stream, and the stream in parts that a test can spoil.
#pragma once

#include "Tests/Host/Command/CommandSupport.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

// Four swaths of 16 nozzles, the last one half below the page; units 0 and 1 print 40 columns, unit 2 stripes. A line
// has 16 frames of a byte: unit u is bit u of each, the most significant bit first, and bits 3 to 7 are padding.
class CVerifyTest : public CCommandTest
{
protected:
    static constexpr int lineBytes = 16;
    static constexpr int lineCount = 88; // zones of 24, and the page
    static constexpr int zone = 24;
    static constexpr std::size_t recordBytes = 108;

    struct SStream
    {
        std::string m_header;
        std::vector<std::string> m_records;

        std::string Text(std::int64_t count = -1) const
        {
            std::string text = m_header;
            for (const std::string& record : m_records)
            {
                text += record;
            }
            text += "ENDB";
            const auto end =
                static_cast<std::uint64_t>(count < 0 ? static_cast<std::int64_t>(m_records.size()) : count);
            for (unsigned shift = 0; shift < 64; shift += 8)
            {
                text += static_cast<char>(end >> shift & 0xFFU);
            }
            return text;
        }
        char& Byte(int band, int line, int byte)
        {
            return m_records.at(static_cast<std::size_t>(band))
                .at(recordBytes + static_cast<std::size_t>(line * lineBytes + byte));
        }
        // Word 1 is the one behind the marker.
        void Word_Set(int band, int word, std::int32_t value)
        {
            for (int i = 0; i < 4; ++i)
            {
                m_records.at(static_cast<std::size_t>(band)).at(static_cast<std::size_t>(word * 4 + i)) =
                    static_cast<char>(static_cast<std::uint32_t>(value) >> (8U * static_cast<unsigned>(i)) & 0xFFU);
            }
        }
        std::string Line_Get(int band, int line) const
        {
            return m_records.at(static_cast<std::size_t>(band))
                .substr(recordBytes + static_cast<std::size_t>(line) * lineBytes, lineBytes);
        }
        void Line_Set(int band, int line, const std::string& bytes)
        {
            m_records.at(static_cast<std::size_t>(band))
                .replace(recordBytes + static_cast<std::size_t>(line) * lineBytes, lineBytes, bytes);
        }
    };

    static bool Ink(int unit, int x, int y)
    {
        const auto number = static_cast<std::uint32_t>(x * 40503 + y * 9973 + unit * 65537 + x * y * 31);
        return (number * 2654435761U >> 20U & 3U) == 0;
    }

    void SetUp() override
    {
        Separation_Write("a.tif", 40, 56, [](int x, int y) { return Ink(0, x, y); });
        Separation_Write("b.tif", 40, 56, [](int x, int y) { return Ink(1, x, y); });
        File_Write(In("job.toml"), m_job);
        ASSERT_EQ(Boardmap_Run("convert job.toml --format raw -o good.raw").status, 0);
        const std::string text = File_Read(In("good.raw"));
        const auto Number = [&](std::size_t at)
        {
            std::uint32_t value = 0;
            for (std::size_t i = 4; i > 0; --i)
            {
                value = value << 8U | static_cast<unsigned char>(text.at(at + i - 1));
            }
            return value;
        };
        std::size_t at = Number(12);
        m_stream.m_header = text.substr(0, at);
        while (text.compare(at, 4, "BAND") == 0)
        {
            const std::size_t size = recordBytes + Number(at + 76);
            m_stream.m_records.push_back(text.substr(at, size));
            at += size;
        }
        ASSERT_EQ(m_stream.m_records.size(), 4U);
        ASSERT_EQ(m_stream.Text(), text);
    }

    const std::string m_job = R"(Version = 1
[Stage]
Kind = "ink-stripe"
[DPOption]
DataMapStyle = 6
PrinterSupportBits = 1
PrinterDataWidth = 8
[PrintParam]
BitsPerPixel = 1
Bidirectional = true
[InkStripe]
LeftStripeWidth = 24
RightStripeWidth = 24
UnitPitch = 8
UnitPositionCount = 3
[CartInfo]
Nozzles = 16
[[CartInfo.Unit]]
UnitId = 0
Name = "Cyan"
Separation = "a.tif"
[[CartInfo.Unit]]
UnitId = 1
Separation = "b.tif"
[[CartInfo.Unit]]
UnitId = 2
Name = "Primer"
StripeColor = "Full"
)";
    SStream m_stream; // of the job; a test spoils a copy
};
