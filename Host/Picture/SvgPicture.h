// A drawing as SVG: an element for each box and each text, in the order in which they are drawn.
#pragma once

#include "Host/Output/ByteSink.h"
#include "Host/Picture/Picture.h"
#include "Host/TextStream.h"

class CSvgPicture : public CPicture
{
public:
    // The sink must outlive this.
    CSvgPicture(CByteSink& sink, const SPictureFrame& frame);

    void Box_Draw(const SPictureBox& box, std::size_t fill, std::size_t edge) override;
    void Text_Draw(std::int64_t x, std::int64_t y, const std::string& text, ETextAnchor anchor,
                   ETextSize size) override;
    void Above_Finish(std::int64_t y) override;
    void Finish() override;

private:
    CByteSink& m_sink;
    std::vector<std::string> m_colors; // "#8fd3f4"
    CTextStream m_text;                // not yet in the sink
};
