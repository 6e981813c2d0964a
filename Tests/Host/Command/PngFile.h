// A PNG as any reader of such files sees it, for tests of what draws them.
#pragma once

#include <gtest/gtest.h>
#include <png.h>

#include <filesystem>
#include <vector>

class CPngFile
{
public:
    explicit CPngFile(const std::filesystem::path& file)
    {
        m_image.version = PNG_IMAGE_VERSION;
        EXPECT_NE(png_image_begin_read_from_file(&m_image, file.string().c_str()), 0) << m_image.message;
        m_image.format = PNG_FORMAT_RGB;
        m_pixels.resize(PNG_IMAGE_SIZE(m_image));
        EXPECT_NE(png_image_finish_read(&m_image, nullptr, m_pixels.data(), 0, nullptr), 0) << m_image.message;
    }
    ~CPngFile() { png_image_free(&m_image); }
    CPngFile(const CPngFile&) = delete;
    CPngFile& operator=(const CPngFile&) = delete;

    int Width() const { return static_cast<int>(m_image.width); }
    int Height() const { return static_cast<int>(m_image.height); }

    // 0xRRGGBB.
    unsigned Color(int x, int y) const
    {
        const std::size_t at = 3 * (static_cast<std::size_t>(y) * m_image.width + static_cast<std::size_t>(x));
        return static_cast<unsigned>(m_pixels.at(at) << 16 | m_pixels.at(at + 1) << 8 | m_pixels.at(at + 2));
    }

private:
    png_image m_image = {};
    std::vector<unsigned char> m_pixels;
};
