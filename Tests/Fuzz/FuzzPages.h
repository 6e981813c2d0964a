// The separations that the jobs of the corpora name, small ones, made anew in the folder of each process.
#pragma once

#include "Tests/Fuzz/FuzzFolder.h"
#include "Tests/Host/Input/TiffMaker.h"

// one.tif and dark.tif have 1 bit per pixel, two.tif 2; all have 24 columns and 40 rows. stripe.tif is 8 scan positions
// of 16 nozzles.
inline void FuzzPages_Write(const std::filesystem::path& folder)
{
    const STiffLayout layout{.name = "none", .rowsPerStrip = 64};
    Tiff_Write(folder / "one.tif", Ink_Random(24, 40, 1, 1), layout);
    Tiff_Write(folder / "dark.tif", Ink_Random(24, 40, 1, 2), layout);
    Tiff_Write(folder / "two.tif", Ink_Random(24, 40, 2, 3), layout);
    Tiff_Write(folder / "stripe.tif", Ink_Random(16, 8, 1, 4), layout);
}
