#include <QAVPixelImageComparator.h>

#include "comparison/Comparable.h"
#include "comparison/Statistics.h"
#include "formats/Saturate.h"

#include <QAVMMPIPixelColorSpec.h>

#include <cmath>

namespace {

using qav::OwnedImage;

// Two floating-point images, row by row, with the channels of the first.
class FloatingPair {
 public:
  FloatingPair(QAVPixelImage& first, QAVPixelImage& second)
      : extent_(qav::extentOf(first)), channels_(first.GetFormat() == RGBFloat ? 3 : 4), images_{&first, &second} {}

  // The largest distance, and every distance in `distances`.
  float Measure(double* distances) const {
    float largest = 0.0f;
    for (int y = 0; y < extent_.height; ++y) {
      const float *a = images_[0]->GetFloatingRow(y), *b = images_[1]->GetFloatingRow(y);
      for (int x = 0; x < extent_.width; ++x, a += channels_, b += channels_) {
        float sum = 0.0f;
        for (int k = 0; k < channels_; ++k) sum += (a[k] - b[k]) * (a[k] - b[k]);
        const float distance = std::sqrt(sum);
        if (distance > largest) largest = distance;
        *distances++ = static_cast<double>(distance);
      }
    }
    return largest;
  }

  // The image reduced to bytes: channels above 1 are 255, the rest 255ths, truncated.
  OwnedImage Preview(int side) const {
    OwnedImage preview(new QAVPixelImage(extent_.width, extent_.height, RGB888));
    unsigned char* to = preview->GetPixelsToModify();
    for (int y = 0; y < extent_.height; ++y) {
      const float* from = images_[side]->GetFloatingRow(y);
      for (int x = 0; x < extent_.width; ++x, from += channels_)
        for (int k = 0; k < 3; ++k) *to++ = from[k] > 1.0f ? 255 : qav::byteFrom(from[k] * 255.0f);
    }
    return preview;
  }

 private:
  qav::Extent extent_;
  int channels_;
  QAVPixelImage* images_[2];
};

struct Sum {
  std::size_t count = 0;
  double value = 0.0;
};

// Adds up the distances that reach the threshold and makes the others 0.
Sum addExceedances(std::span<double> distances, double threshold) {
  Sum sum;
  for (double& distance : distances) {
    if (distance < threshold) {
      distance = 0.0;
    } else {
      ++sum.count;
      sum.value += distance;
    }
  }
  return sum;
}

bool holdsFloats(const QAVPixelImage& image) {
  return QAVMMPIPixelColorSpec::UsingFloatFormat(image.GetFormat()) &&
         (image.GetFloatingPixelsToRead() || qav::extentOf(image).pixels() == 0);
}

}  // namespace

int QAVPixelImageComparator::ImageHDRCompare(QAVPixelImage* first, QAVPixelImage* second,
                                             QAVUnicodeString outputDirectory, double threshold, int sigmas,
                                             double& mean, int& count, double& percentage, double& deviation,
                                             double& maximum, double&, double*& differences) {
  if (!qav::haveComparableShape(first, second) || !holdsFloats(*first) || !holdsFloats(*second)) return 0;
  const std::size_t pixels = qav::extentOf(*first).pixels();
  std::unique_ptr<double[]> entries(new double[pixels]);
  const std::span<double> all(entries.get(), pixels);
  const FloatingPair pair(*first, *second);
  const OwnedImage previews[] = {pair.Preview(0), pair.Preview(1)};

  maximum = static_cast<double>(pair.Measure(entries.get()));
  const Sum sum = addExceedances(all, threshold);
  count = static_cast<int>(sum.count);
  percentage = qav::percentageOf(sum.count, pixels);
  mean = sum.count == 0 ? 0.0 : sum.value / static_cast<double>(sum.count);
  // Over as many entries as there are exceedances, not over the exceedances: results are compared with older ones.
  deviation = qav::deviationFrom(mean, all.first(sum.count));
  if (sigmas != 0) maximum = static_cast<double>(static_cast<float>(qav::markOutliers(all, mean, deviation, sigmas)));

  previews[0]->WriteToFile((outputDirectory + "\\iLDR1.TIFF").ConvertToString(), "TIFF");
  previews[1]->WriteToFile((outputDirectory + "\\iLDR2.TIFF").ConvertToString(), "TIFF");
  differences = entries.release();
  return 1;
}
