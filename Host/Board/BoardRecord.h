// The fixed parts of the board stream, which its writer and its reader share. Docs/board-stream.md has them in tables.
#pragma once

#include "Host/Board/BandHeaderWords.h"
#include "Host/Board/BoardInfo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

// The first byte is no text, and the line ends show a transfer that took the stream for text.
inline constexpr std::string_view g_streamMagic = "\x89"
                                                  "BMS\r\n\x1A\n";
inline constexpr std::string_view g_bandMarker = "BAND";
inline constexpr std::string_view g_endMarker = "ENDB";

inline constexpr std::size_t g_streamWordBytes = 4;
inline constexpr std::size_t g_streamCountBytes = 8;
inline constexpr std::size_t g_streamFixedBytes = 16; // magic, version, header length

// Width, height, bits per pixel, bytes per line, data size.
inline constexpr std::size_t g_streamGeometryWords = 5;

// The words of a pass, in their order, behind the geometry; since version 2.
struct SBoardPassWord
{
    std::string_view m_name;
    std::int32_t SBoardPass::*m_pWord;
};
inline constexpr std::array<SBoardPassWord, 6> g_streamPassWords = {{
    {"Positions", &SBoardPass::m_positions},
    {"FirstLineColumn", &SBoardPass::m_firstLineColumn},
    {"ColumnStep", &SBoardPass::m_columnStep},
    {"FirstZone", &SBoardPass::m_firstZone},
    {"LastZone", &SBoardPass::m_lastZone},
    {"MaxOffset", &SBoardPass::m_maxOffset},
}};

// Bytes of a band record between its marker and its data: header words, skip flag, geometry; then pass words, blank.
constexpr std::size_t BandRecord_Bytes(int version)
{
    const std::size_t words = g_bandHeaderWords.size() + 1 + g_streamGeometryWords;
    return (words + (version > 1 ? g_streamPassWords.size() + 1 : 0)) * g_streamWordBytes;
}
