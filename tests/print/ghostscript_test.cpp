#include "print/PrintReference.h"
#include "support/Files.h"
#include "support/Test.h"

// Pages must be understood by an interpreter of the language that they are written in.
namespace qav::test {
namespace {

class Ghostscript : public testing::Test {
 protected:
  void SetUp() override {
    if (std::system("gs --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "Ghostscript is not installed";
  }

  void run(const std::string& command) { ASSERT_EQ(std::system((command + " > /dev/null").c_str()), 0) << command; }

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
      // Half of some pages is of one colour, so that they are worth coding as runs.
      if (texture == Texture::Extremes)
        std::fill_n(image->GetPixelsToModify(), byteCount(*image) / 2, std::uint8_t{200});
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
