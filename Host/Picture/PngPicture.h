// A drawing as PNG, two pixels for a unit. Memory holds the rows that are still drawn on, so that a picture may be as
// high as a PNG can be. Letters are those of ASCII; any other is shown as a question mark.
#pragma once

#include "Host/Picture/Picture.h"
#include "Host/Picture/PngWriter.h"

class CPngPicture : public CPicture
{
public:
    // The sink must outlive this. At most 256 colours; the last one is for letters too. Throws CInputError if a PNG
    // cannot be so large, CRunError if the library fails.
    CPngPicture(CByteSink& sink, const SPictureFrame& frame);

    void Box_Draw(const SPictureBox& box, std::size_t fill, std::size_t edge) override;
    void Text_Draw(std::int64_t x, std::int64_t y, const std::string& text, ETextAnchor anchor,
                   ETextSize size) override;
    void Above_Finish(std::int64_t y) override;
    void Finish() override;

private:
    void Pixels_Fill(const SPictureBox& box, unsigned char color); // box in pixels

    std::int64_t m_width = 0; // in pixels, like all below
    std::int64_t m_height = 0;
    std::int64_t m_firstRow = 0;       // of m_rows
    std::vector<unsigned char> m_rows; // a byte, the colour's place, for each pixel
    unsigned char m_letterColor = 0;
    CPngWriter m_writer;
};
