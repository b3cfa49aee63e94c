#include <QAVMMediaImageProcessor.h>

#include "support/Test.h"

#include <CCITT.h>

namespace qav::test {
namespace {

HRESULT mirror(QAVPixelImage& image, int type, unsigned char apply = 1) {
  return QAVMMediaImageProcessor::Mirror(image, static_cast<QAVMMIMirrorType>(type), nullptr, apply);
}

TEST(Mirror, EverySizeOfEveryByteFormatWithinItsMemory) {
  std::mt19937 random(61);
  atEveryLevel([&] {
    for (const QAVPixelImageFormat format : kByteFormats) {
      for (int width = 1; width < 300; width += width < 150 ? 1 : 17) {
        const int height = 1 + width % 4, channels = format + 1;
        const Image original = randomImage(width, height, format, random);
        const auto before = bytesOf(*original);
        for (int type = 0; type <= 3; ++type) {
          auto expected = before;
          for (int y = 0; y < height; ++y) {
            for (int i = 0; i < width * channels; ++i) {
              const int x = i / channels, fromX = type & 1 ? width - 1 - x : x, fromY = type & 2 ? height - 1 - y : y;
              expected[static_cast<std::size_t>(y * width * channels + i)] =
                  before[static_cast<std::size_t>((fromY * width + fromX) * channels + i % channels)];
            }
          }
          GuardedImage image(*original, random() % 7);
          ASSERT_EQ(mirror(*image, type), S_OK);
          ASSERT_EQ(bytesOf(*image), expected) << "type " << type << ", format " << format << ", width " << width;
          ASSERT_TRUE(image.guardsIntact()) << "type " << type << ", format " << format << ", width " << width;
        }
      }
    }
  });
}

// An image whose pixels have a size of its own choosing.
class WideImage : public QAVPixelImage {
 public:
  WideImage(int bytesPerPixel) : QAVPixelImage(3, 2, RGBFloat), bytesPerPixel_(bytesPerPixel), bytes(6u * 12u) {
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i);
  }
  int GetBytesPerPixel() override { return bytesPerPixel_; }
  unsigned char* GetPixelsToModify() override { return bytes.data(); }

 private:
  int bytesPerPixel_;

 public:
  std::vector<unsigned char> bytes;
};

TEST(Mirror, StatusesInTheirOrder) {
  for (const QAVPixelImageFormat format : kAllFormats) {
    const bool none = format == NoPixelStorage, runs = format == BitonalRuns, bytes = format <= RGBA8888;
    for (const int type : {0, 1, 2, 3, 4, 9, -1}) {
      const Image image = makeImage(5, 4, format), readOnly(new ReadOnlyImage(5, 4, format));
      const Image empty = makeImage(0, 4, format);
      const bool unknown = type < 0 || type > 3;
      EXPECT_EQ(mirror(*image, type, 0), none ? E_FAIL : S_OK);
      EXPECT_EQ(mirror(*image, type), none        ? E_FAIL
                                      : type == 0 ? S_OK
                                      : runs      ? S_OK
                                      : !bytes    ? E_FAIL
                                      : unknown   ? E_NOTIMPL
                                                  : S_OK)
          << format << " " << type;
      if (runs || none) continue;
      EXPECT_EQ(mirror(*readOnly, type), type == 0 ? S_OK : E_FAIL) << format << " " << type;
      if (!bytes) continue;
      EXPECT_EQ(mirror(*empty, type), type == 0 ? S_OK : unknown ? E_NOTIMPL : E_FAIL) << type;
    }
  }
  // Pixels of more than four bytes cannot be reversed, but their rows can be swapped.
  const struct {
    int bytesPerPixel, type;
    HRESULT status;
  } cases[] = {{12, 1, E_NOTIMPL}, {12, 2, S_OK}, {12, 3, E_NOTIMPL}, {0, 1, E_FAIL}, {0, 2, E_FAIL}, {4, 3, S_OK}};
  for (const auto& c : cases) {
    auto* const wide = new WideImage(c.bytesPerPixel);
    const Image owner(wide);
    const auto before = wide->bytes;
    EXPECT_EQ(mirror(*wide, c.type), c.status) << c.bytesPerPixel << " " << c.type;
    EXPECT_EQ(wide->bytes == before, FAILED(c.status));
    if (c.type == 2 && c.status == S_OK) {
      EXPECT_TRUE(std::equal(before.begin(), before.begin() + 36, &wide->bytes[36]));
    }
  }
}

using Bits = std::vector<unsigned char>;

Bits decoded(const QAVPixelImage& image, int row, int width) {
  Bits bits(static_cast<std::size_t>(width + 7) / 8);
  CCITT::decode(bits.data(), image.GetPixelsRuns(row), static_cast<unsigned>(image.GetPixelsRunsLength(row)),
                static_cast<unsigned>(width));
  return bits;
}

void setRow(QAVPixelImage& image, int row, const Bits& bits, int width) {
  delete[] image.GetPixelsRuns(row);
  image.GetPixelsRunsLength(row) = CCITT::encode(image.GetPixelsRuns(row), bits.data(), static_cast<unsigned>(width));
}

// Reversed bit by bit, then moved by width mod 8 within the leading eighth of the bytes, and cut to the row.
Bits mirroredRow(const Bits& bits, int width) {
  const std::size_t total = bits.size() * 8, kept = (bits.size() + 7) / 8 * 8;
  const auto bit = [&](std::size_t i) {
    return i < total && (bits[(total - 1 - i) / 8] >> ((total - 1 - i) % 8 ^ 7) & 1);
  };
  Bits result(bits.size());
  const auto shift = static_cast<std::size_t>(width % 8);
  for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i) {
    const bool black = i >= kept ? bit(i) : i + shift < kept && bit(i + shift);
    if (black) result[i / 8] = static_cast<unsigned char>(result[i / 8] | 0x80 >> i % 8);
  }
  return result;
}

