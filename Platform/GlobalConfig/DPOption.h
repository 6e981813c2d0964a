// The data-path options: which data map the head-driver boards of this printer need.
//
// Set by the host, read by the map factory and the stages, from any thread.
#pragma once

#include "Platform/PlatformExport.h"

#include <cstdint>
#include <mutex>

// The family of board layouts. The numbers are those of the configuration, not of the map classes.
enum class EDataMapStyle : std::int32_t
{
    Frame16 = 1,         // 1-bit data, 16-bit frames in the pair order of the first boards
    Block = 3,           // 400 pixels in four blocks over 100 frames, one bit per unit
    Block13 = 4,         // 400 pixels in four blocks of 13 bytes
    FramePerPixel = 6,   // one frame per pixel
    ByteInterleaved = 7, // one byte column per unit
    PlanePair = 9,       // 2-bit pixels as two planes per line
};

// How multi-bit pixels reach the boards.
enum class EDataPushStyle : std::int32_t
{
    ByUnit = 1,  // each scan position as consecutive 1-bit lines
    ByPixel = 2, // each scan position as one line of whole pixels
};

// The data that the printer's boards take when data is pushed by pixel.
enum class EPrinterSupportBits : std::int32_t
{
    OneBit = 1,
    TwoBit = 2,
    Multiple = 5,
};

struct SDPOption
{
    EDataMapStyle m_dataMapStyle = EDataMapStyle::FramePerPixel;
    EDataPushStyle m_dataPushStyle = EDataPushStyle::ByPixel;
    EPrinterSupportBits m_printerSupportBits = EPrinterSupportBits::OneBit;
    int m_printerDataWidth = 16; // bits in one board data frame
};

class PLATFORM_API CSerialize_DPOption
{
public:
    // Replaces all options.
    void Set(const SDPOption& option);

    EDataMapStyle DataMapStyle_Get() const;
    EDataPushStyle DataPushStyle_Get() const;
    EPrinterSupportBits PrinterSupportBits_Get() const;
    int PrinterDataWidth_Get() const;

private:
    mutable std::mutex m_lock;
    SDPOption m_option;
};

// The process's data-path options; never null, never deleted.
PLATFORM_API CSerialize_DPOption* GC_DPOption();
