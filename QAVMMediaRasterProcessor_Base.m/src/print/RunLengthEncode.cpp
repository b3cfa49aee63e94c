#include <QAVPrintEncoding.h>

#include "formats/PixelSpan.h"
#include "kernels/PrintSamples.h"
#include "print/SampleWindow.h"

#include <cstring>
#include <optional>

namespace {

using qav::SampleWindow;
using namespace qav::kernels;

constexpr std::uint8_t kEndOfData = 128;

/// What run-length coding needs to know of an image.
struct SampleCounts {
  std::size_t bytes = 0;    ///< of all pixels
  std::size_t encoded = 0;  ///< samples: all bytes but as many as there are of alpha
};

std::optional<SampleCounts> countSamples(const QAVPixelImage* image) {
  if (!image) return std::nullopt;
  const QAVPixelImageFormat format = image->GetFormat();
  const auto channels = static_cast<std::size_t>(qav::byteChannels(format));
  if (channels == 0) return std::nullopt;
  int width = 0, height = 0;
  image->GetSize(width, height);
  if (width < 1 || height < 1) return SampleCounts{};
  const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const bool hasAlpha = format == LA88 || format == RGBA8888;
  return SampleCounts{pixels * channels, pixels * (hasAlpha ? channels - 1 : channels)};
}

/// Hands whole groups of four bytes on, once the records that are to follow would find the buffer full. Returns the
/// bytes that remain, or nothing to stop.
template <class HandOn>
bool makeRecords(SampleWindow& window, RunLengthStep step, std::uint8_t* records, std::size_t& filled, HandOn handOn) {
  while (window.fill()) {
    if (filled >= kRunLengthFull) {
      const std::size_t whole = filled / 4 * 4;
      if (!handOn(whole)) return false;
      filled -= whole;
    }
    window.moveTo(step(window.input(), window.at(), records, filled));
  }
  return true;
}

int encode(std::ostream& os, SampleWindow& window) {
  std::uint8_t records[kRunLengthRoom];
  std::size_t filled = 0;
  makeRecords(window, printSamplesKernels().runLengthRecords, records, filled, [&](std::size_t whole) {
    DumpASCII85(os, records, whole);
    std::memmove(records, records + whole, filled - whole);
    return true;
  });
  records[filled++] = kEndOfData;
  DumpASCII85(os, records, filled);
  return 1;
}

// Records are counted as they would be handed on, so that hopeless data is given up early.
int isCompressible(SampleWindow& window, const SampleCounts& counts) {
  std::size_t filled = 0, flushed = 0;
  const bool complete =
      makeRecords(window, printSamplesKernels().runLengthSize, nullptr, filled, [&](std::size_t whole) {
        flushed += whole;
        return flushed + 2 < counts.encoded;
      });
  return complete && flushed + filled + 1 <= counts.bytes ? 1 : 0;
}

}  // namespace

int RunLengthEncode(ostream_withassign& os, int mode, const QAVPixelImage* image, int bottomUp, int sizeOnly) {
  const auto counts = countSamples(image);
  if (!counts) return 0;
  SampleWindow window(image, bottomUp, mode, counts->encoded);
  return sizeOnly ? isCompressible(window, *counts) : encode(os, window);
}

int IsRLECompressible(ostream_withassign& os, int mode, const QAVPixelImage* image, int bottomUp) {
  return RunLengthEncode(os, mode, image, bottomUp, 1);
}