TEST(Mirror, RunRowsKeepTheirShift) {
  std::mt19937 random(63);
  for (int width = 1; width < 220; width += width < 90 ? 1 : 7) {
    const int height = 5;
    for (int type = 1; type <= 3; ++type) {
      const Image image = makeImage(width, height, BitonalRuns);
      std::vector<Bits> rows;
      for (int y = 0; y < height; ++y) {
        Bits bits(static_cast<std::size_t>(width + 7) / 8);
        fill(bits.data(), bits.size(), y % 2 ? Texture::Noise : Texture::Smooth, random);
        setRow(*image, y, bits, width);
        rows.push_back(decoded(*image, y, width));
      }
      // A row without a string is white.
      delete[] std::exchange(image->GetPixelsRuns(1), nullptr);
      image->GetPixelsRunsLength(1) = 0;
      std::fill(rows[1].begin(), rows[1].end(), static_cast<unsigned char>(0));
      ASSERT_EQ(mirror(*image, type), S_OK);
      for (int y = 0; y < height; ++y) {
        const Bits& from = rows[static_cast<std::size_t>(type & 2 ? height - 1 - y : y)];
        ASSERT_EQ(decoded(*image, y, width), type & 1 ? mirroredRow(from, width) : from)
            << "width " << width << ", type " << type << ", row " << y;
      }
    }
  }
}

class StuckRows : public QAVPixelImage {
 public:
  using QAVPixelImage::QAVPixelImage;
  HRESULT ReverseRowOrder() override { return HRESULT{1}; }
};

TEST(Mirror, RowsThatCannotBeReorderedFailBeforeAnythingChanges) {
  const Image image(new StuckRows(12, 2, BitonalRuns));
  setRow(*image, 0, {0xF0, 0x10}, 12);
  const Bits before = decoded(*image, 0, 12);
  EXPECT_EQ(mirror(*image, 2), E_FAIL);
  EXPECT_EQ(mirror(*image, 3), E_FAIL);
  EXPECT_EQ(decoded(*image, 0, 12), before);
  EXPECT_EQ(mirror(*image, 1), S_OK);
  EXPECT_NE(decoded(*image, 0, 12), before);
}

}  // namespace
}  // namespace qav::test
