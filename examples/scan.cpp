// Takes the border away from a scanned page, dithers what is left and stores it as Group 4 TIFF:
//   qav_example_scan PICTURE PAGE.tif

#include <QAVMMediaRasterProcessor.h>

#include <cstdio>

#include "Image.h"

namespace {

// Without rows and columns of the border at the top, the bottom and the left.
Image trimmed(Image image, const QAVMMPIPixelColor& border) {
  int left = 0, top = 0, right = 0, bottom = 0, width = 0, height = 0;
  if (!QAVMMICropping::ComputeCroppingAreaFromTrimmingColor(*image, border, left, top, right, bottom) || top >= bottom)
    return image;
  image->GetSize(width, height);
  Image inside(new QAVPixelImage(width - left, bottom - top + 1, image->GetFormat()));
  return SUCCEEDED(inside->PasteImage(-left, -top, image.get(), 0)) ? std::move(inside) : std::move(image);
}

Image withoutBorder(Image image) {
  QAVMMPIPixelColor border;
  if (!QAVMMICropping::EvalTrimmingColorOnCornersStrategy(*image, border)) return image;
  for (int side = 0; side < 2; ++side) {
    image = trimmed(std::move(image), border);
    QAVMMediaImageProcessor::Mirror(*image, QAVMMIMirrorLeftRight, nullptr, 1);
  }
  return image;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: qav_example_scan PICTURE PAGE.tif\n"), 2;
  Image page(QAVPixelImage::CreateFromFile(argv[1], QAVReadWrite, 0));
  if (!page) return std::fprintf(stderr, "cannot read '%s'\n", argv[1]), 1;
  page = withoutBorder(std::move(page));
  HRESULT status = QAVMMediaImageProcessor::Dither(*page, QAVMMIDitherFloydSteinberg, nullptr, 1, 1);
  if (SUCCEEDED(status)) status = page->WriteToFile(argv[2], "TIFF");
  if (FAILED(status)) return std::fprintf(stderr, "cannot make '%s'\n", argv[2]), 1;
  return 0;
}
