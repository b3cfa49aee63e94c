#pragma once

#include "fuzz/Input.h"
#include "fuzz/Levels.h"
#include "fuzz/MemoryFile.h"

#include <CCITT_G4.h>
#include <QAVMMIHelperRGBA.h>
#include <QAVMMResamplingKernels.h>
#include <QAVMMResizeEngine.h>
#include <QAVMMediaImageProcessor.h>
#include <QAVPixelImageComparator.h>
#include <QAVPrintEncoding.h>
#include <QAVSGIImageFile.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <sstream>
#include <vector>

/// Operations that end in a kernel, on small images of the input's making.
namespace qav::fuzz::operations {

using Bytes = std::vector<std::uint8_t>;

/// What an operation has made, as bytes to compare.
class Outcome {
 public:
  template <class T>
  void add(const T& value) {
    addBytes(&value, sizeof value);
  }
  void addBytes(const void* from, std::size_t count) {
    const auto* const at = static_cast<const std::uint8_t*>(from);
    bytes_.insert(bytes_.end(), at, at + count);
  }
  void add(const QAVPixelImage& image) {
    int size[2];
    image.GetSize(size[0], size[1]);
    add(size);
    add(image.GetFormat());
    const auto pixels = static_cast<std::size_t>(size[0]) * static_cast<std::size_t>(size[1]);
    const void* const from = image.GetFloatingPixelsToRead() ? static_cast<const void*>(image.GetFloatingPixelsToRead())
                                                             : image.GetPixelsToRead();
    if (from && pixels) addBytes(from, pixels * static_cast<std::size_t>(image.GetBytesPerPixel()));
  }
  const Bytes& bytes() const { return bytes_; }

 private:
  Bytes bytes_;
};

struct Release {
  void operator()(QAVPixelImage* image) const { image->Release(); }
};
using Image = std::unique_ptr<QAVPixelImage, Release>;

/// `count` bytes: what is left of the input, again and again, a little different each time.
inline Bytes content(const Input& input, std::size_t count) {
  Bytes bytes(count);
  const auto rest = input.rest();
  for (std::size_t i = 0; i < count && !rest.empty(); ++i)
    bytes[i] = static_cast<std::uint8_t>(rest[i % rest.size()] + i / rest.size() * 7);
  return bytes;
}

/// An image of 1 to 4096 pixels. Its buffer begins at any misalignment and ends where the memory does.
class Picture {
 public:
  Picture(Input& input, QAVPixelImageFormat format)
      : width(1 + input.below(400)),
        height(1 + input.below(4096 / width)),
        misalignment_(input.byte() % 64u),
        memory_(std::make_unique<std::uint8_t[]>(misalignment_ + byteCount(format))) {
    const Bytes bytes = content(input, byteCount(format));
    std::copy(bytes.begin(), bytes.end(), memory_.get() + misalignment_);
    image.reset(new QAVPixelImage(width, height, format, memory_.get() + misalignment_, QAVDeallocatePixelsByCaller));
  }
  ~Picture() {
    expect(std::all_of(memory_.get(), memory_.get() + misalignment_, [](auto b) { return b == 0; }));
  }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  QAVPixelImage& operator*() const { return *image; }

  int width, height;

 private:
  std::size_t byteCount(QAVPixelImageFormat format) const {
    return static_cast<std::size_t>(width * height * (format + 1));
  }

  std::size_t misalignment_;
  std::unique_ptr<std::uint8_t[]> memory_;

