#include <QAVPrintEncoding.h>

#include "print/PrintReference.h"
#include "support/Files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <sstream>

// What is written must be understood by an interpreter of the language that it is written for, and the other way round.
namespace qav::test {
namespace {

class Ghostscript : public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("gs --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "Ghostscript is not installed";
  }

  void run(const std::string& command) { ASSERT_EQ(std::system((command + " > /dev/null").c_str()), 0) << command; }

  /// Passes bytes through filters on the side of the reading and of the writing.
  Bytes filtered(const Bytes& bytes, const std::string& reading, const std::string& writing) {
    folder.write("in", bytes);
    run("gs -q -dNODISPLAY -dNOSAFER -c '/in (" + folder.path("in") + ") (r) file " + reading + " def /out (" +
        folder.path("out") + ") (w) file " + writing +
        " def /part 4096 string def { in part readstring exch out exch writestring not { exit } if } loop "
        "out closefile quit'");
    return readFile(folder.path("out"));
  }

  /// The red, green, blue bytes of a page over a blue background.
  Bytes rendered(const std::string& page, int width, int height) {
    run("gs -q -dBATCH -dNOPAUSE -dNOSAFER -sDEVICE=ppmraw -r72 -g" + std::to_string(width) + "x" +
        std::to_string(height) + " -o " + folder.path("page.ppm") + " -c '0 0 1 setrgbcolor clippath fill' -f " + page);
    Bytes file = readFile(folder.path("page.ppm"));
    const auto size = static_cast<std::ptrdiff_t>(3) * width * height;
    return std::ssize(file) < size ? Bytes() : Bytes(file.end() - size, file.end());
  }

  TemporaryFolder folder;
};

TEST_F(Ghostscript, DecodesWhatIsEncoded) {
  std::mt19937 random(1);
  for (const auto format : kByteFormats) {
    for (const Texture texture : {Texture::Smooth, Texture::Extremes}) {
      const Image image = randomImage(83, 61, format, random, texture);
      std::ostringstream dump, records;
      DumpImage(dump, image.get(), 0);
      RunLengthEncode(records, 1, image.get(), 0, 0);
      const auto textOf = [](const std::ostringstream& stream) {
        const std::string text = stream.str() + "~>";
        return Bytes(text.begin(), text.end());
      };
      EXPECT_EQ(filtered(textOf(dump), "/ASCII85Decode filter", ""), printSamples(*image, false, 1));
      EXPECT_EQ(filtered(textOf(records), "/ASCII85Decode filter /RunLengthDecode filter", ""),
                printSamples(*image, false, 1));
    }
  }
}

TEST_F(Ghostscript, IsUnderstood) {
  std::mt19937 random(2);
  for (const Texture texture : kTextures) {
    Bytes bytes(5003);
    fill(bytes.data(), bytes.size(), texture, random);
    std::fill_n(bytes.begin() + 400, 300, 0);
    const auto expectDecoded = [&](auto decoder, const std::string& filter) {
      const Bytes coded = filtered(bytes, "", filter);
      std::uint8_t* out = nullptr;
      unsigned int size = 0;
      EXPECT_EQ(decoder(coded.data(), static_cast<unsigned>(coded.size()), out, size, 0), S_OK);
      const std::unique_ptr<std::uint8_t[]> owned(out);
      EXPECT_EQ(Bytes(out, out + size), bytes);
    };
    expectDecoded(ASCII85Decode, "/ASCII85Encode filter");
    expectDecoded(RunLengthDecode, "0 /RunLengthEncode filter");
  }
}

#ifdef QAV_TOOL
// Fully transparent pixels leave the background, others of low alpha are white.
Bytes expectedPage(const QAVPixelImage& image, const Bytes& background) {
  const auto channels = static_cast<std::size_t>(image.GetBytesPerPixel());
  Bytes page;
  for (std::size_t i = 0; i < byteCount(image); i += channels) {
    const std::uint8_t* const pixel = image.GetPixelsToRead() + i;
    const int alpha = channels % 2 ? 255 : pixel[channels - 1];
    for (std::size_t k = 0; k < 3; ++k)
      page.push_back(alpha == 0 ? background[k] : alpha <= 126 ? 255 : pixel[channels > 2 ? k : 0]);
  }
  return page;
}

TEST_F(Ghostscript, RendersThePagesOfTheTool) {
  std::mt19937 random(3);
  for (const auto format : kByteFormats) {
    for (const Texture texture : {Texture::Noise, Texture::Extremes, Texture::Uniform}) {
      const Image image = randomImage(67, 45, format, random, texture);
      const std::string source = folder.path("source.tif"), page = folder.path("page.ps"),
                        part = folder.path("part.eps");
      ASSERT_EQ(image->WriteToFile(QAVString(source), "TIFF"), S_OK);
      run(QAV_TOOL " " + source + " -o " + page);
      run(QAV_TOOL " " + source + " -o " + part);
      // A page begins with white paper; a part of one is painted over what is there.
      EXPECT_EQ(rendered(page, 67, 45), expectedPage(*image, {255, 255, 255})) << "format " << format;
      EXPECT_EQ(rendered(part, 67, 45), expectedPage(*image, {0, 0, 255})) << "format " << format;
    }
  }
}
#endif

}  // namespace
}  // namespace qav::test
