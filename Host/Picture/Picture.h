// What a drawing is made of: boxes and lines of text, in units of which a small letter has about six across. Who draws
// walks over the things to be shown once, from the top down, and need not know what becomes of it: an SVG or a PNG,
// each in its own file. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct SPictureBox
{
    std::int64_t m_x = 0; // from the left
    std::int64_t m_y = 0; // from the top
    std::int64_t m_width = 0;
    std::int64_t m_height = 0;
};

// Size of the picture, and all colours that it may have, 0xRRGGBB. Colours are named by their places in the list; the
// ground has the first one, letters are black.
struct SPictureFrame
{
    std::int64_t m_width = 0;
    std::int64_t m_height = 0;
    std::vector<std::uint32_t> m_colors;
};

enum class ETextSize
{
    Small,
    Big,
};

// What a text's x means.
enum class ETextAnchor
{
    Left,
    Middle,
};

class CPicture
{
public:
    CPicture() = default;
    virtual ~CPicture() = default;
    CPicture(const CPicture&) = delete;
    CPicture& operator=(const CPicture&) = delete;

    virtual void Box_Draw(const SPictureBox& box, std::size_t fill, std::size_t edge) = 0;

    // `y` is where the letters stand. The text is UTF-8.
    virtual void Text_Draw(std::int64_t x, std::int64_t y, const std::string& text, ETextAnchor anchor,
                           ETextSize size) = 0;

    // Nothing more is drawn above `y`. Throws CRunError if what is complete cannot be written.
    virtual void Above_Finish(std::int64_t y) = 0;

    // The picture is complete. Once, as the last call; throws as Above_Finish does. The sink is left open.
    virtual void Finish() = 0;
};
