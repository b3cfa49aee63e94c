// How the cost of an operation grows with the picture: nanoseconds per pixel of squares from 64 to 16384 on a side, and
// of strips one pixel wide or high, as a table of tab-separated columns for a plotting program.
//   qav_growth [LARGEST_SIDE]

#include "support/Comparison.h"

#include <QAVMMResamplingKernels.h>
#include <QAVMMResizeEngine.h>
#include <QAVMMediaImageProcessor.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

struct Operation {
  const char* name;
  QAVPixelImageFormat format;
  void (*work)(QAVPixelImage& image);
};

void filter(QAVPixelImage& image, QAVMMIFilterType type) {
  QAVMMediaImageProcessor::Filter(image, type, 1, nullptr, 1);
}

void convolve(QAVPixelImage& image) {
  float weights[] = {0.1f, 0.2f, 0.1f, 0.2f, 0.3f, 0.2f, 0.1f, 0.2f, 0.1f};
  QAVMMediaImageProcessor::LinearConvolveMatrix(image, 3, weights);
}

void halve(QAVPixelImage& image) {
  QAVMMCatmullRomFilter kernel;
  int width, height;
  image.GetSize(width, height);
  QAVPixelImage* const result = QAVMMResizeEngine(&kernel).scale(&image, static_cast<unsigned>(std::max(1, width / 2)),
                                                                 static_cast<unsigned>(std::max(1, height / 2)));
  qav::bench::keep(result);
  result->Release();
}

constexpr Operation kOperations[] = {
    {"table RGBA", RGBA8888, [](QAVPixelImage& i) { QAVMMediaImageProcessor::Gamma(i, 1.01f, 30, nullptr, 1); }},
    {"mirror RGBA", RGBA8888,
     [](QAVPixelImage& i) { QAVMMediaImageProcessor::Mirror(i, QAVMMIMirrorLeftRight, nullptr, 1); }},
    {"Gauss RGBA", RGBA8888, [](QAVPixelImage& i) { filter(i, QAVMMIFilterSmoothGauss); }},
    {"Sobel L8", L8, [](QAVPixelImage& i) { filter(i, QAVMMIFilterSobel); }},
    {"median L8", L8, [](QAVPixelImage& i) { filter(i, QAVMMIFilterMedian); }},
    {"kernel 3x3 RGBA", RGBA8888, &convolve},
    {"dither 0 L8", L8,
     [](QAVPixelImage& i) { QAVMMediaImageProcessor::Dither(i, QAVMMIDitherFloydSteinberg, nullptr, 0, 0); }},
    {"resize to half RGBA", RGBA8888, &halve},
};

// The same piece of photograph again and again: painting a gigabyte anew would take longer than all the measuring.
void paint(QAVPixelImage& image) {
  const auto& tile = qav::bench::photograph(512, 512, 4);
  int width, height;
  image.GetSize(width, height);
  unsigned char* const pixels = image.GetPixelsToModify();
  const auto bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) *
                     static_cast<std::size_t>(image.GetBytesPerPixel());
  for (std::size_t at = 0; at < bytes; at += tile.size())
    std::memcpy(pixels + at, tile.data(), std::min(tile.size(), bytes - at));
}

double processorSeconds() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// The fastest of several rounds, each of as many calls as make the clock's step small. The first call does not count:
// it brings the memory in.
double nanosecondsPerPixel(const Operation& operation, int width, int height) {
  constexpr double kRound = 0.004, kTotal = 0.3;
  constexpr int kRounds = 9, kFewestRounds = 2;
  const double pixels = static_cast<double>(width) * height;
  QAVPixelImage* const image = new QAVPixelImage(width, height, operation.format);
  paint(*image);
  operation.work(*image);
  double best = 1e9, spent = 0;
  for (int round = 0; round < kRounds && (round < kFewestRounds || spent < kTotal); ++round) {
    const double start = processorSeconds();
    double passed = 0;
    int calls = 0;
    do {
      operation.work(*image);
      ++calls;
      passed = processorSeconds() - start;
    } while (passed < kRound);
    best = std::min(best, passed / calls);
    spent += passed;
  }
  image->Release();
  return best / pixels * 1e9;
}

void measure(int width, int height) {
  std::printf("%dx%d\t%.0f", width, height, static_cast<double>(width) * height);
  for (const Operation& operation : kOperations) {
    std::printf("\t%.4f", nanosecondsPerPixel(operation, width, height));
    std::fflush(stdout);
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int kSmallest = 64, kLargest = 16384, kStrip = 1 << 20;
  const int largest = argc > 1 ? std::atoi(argv[1]) : kLargest;
  if (argc > 2 || largest < kSmallest || largest > kLargest)
    return std::fprintf(stderr, "usage: %s [LARGEST_SIDE], from %d to %d\n", argv[0], kSmallest, kLargest), 2;
  std::printf("size\tpixels");
  for (const Operation& operation : kOperations) std::printf("\t%s", operation.name);
  std::printf("\n");
  for (int side = kSmallest; side <= largest; side *= 2) measure(side, side);
  measure(kStrip, 1);
  measure(1, kStrip);
  return 0;
}
