#include <QAVPixelImageComparator.h>

#include "comparison/DifferenceImage.h"

#include <QAVMMPIPixelColorSpec.h>

namespace {

using qav::OwnedImage;

OwnedImage readImage(const QAVUnicodeString& path) {
  return OwnedImage(QAVPixelImage::CreateFromFile(path.ConvertToString(), QAVReadOnly, 0));
}

// The file's name up to its first dot.
QAVUnicodeString baseName(const QAVUnicodeString& path) {
  QAVUnicodeString folder, name;
  QAVSplitPath(path, folder, name);
  const int dot = name.SearchSubString(".");
  return dot < 0 ? name : name.SubString(0, dot);
}

void write(const OwnedImage& image, const QAVUnicodeString& path) {
  image->WriteToFile(path.ConvertToString(), "TIFF");
}

}  // namespace

QAVPixelImageComparator::QAVPixelImageComparator() = default;
QAVPixelImageComparator::~QAVPixelImageComparator() = default;

int QAVPixelImageComparator::ImageCompare(QAVUnicodeString firstPath, QAVUnicodeString secondPath,
                                          QAVUnicodeString outputDirectory, double threshold, int sigmas, double scale,
                                          double& mean, int& count, double& percentage, double& deviation,
                                          double& maximum, double& median, bool colour, bool relative) {
  const OwnedImage first = readImage(firstPath), second = readImage(secondPath);
  if (!first || !second) return 0;
  const QAVPixelImageFormat format = first->GetFormat();
  const bool lab = format == RGB888 || format == RGBA8888;
  if (!lab && !QAVMMPIPixelColorSpec::UsingFloatFormat(format)) return 0;

  double* entries = nullptr;
  const auto compare = lab ? &ImageLabCompare : &ImageHDRCompare;
  if (!compare(first.get(), second.get(), outputDirectory, threshold, sigmas, mean, count, percentage, deviation,
               maximum, median, entries))
    return 0;
  const std::unique_ptr<double[]> owner(entries);

  const qav::Extent extent = qav::extentOf(*first);
  const QAVUnicodeString names = baseName(firstPath) + "_" + baseName(secondPath) + ".TIFF";
  write(qav::differenceImage(entries, extent, scale, colour), outputDirectory + "\\xAbsolutediff_" + names);
  if (relative)
    write(qav::differenceImage(entries, extent, maximum, colour), outputDirectory + "\\xRelativediff_" + names);
  return 1;
}
