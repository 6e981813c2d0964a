// What a separation file says of itself before its pixels are read.
#pragma once

#include <string>

struct SSeparationInfo
{
    std::string path;     // as the job names it
    int width = 0;        // columns of the page
    int height = 0;       // rows of the page
    int bitsPerPixel = 0; // 1 or 2
};
