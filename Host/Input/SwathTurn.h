// Turns a swath by 90 degrees: rows of the page become lines of a unit band.
//
// The producers call this on their threads, once per swath. Pure functions over the caller's memory: no state, no
// allocation, no failure. The bits are moved as square blocks that are transposed inside 64-bit words, never pixel by
// pixel.
//
// Pixels are packed from the high bits of a byte on, on both sides. Line c, pixel n is row n, column c.
#pragma once

#include <cstddef>

struct SSwathShape
{
    int rowCount = 0;     // rows that there are, 0 to nozzles
    int columnCount = 0;  // pixels per row that are turned
    int nozzles = 0;      // pixels per line; those beyond the rows get no ink
    int bitsPerPixel = 1; // 1 or 2, of the rows

    // Right-to-left pass: the positions come in reverse, the last column first.
    bool bReverse = false;

    // 2-bit rows only: every position becomes two lines of 1-bit pixels instead of one of 2-bit pixels, the high bits
    // first, then the low bits, in a reversed swath too.
    bool bUnitPlanes = false;

    std::size_t rowStride = 0;  // bytes from one row's start to the next; at least a row's bytes
    std::size_t lineStride = 0; // bytes from one line's start to the next; at least a line's bytes
};

// How many lines one scan position becomes: 2 with bit planes, else 1.
int SwathLinesPerPosition_Get(int bitsPerPixel, bool bUnitPlanes);

// The distance at which rows of `rowBytes` bytes are best kept for the turn: rows read at the same column then lie in
// different places of the processor's cache.
std::size_t SwathRowStride_Get(std::size_t rowBytes);

// Writes columnCount times SwathLinesPerPosition_Get lines at `lines`, every byte of each up to its stride, whatever
// was there before. `rows` and `lines` must not overlap.
void Swath_Turn(const unsigned char* rows, unsigned char* lines, const SSwathShape& shape);
