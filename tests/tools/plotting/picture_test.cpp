#include "picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/crc.hpp>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace {

using sonivex_plotting::Canvas;
using sonivex_plotting::pictureFile;
using sonivex_plotting::PictureFormat;
using sonivex_plotting::pictureFormatOf;
using testing::HasSubstr;
using testing::StartsWith;

constexpr int kWidth = 40;
constexpr int kHeight = 30;

std::string drawn(PictureFormat format, const std::string& title) {
    return pictureFile(format, kWidth, kHeight, title, [](Canvas& canvas) {
        canvas.fill({10.0, 10.0, 5.0, 5.0}, sonivex_plotting::kBlue);
    });
}

std::uint32_t bigEndian(const std::string& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8U | static_cast<unsigned char>(bytes.at(offset + i));
    return value;
}

TEST(PictureFormats, FollowFromTheExtensionInAnyCase) {
    EXPECT_EQ(pictureFormatOf("a.png"), PictureFormat::Png);
    EXPECT_EQ(pictureFormatOf("folder.pdf/a.SVG"), PictureFormat::Svg);
    EXPECT_EQ(pictureFormatOf("a.b.Pdf"), PictureFormat::Pdf);
    for (const char* other : {"", "png", "a", "a.jpg", "a.png.gz", "a.pngx", ".png"}) {
        EXPECT_FALSE(pictureFormatOf(other)) << other;
    }
}

TEST(PictureFiles, BeginAsTheirFormatDoes) {
    EXPECT_THAT(drawn(PictureFormat::Png, "t"), StartsWith("\x89PNG\r\n\x1a\n"));
    EXPECT_THAT(drawn(PictureFormat::Svg, "t"), StartsWith("<?xml"));
    EXPECT_THAT(drawn(PictureFormat::Svg, "t"), HasSubstr("<svg "));
    EXPECT_THAT(drawn(PictureFormat::Pdf, "t"), StartsWith("%PDF-"));
    EXPECT_THAT(drawn(PictureFormat::Pdf, "t"), HasSubstr("%%EOF"));
}

TEST(PictureFiles, OfPngConsistOfWholeChunksWithTheirCheckSums) {
    const std::string png = drawn(PictureFormat::Png, "a title");
    std::string types;
    std::string text;
    std::size_t offset = 8;
    while (offset < png.size()) {
        const std::uint32_t length = bigEndian(png, offset);
        const std::string type_and_data = png.substr(offset + 4, 4 + std::size_t{length});
        boost::crc_32_type sum;
        sum.process_bytes(type_and_data.data(), type_and_data.size());
        EXPECT_EQ(sum.checksum(), bigEndian(png, offset + 8 + length)) << type_and_data.substr(0, 4);
        types += type_and_data.substr(0, 4) + " ";
        if (type_and_data.substr(0, 4) == "tEXt") text = type_and_data.substr(4);
        offset += 12 + std::size_t{length};
    }
    EXPECT_EQ(offset, png.size());
    EXPECT_THAT(types, StartsWith("IHDR tEXt "));
    EXPECT_THAT(types, testing::EndsWith("IEND "));
    EXPECT_EQ(text, std::string("Title") + '\0' + "a title");
    EXPECT_EQ(bigEndian(png, 16), static_cast<std::uint32_t>(kWidth));
    EXPECT_EQ(bigEndian(png, 20), static_cast<std::uint32_t>(kHeight));
}

TEST(PictureFiles, OfSvgHaveTheirTitleAndSizeInTheText) {
    const std::string svg = drawn(PictureFormat::Svg, "left & <right>");
    EXPECT_THAT(svg, HasSubstr("<title>left &amp; &lt;right&gt;</title>"));
    EXPECT_THAT(svg, HasSubstr("width=\"40px\" height=\"30px\""));
}

TEST(PictureFiles, PassOnAFailureOfTheDrawing) {
    EXPECT_THROW(pictureFile(PictureFormat::Pdf, kWidth, kHeight, "t",
                             [](Canvas&) { throw std::invalid_argument("no"); }),
                 std::invalid_argument);
}

TEST(PictureFiles, RefuseASizeThatTheDrawingLibraryCannotHold) {
    constexpr int kTooWide = 40000;
    try {
        (void)pictureFile(PictureFormat::Png, kTooWide, kHeight, "t", [](Canvas&) {});
        ADD_FAILURE() << "drawn";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), StartsWith("cannot draw the picture: invalid value"));
    }
}

TEST(PictureFiles, RefuseAFormatThatIsNone) {
    EXPECT_THROW(drawn(static_cast<PictureFormat>(3), "t"), std::logic_error);
}

}  // namespace
