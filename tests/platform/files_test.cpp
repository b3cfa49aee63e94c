#include "support/Files.h"
#include "platform/AnyImage.h"
#include "support/Test.h"

#include <png.h>
#include <sys/stat.h>
#include <tiffio.h>

#include <cstdio>

#include <jpeglib.h>

namespace qav::test {
namespace {

class ImageFile : public testing::Test {
 protected:
  void SetUp() override { testing::internal::CaptureStderr(); }
  void TearDown() override { EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "the readers print nothing"; }
  static Image read(const std::string& path) { return Image(QAVPixelImage::CreateFromFile(path, QAVReadOnly, 0)); }

  TemporaryFolder folder_;
  std::mt19937 random_{1};
};

TEST_F(ImageFile, TiffKeepsEveryFormat) {
  for (const QAVPixelImageFormat format : kAllFormats)
    for (const auto& size : {std::pair(1, 1), std::pair(37, 23), std::pair(9, 1), std::pair(513, 700)}) {
      const std::string path = folder_.path("a.tif");
      if (format == NoPixelStorage) {
        ASSERT_EQ(QAVPixelImage(size.first, size.second, format).WriteToFile(path, "TIFF"), E_FAIL);
        continue;
      }
      const Image image = randomImageOf(format, size.first, size.second, random_);
      ASSERT_EQ(image->WriteToFile(path, "TIFF"), S_OK);
      const Image back = read(path);
      ASSERT_TRUE(back) << format;
      ASSERT_EQ(back->GetFormat(), format);
      ASSERT_EQ(memoryOf(*back), memoryOf(*image)) << format;
    }
}

TEST_F(ImageFile, PngAndJpegKeepWhatTheyCanHold) {
  const struct {
    const char* type;
    int tolerance;
    QAVPixelImageFormat from, to;
  } cases[] = {{"PNG", 0, L8, L8},
               {"PNG", 0, LA88, LA88},
               {"PNG", 0, RGB888, RGB888},
               {"PNG", 0, RGBA8888, RGBA8888},
               {"PNG", 0, BitonalRuns, L8},
               {"PNG", 0, RGB161616, RGB161616},
               {"PNG", 0, RGBA16161616, RGBA16161616},
               {"PNG", 0, RGBFloat, RGB161616},
               {"PNG", 0, RGBAFloat, RGBA16161616},
               {"JPEG", 4, L8, L8},
               {"JPEG", 4, LA88, L8},
               {"JPEG", 9, RGBA8888, RGB888},
               {"JPEG", 9, RGB161616, RGB888}};
  const Image smooth = makeImage(61, 47, RGBA8888);
  for (int i = 0; i < 61 * 47 * 4; ++i)
    smooth->GetPixelsToModify()[i] = static_cast<unsigned char>((i / 4) % 61 * 2 + i / 244 + i % 4 * 20);
  for (const auto& c : cases) {
    const Image image(smooth->CreateConvertedCopy(c.from));
    const std::string path = folder_.path("a");
    ASSERT_EQ(image->WriteToFile(path, c.type), S_OK);
    const Image back = read(path), expected(image->CreateConvertedCopy(c.to));
    ASSERT_TRUE(back);
    ASSERT_EQ(back->GetFormat(), c.to);
    const Bytes in = memoryOf(*expected), out = memoryOf(*back);
    ASSERT_EQ(in.size(), out.size());
    for (std::size_t i = 0; i < in.size(); ++i) ASSERT_LE(std::abs(in[i] - out[i]), c.tolerance) << c.type << c.from;
  }
}

TEST_F(ImageFile, RefusesOtherTypesAndEmptyImagesWithoutTouchingTheFile) {
  const std::string path = folder_.write("kept", {1, 2, 3});
  const QAVPixelImage image(2, 2, L8), empty(0, 2, L8), wide(65501, 1, L8);
  for (const char* type : {"tiff", "TIF", "BMP", "", "PNG "}) EXPECT_EQ(image.WriteToFile(path, type), E_FAIL);
  for (const char* type : {"TIFF", "PNG", "JPEG"}) EXPECT_EQ(empty.WriteToFile(path, type), E_FAIL);
  EXPECT_EQ(wide.WriteToFile(path, "JPEG"), E_FAIL);
  EXPECT_EQ(readFile(path), (Bytes{1, 2, 3}));
  for (const char* type : {"TIFF", "PNG", "JPEG"}) {
    EXPECT_EQ(image.WriteToFile(folder_.path("no/such/folder"), type), E_FAIL);
    EXPECT_EQ(image.WriteToFile("/dev/full", type), E_FAIL);
    struct stat status {};
    EXPECT_EQ(stat("/dev/full", &status), 0) << "a device is not removed";
  }
}

// A PNG of given bit depth and colour type, with a palette of four colours when it has one.
std::string writePng(const std::string& path, int depth, int type, const Bytes& row, int width, bool interlaced) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_IHDR(png, info, static_cast<png_uint_32>(width), 1, depth, type, interlaced ? PNG_INTERLACE_ADAM7 : 0, 0, 0);
  const png_color palette[4] = {{1, 2, 3}, {40, 50, 60}, {7, 8, 9}, {200, 201, 202}};
  const png_byte alpha[1] = {128};
  if (type == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, 4);
  if (type == PNG_COLOR_TYPE_PALETTE && interlaced) png_set_tRNS(png, info, alpha, 1, nullptr);
  png_write_info(png, info);
  const int passes = png_set_interlace_handling(png);
  for (int pass = 0; pass < passes; ++pass) png_write_row(png, row.data());
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  std::fclose(file);
  return path;
}

TEST_F(ImageFile, ReadsPngOfEveryColourTypeAndDepth) {
  struct {
    int depth, type;
    Bytes row;
    int width;
    bool interlaced;
    QAVPixelImageFormat format;
    Bytes expected;
  } const cases[] = {
      {1, PNG_COLOR_TYPE_GRAY, {0xA0}, 3, false, L8, {255, 0, 255}},
      {2, PNG_COLOR_TYPE_GRAY, {0x1B}, 4, true, L8, {0, 85, 170, 255}},
      {4, PNG_COLOR_TYPE_GRAY, {0x0F, 0x50}, 3, false, L8, {0, 255, 85}},
      {16, PNG_COLOR_TYPE_GRAY, {0x12, 0xFF, 0x80, 0x7F}, 2, false, L8, {19, 128}},
      {16, PNG_COLOR_TYPE_GRAY_ALPHA, {0x12, 0xFF, 0xFF, 0xFF}, 1, false, LA88, {19, 255}},
      {2, PNG_COLOR_TYPE_PALETTE, {0x1B}, 4, false, RGB888, {1, 2, 3, 40, 50, 60, 7, 8, 9, 200, 201, 202}},
      {8, PNG_COLOR_TYPE_PALETTE, {0, 1}, 2, true, RGBA8888, {1, 2, 3, 128, 40, 50, 60, 255}},
      {8, PNG_COLOR_TYPE_RGB_ALPHA, {9, 8, 7, 0}, 1, true, RGBA8888, {9, 8, 7, 0}},
      {16, PNG_COLOR_TYPE_RGB, {0x01, 0x02, 0x03, 0x04, 0x05, 0x06}, 1, true, RGB161616, {2, 1, 4, 3, 6, 5}}};
  for (const auto& c : cases) {
    const Image image = read(writePng(folder_.path("p"), c.depth, c.type, c.row, c.width, c.interlaced));
    ASSERT_TRUE(image) << c.depth << " " << c.type;
    EXPECT_EQ(image->GetFormat(), c.format) << c.depth << " " << c.type;
    EXPECT_EQ(memoryOf(*image), c.expected) << c.depth << " " << c.type;
  }
}

struct TiffShape {
  int bits, samples, photometric, compression;
  int extra = -1;
  bool tiled = false, separate = false;
  const char* mode = "w";
};

// A 20 x 18 TIFF of `shape` whose bytes are a running number (from the top of each plane or tile).
std::string writeTiff(const std::string& path, const TiffShape& shape) {
  TIFF* tiff = TIFFOpen(path.c_str(), shape.mode);
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 20);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 18);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, shape.bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, shape.samples);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, shape.photometric);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, shape.compression);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, shape.separate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
  const std::uint16_t extra[] = {static_cast<std::uint16_t>(shape.extra)};
  if (shape.extra >= 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, extra);
  std::uint16_t map[256];
  for (int i = 0; i < 256; ++i) map[i] = static_cast<std::uint16_t>(i * 257);
  if (shape.photometric == PHOTOMETRIC_PALETTE) TIFFSetField(tiff, TIFFTAG_COLORMAP, map, map, map);
  if (shape.tiled) TIFFSetField(tiff, TIFFTAG_TILEWIDTH, 16), TIFFSetField(tiff, TIFFTAG_TILELENGTH, 16);
  if (!shape.tiled) TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 5);
  const std::size_t rowBytes = static_cast<std::size_t>(shape.tiled ? TIFFTileSize(tiff) : TIFFScanlineSize(tiff));
  for (std::uint32_t part = 0; part < (shape.tiled ? 4u : 18u) * (shape.separate ? 3u : 1u); ++part) {
    Bytes bytes(rowBytes);
    for (std::size_t i = 0; i < rowBytes; ++i) bytes[i] = static_cast<std::uint8_t>(i + part % 18 * 20);
    if (shape.tiled)
      TIFFWriteEncodedTile(tiff, part, bytes.data(), static_cast<tmsize_t>(rowBytes));
    else
      TIFFWriteScanline(tiff, bytes.data(), part % 18, static_cast<std::uint16_t>(part / 18));
  }
  TIFFClose(tiff);
  return path;
}

