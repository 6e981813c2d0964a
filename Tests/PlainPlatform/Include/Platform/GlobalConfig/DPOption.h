// The data-path options: which data map the head-driver boards of this printer need.
//
// The values of the three enumerations are those of the configuration; an enumerator's name means nothing.
#pragma once

#include <cstdint>

enum class EDataMapStyle : std::int32_t
{
    kind1 = 1,
    kind3 = 3,
    kind4 = 4,
    kind6 = 6,
    kind7 = 7,
    kind9 = 9,
};

enum EDataPushStyle : std::int32_t
{
    push_units = 1,
    push_pixels = 2,
};

enum class EPrinterSupportBits : std::int32_t
{
    one = 1,
    two = 2,
    many = 5,
};

class CSerialize_DPOption
{
public:
    EDataMapStyle DataMapStyle_Get() const;
    EDataPushStyle DataPushStyle_Get() const;
    EPrinterSupportBits PrinterSupportBits_Get() const;
    int PrinterDataWidth_Get() const; // bits in one board data frame
};

CSerialize_DPOption* GC_DPOption();
