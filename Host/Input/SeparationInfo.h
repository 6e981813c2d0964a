// What a separation file says of itself before its pixels are read.
#pragma once

#include <string>

struct SSeparationInfo
{
    std::string path;     // as the job names it
    int width = 0;        // columns of the page
    int height = 0;       // rows of the page
    int bitsPerPixel = 0; // 1 or 2

    // Pixels per inch across and down the page; 0: the file does not say.
    double xResolution = 0;
    double yResolution = 0;

    bool HasResolution() const { return xResolution > 0 && yResolution > 0; }
};