TEST_F(ImageFile, ReadsTiffOfManyShapes) {
  struct {
    TiffShape shape;
    QAVPixelImageFormat format;
    int x, y;
    Bytes pixel;  // the memory of pixel (x, y)
  } const cases[] = {
      {{8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_LZW}, L8, 3, 2, {43}},
      {{8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_NONE, -1, true}, L8, 17, 2, {53}},  // second tile: 33 + 20
      {{8, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_PACKBITS}, L8, 3, 2, {212}},
      {{8, 1, PHOTOMETRIC_PALETTE, COMPRESSION_NONE}, RGB888, 3, 2, {43, 43, 43}},
      {{8, 3, PHOTOMETRIC_RGB, COMPRESSION_NONE, -1, false, true}, RGB888, 3, 2, {43, 43, 43}},
      {{8, 3, PHOTOMETRIC_RGB, COMPRESSION_ADOBE_DEFLATE, -1, true}, RGB888, 1, 1, {51, 52, 53}},
      {{16, 3, PHOTOMETRIC_RGB, COMPRESSION_LZW, -1, false, false, "wb"}, RGB161616, 1, 0, {6, 7, 8, 9, 10, 11}},
      {{8, 2, PHOTOMETRIC_MINISBLACK, COMPRESSION_NONE, EXTRASAMPLE_UNASSALPHA}, LA88, 1, 0, {2, 3}},
      {{8, 4, PHOTOMETRIC_RGB, COMPRESSION_NONE, EXTRASAMPLE_UNASSALPHA}, RGBA8888, 1, 0, {4, 5, 6, 7}},
      {{8, 4, PHOTOMETRIC_RGB, COMPRESSION_NONE, EXTRASAMPLE_ASSOCALPHA}, RGBA8888, 1, 0, {146, 182, 219, 7}},
      {{8, 4, PHOTOMETRIC_SEPARATED, COMPRESSION_NONE}, RGB888, 0, 0, {252, 251, 250}},
      {{16, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_NONE}, L8, 2, 0, {5}},  // 0x0504 / 257
      {{1, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_NONE}, BitonalRuns, 15, 0, {255}},
      {{1, 1, PHOTOMETRIC_MINISWHITE, COMPRESSION_CCITTFAX3}, BitonalRuns, 15, 0, {0}},
      {{1, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_PACKBITS, -1, true}, BitonalRuns, 15, 0, {255}},
      {{8, 1, PHOTOMETRIC_MINISBLACK, COMPRESSION_NONE, -1, false, false, "w8"}, L8, 3, 2, {43}}};
  for (const auto& c : cases) {
    const Image image = read(writeTiff(folder_.path("t"), c.shape));
    const std::size_t number = static_cast<std::size_t>(&c - cases);
    ASSERT_TRUE(image) << number;
    ASSERT_EQ(image->GetFormat(), c.format) << number;
    const Bytes memory = memoryOf(*image);
    const std::size_t at = static_cast<std::size_t>(c.y * 20 + c.x) * c.pixel.size();
    EXPECT_EQ(Bytes(memory.begin() + static_cast<std::ptrdiff_t>(at),
                    memory.begin() + static_cast<std::ptrdiff_t>(at + c.pixel.size())),
              c.pixel)
        << number;
  }
}