 public:
  Image image;
};

inline QAVPixelImageFormat byteFormat(Input& input) { return static_cast<QAVPixelImageFormat>(input.below(4)); }
inline QAVPixelImageFormat colourFormat(Input& input) { return input.byte() & 1 ? RGBA8888 : RGB888; }
inline float unit(Input& input) { return static_cast<float>(static_cast<std::int8_t>(input.byte())) / 100; }

inline void pointOperations(Input& input, Outcome& outcome) {
  const int channels = input.byte();
  const float b = unit(input), c = unit(input), g = 1 + unit(input);
  const unsigned levels = 2u + static_cast<unsigned>(input.below(254));
  const Picture picture(input, byteFormat(input));
  outcome.add(QAVMMediaImageProcessor::AdjustColor(*picture, b, c, g, channels, nullptr, 1));
  outcome.add(QAVMMediaImageProcessor::Posterize(*picture, levels, QAVMMIChannelRed | QAVMMIChannelAlpha, nullptr, 1));
  outcome.add(QAVMMediaImageProcessor::Balance(*picture, c, b, g, nullptr, 1));
  outcome.add(*picture);
}

inline void stretchHistogram(Input& input, Outcome& outcome) {
  const int channels = input.byte();
  const Picture picture(input, byteFormat(input));
  outcome.add(QAVMMediaImageProcessor::StretchHistogram(*picture, channels, nullptr, 1));
  outcome.add(*picture);
}

inline void grey(Input& input, Outcome& outcome) {
  const auto type = static_cast<QAVMMIGreyType>(input.below(7));
  const Picture picture(input, colourFormat(input));
  outcome.add(QAVMMediaImageProcessor::Grey(*picture, type, nullptr, 1));
  outcome.add(*picture);
}

inline void mirror(Input& input, Outcome& outcome) {
  const auto type = static_cast<QAVMMIMirrorType>(input.below(4));
  const Picture picture(input, byteFormat(input));
  outcome.add(QAVMMediaImageProcessor::Mirror(*picture, type, nullptr, 1));
  outcome.add(*picture);
}

inline void mask(Input& input, Outcome& outcome) {
  const auto type = static_cast<QAVMMIMaskType>(input.below(2));
  const Picture source(input, RGBA8888);
  const Image turned((*source).CreateConvertedCopy(RGBA8888));
  QAVMMediaImageProcessor::Mirror(*turned, QAVMMIMirrorBoth, nullptr, 1);
  const Image result(QAVMMediaImageProcessor::Mask(*source, *turned, type, nullptr));
  outcome.add(*result);
}

inline void filter(Input& input, Outcome& outcome) {
  const auto type = static_cast<QAVMMIFilterType>(input.below(28));
  const int passes = 1 + input.below(3);
  const Picture picture(input, byteFormat(input));
  outcome.add(QAVMMediaImageProcessor::Filter(*picture, type, passes, nullptr, 0));
  outcome.add(*picture);
}

inline void convolution(Input& input, Outcome& outcome) {
  const int size = 1 + 2 * input.below(6);
  const int kind = input.byte();
  std::vector<float> kernel(static_cast<std::size_t>(size * size));
  for (float& weight : kernel) {
    const int whole = static_cast<std::int8_t>(input.byte());
    weight = static_cast<float>(kind & 1 ? whole * 100 : whole) / (kind & 2 ? 7.0f : 1.0f);
    if (kind & 4) weight = std::max(weight, 0.0f);
  }
  const Picture picture(input, RGBA8888);
  outcome.add(QAVMMediaImageProcessor::LinearConvolveMatrix(*picture, size, kernel.data()));
  outcome.add(*picture);
}

inline void dither(Input& input, Outcome& outcome) {
  const auto type = static_cast<QAVMMIDitherType>(input.below(6));
  const Picture picture(input, byteFormat(input));
  outcome.add(QAVMMediaImageProcessor::Dither(*picture, type, nullptr, 0, 0));
  outcome.add(*picture);
}

inline void resize(Input& input, Outcome& outcome) {
  QAVMMBoxFilter box;
  QAVMMTriangleFilter triangle;
  QAVMMCatmullRomFilter catmullRom;
  QAVMMMitchellFilter mitchell;
  QAVMMLanczos2Filter lanczos2;
  QAVMMLanczos3Filter lanczos3;
  QAVMMGaussianFilter gaussian;
  QAVMMGenericFilter* const all[] = {&box, &triangle, &catmullRom, &mitchell, &lanczos2, &lanczos3, &gaussian};
  QAVMMResizeEngine engine(all[input.below(7)]);
  const bool floats = input.byte() & 1;
  const auto width = 1u + static_cast<unsigned>(input.below(300));
  const auto height = 1u + static_cast<unsigned>(input.below(100));
  const Picture picture(input, colourFormat(input));
  if (floats) (*picture).ConvertToFormat((*picture).GetFormat() == RGB888 ? RGBFloat : RGBAFloat);
  const Image result(engine.scale(picture.image.get(), width, height));
  if (result) outcome.add(*result);
}

inline void drawing(Input& input, Outcome& outcome) {
  const int x = input.word() % 500 - 50, y = input.word() % 500 - 50, width = input.below(300);
  const unsigned colour = static_cast<unsigned>(input.word()) << 16 | static_cast<unsigned>(input.word());
  const Picture source(input, RGBA8888);
  const Picture picture(input, RGBA8888);
  QAVMMIHelperRGBA helper(*picture);
  helper.Fill(x, y, colour);
  outcome.add(helper.Blend(*source, x, y));
  outcome.add(helper.Blend(*picture, -x % 3, y % 2));
  helper.HLine(y, x, x + width, colour);
  helper.Circle(x + width / 2, y, width / 4, ~colour, 1);
  outcome.add(*picture);
}

inline void comparison(Input& input, Outcome& outcome) {
  const double threshold = input.byte() / 16.0;
  const int sigmas = input.below(4);
  const Picture first(input, colourFormat(input));
  const Image second((*first).CreateConvertedCopy((*first).GetFormat()));
  QAVMMediaImageProcessor::Brightness(*second, unit(input), 31, nullptr, 1);
  double mean = 0, percentage = 0, deviation = 0, maximum = 0, median = 0, *differences = nullptr;
  int count = 0;
  outcome.add(QAVPixelImageComparator::ImageLabCompare(first.image.get(), second.get(), QAVUnicodeString(), threshold,
                                                       sigmas, mean, count, percentage, deviation, maximum, median,
                                                       differences));
  const std::unique_ptr<double[]> owned(differences);
  for (const double value : {mean, percentage, deviation, maximum, median}) outcome.add(value);
  outcome.add(count);
  if (differences) outcome.addBytes(differences, sizeof(double) * static_cast<std::size_t>(first.width * first.height));
}

inline void printEncoding(Input& input, Outcome& outcome) {
  const int mode = input.byte() % 2, bottomUp = input.byte() & 1;
  const Picture picture(input, byteFormat(input));
  std::ostringstream text;
  DumpASCII85(text, input.rest().data(), input.rest().size());
  outcome.add(RunLengthEncode(text, mode, picture.image.get(), bottomUp, 0));
  outcome.add(RunLengthEncode(text, mode, picture.image.get(), bottomUp, 1));
  outcome.add(DumpImage(text, picture.image.get(), bottomUp));
  outcome.add(DumpMask(text, picture.image.get(), 0));
  outcome.addBytes(text.view().data(), text.view().size());
}

inline void group4(Input& input, Outcome& outcome) {
  const int width = 1 + input.below(2700), height = 1 + input.below(16);
  int size[2] = {width, height}, length = 0, rows = 0, error = 0;
  const auto bytes = static_cast<std::size_t>((width * height + 7) / 8);
  Bytes page = content(input, bytes);
  Bytes coded(bytes * 8 + 64);
  int capacity = static_cast<int>(coded.size());
  outcome.add(CCITT_G4_enc(page.data(), size, capacity, coded.data(), length, error));
  outcome.addBytes(coded.data(), coded.size());
  outcome.add(CCITT_G4_dec(coded.data(), length, size, page.data(), rows, error));
  outcome.addBytes(page.data(), page.size());
}

inline void sgiFile(Input& input, Outcome& outcome) {
  const Picture picture(input, colourFormat(input));
  const MemoryFile file({});
  outcome.add(WriteRGB(QAVString(file.path()), picture.image.get()));
  const Image back(ReadRGB(QAVString(file.path())));
  expect(back != nullptr);
  outcome.add(*back);
}

}  // namespace qav::fuzz::operations

namespace qav::fuzz {

/// The first byte chooses an operation: it gives the same at every instruction-set level.
inline void operation_levels(std::span<const std::uint8_t> input) {
  using namespace operations;
  constexpr void (*all[])(Input&, Outcome&) = {pointOperations, stretchHistogram, grey,   mirror, mask,
                                               filter,          convolution,      dither, resize, drawing,
                                               comparison,      printEncoding,    group4, sgiFile};
  Input parameters(input);
  const auto run = all[static_cast<std::size_t>(parameters.below(std::size(all)))];
  sameAtEveryLevel([&] {
    Input again = parameters;
    Outcome outcome;
    run(again, outcome);
    return outcome.bytes();
  });
}

}  // namespace qav::fuzz
