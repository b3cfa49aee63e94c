#include <QAVPrintEncoding.h>

#include <fstream>

#include "formats/Formats.h"

namespace qavraster {
namespace {

struct Page {
  const QAVPixelImage& image;
  int width = 0, height = 0;
  bool encapsulated = false;

  bool isGrey() const { return image.GetFormat() == L8 || image.GetFormat() == LA88; }
  bool hasTransparentPixels() const;
};

bool Page::hasTransparentPixels() const {
  if (image.GetFormat() != LA88 && image.GetFormat() != RGBA8888) return false;
  const int channels = image.GetBytesPerPixel();
  const unsigned char* const pixels = image.GetPixelsToRead();
  for (std::int64_t i = channels - 1; i < std::int64_t{width} * height * channels; i += channels)
    if (pixels[i] == 0) return true;
  return false;
}

void writeHeader(std::ostream& os, const Page& page, bool masked) {
  os << (page.encapsulated ? "%!PS-Adobe-3.0 EPSF-3.0\n" : "%!PS-Adobe-3.0\n");
  os << "%%BoundingBox: 0 0 " << page.width << ' ' << page.height << '\n';
  os << "%%LanguageLevel: " << (masked ? 3 : 2) << "\n%%Pages: 1\n%%EndComments\n";
  if (!page.encapsulated) os << "<< /PageSize [" << page.width << ' ' << page.height << "] >> setpagedevice\n";
  os << "%%Page: 1 1\ngsave\n" << page.width << ' ' << page.height << " scale\n";
  os << (page.isGrey() ? "/DeviceGray" : "/DeviceRGB") << " setcolorspace\n";
}

// The entries that a picture and its mask have in common. Rows go from the bottom up, as the mask's do.
void writeEntries(std::ostream& os, const Page& page, int bits, const char* decode) {
  os << "  /ImageType 1 /Width " << page.width << " /Height " << page.height << " /BitsPerComponent " << bits;
  os << " /Decode [" << decode << "] /ImageMatrix [" << page.width << " 0 0 " << page.height << " 0 0]\n";
}

// The mask is read first and kept, as the picture's samples follow in the same file.
void writeMask(std::ostream& os, const Page& page) {
  os << "/mask currentfile /ASCII85Decode filter /ReusableStreamDecode filter\n";
  DumpMask(os, &page.image, 0);
  os << "~>\ndef\n";
}

void writePicture(std::ostream& os, const Page& page, bool masked) {
  const bool coded = IsRLECompressible(os, 1, &page.image, 1) != 0;
  if (masked) os << "<< /ImageType 3 /InterleaveType 3 /DataDict\n";
  os << "<<\n";
  writeEntries(os, page, 8, page.isGrey() ? "0 1" : "0 1 0 1 0 1");
  os << "  /DataSource currentfile /ASCII85Decode filter" << (coded ? " /RunLengthDecode filter" : "") << "\n>>\n";
  if (masked) {
    os << "/MaskDict <<\n";
    writeEntries(os, page, 1, "0 1");
    os << "  /DataSource mask\n>>\n>>\n";
  }
  os << "image\n";
  if (coded)
    RunLengthEncode(os, 1, &page.image, 1, 0);
  else
    DumpImage(os, &page.image, 1);
  os << "~>\n";
}

bool writePage(const QAVPixelImage& image, const std::string& path, bool encapsulated) {
  Page page{image};
  page.encapsulated = encapsulated;
  image.GetSize(page.width, page.height);
  std::ofstream os(path, std::ios::binary);
  const bool masked = page.hasTransparentPixels();
  writeHeader(os, page, masked);
  if (page.width > 0 && page.height > 0) {
    if (masked) writeMask(os, page);
    writePicture(os, page, masked);
  }
  os << "grestore\nshowpage\n%%EOF\n";
  return static_cast<bool>(os.flush());
}

// Printers take 8-bit grey and colour.
bool writeConverted(const QAVPixelImage& image, const std::string& path, bool encapsulated) {
  const QAVPixelImageFormat format = image.GetFormat();
  if (format >= L8 && format <= RGBA8888) return writePage(image, path, encapsulated);
  const bool hasAlpha = format == RGBAFloat || format == RGBA16161616;
  const Image copy(image.CreateConvertedCopy(format == BitonalRuns ? L8 : hasAlpha ? RGBA8888 : RGB888));
  return copy && writePage(*copy, path, encapsulated);
}

}  // namespace

bool writePostScript(const QAVPixelImage& image, const std::string& path, const Settings&) {
  return writeConverted(image, path, false);
}

bool writeEncapsulatedPostScript(const QAVPixelImage& image, const std::string& path, const Settings&) {
  return writeConverted(image, path, true);
}

}  // namespace qavraster
