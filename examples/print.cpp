// Makes a page for print: the picture as a PostScript program, run-length coded where that helps, in base-85 text.
// What is more transparent than not becomes the white of the paper.
//   qav_example_print PICTURE PAGE.ps

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>
#include <fstream>

#include "Image.h"

namespace {

void writePage(std::ostream& page, const QAVPixelImage& image) {
  int width = 0, height = 0;
  image.GetSize(width, height);
  const bool runs = IsRLECompressible(page, 1, &image, 0) != 0;
  page << "%!PS-Adobe-3.0\n<< /PageSize [" << width << ' ' << height << "] >> setpagedevice\n"
       << width << ' ' << height << " scale\n"
       << width << ' ' << height << " 8 [" << width << " 0 0 " << -height << " 0 " << height << "]\n"
       << "currentfile /ASCII85Decode filter" << (runs ? " /RunLengthDecode filter" : "") << " false 3 colorimage\n";
  if (runs)
    RunLengthEncode(page, 1, &image, 0, 0);
  else
    DumpImage(page, &image, 0);
  page << "~>\nshowpage\n";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_print PICTURE PAGE.ps\n"), 2;
  const Image image(QAVPixelImage::CreateFromFile(argv[1], QAVReadWrite, 0));
  if (!image || FAILED(image->ConvertToFormat(RGBA8888))) return std::fprintf(stderr, "cannot read '%s'\n", argv[1]), 1;
  std::ofstream page(argv[2], std::ios::binary);
  writePage(page, *image);
  page.close();
  if (!page) return std::fprintf(stderr, "cannot write '%s'\n", argv[2]), 1;
  return 0;
}