TEST_F(ImageFile, ReadsJpegWithFourInks) {
  const std::string path = folder_.path("c");
  for (const bool complemented : {false, true}) {
    jpeg_compress_struct object{};
    jpeg_error_mgr errors{};
    object.err = jpeg_std_error(&errors);
    jpeg_create_compress(&object);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    jpeg_stdio_dest(&object, file);
    object.image_width = object.image_height = 8;
    object.input_components = 4;
    object.in_color_space = JCS_CMYK;
    jpeg_set_defaults(&object);
    jpeg_set_quality(&object, 100, TRUE);
    object.write_Adobe_marker = complemented;
    jpeg_start_compress(&object, TRUE);
    Bytes row(8 * 4);
    for (std::size_t i = 0; i < row.size(); ++i) row[i] = std::array<std::uint8_t, 4>{0, 102, 255, 51}[i % 4];
    JSAMPROW pointer = row.data();
    for (int y = 0; y < 8; ++y) jpeg_write_scanlines(&object, &pointer, 1);
    jpeg_finish_compress(&object);
    jpeg_destroy_compress(&object);
    std::fclose(file);
    const Image image = read(path);
    ASSERT_TRUE(image);
    ASSERT_EQ(image->GetFormat(), RGB888);
    const Bytes expected = complemented ? Bytes{0, 20, 51} : Bytes{204, 122, 0};
    for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(bytesOf(*image)[c], expected[c], 2);
  }
}

}  // namespace
}  // namespace qav::test
