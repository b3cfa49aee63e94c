#include "support/PrintData.h"

#include "kernels/Base85.h"
#include "kernels/PrintSamples.h"
#include "print/Base85Text.h"
#include "print/SampleWindow.h"

#include <QAVPrintEncoding.h>

#include <cstring>
#include <memory>

namespace qav::bench {
namespace {

void encodeInMemory() {
  constexpr std::size_t together = 64;
  static std::vector<char> text(eightMegabytes().size() / 4 * 6);
  char* end = text.data();
  std::size_t lengths[together];
  const std::size_t lines = eightMegabytes().size() / kernels::kBase85LineBytes / together * together;
  for (std::size_t line = 0; line < lines; line += together)
    end = base85::writeLines(eightMegabytes().data() + line * kernels::kBase85LineBytes, together, '\n', end, lengths);
  keep(text.data());
}

/// What the encoders have made, decoded again.
std::vector<std::uint8_t> decoded(HRESULT (*decoder)(const std::uint8_t*, unsigned, std::uint8_t*&, unsigned&, int),
                                  const std::vector<std::uint8_t>& coded) {
  std::uint8_t* out = nullptr;
  unsigned size = 0;
  decoder(coded.data(), static_cast<unsigned>(coded.size()), out, size, 0);
  const std::unique_ptr<std::uint8_t[]> owned(out);
  keep(out);
  return {};
}

// The run-length records of an image, without their text; returns their number of bytes.
std::size_t encodeRecords(const QAVPixelImage& image, std::vector<std::uint8_t>& out) {
  constexpr std::size_t samples = std::size_t{kPageWidth} * kPageHeight;
  out.resize(2 * samples);
  SampleWindow window(&image, 0, 1, samples);
  std::size_t at = 0;
  while (window.fill()) {
    std::size_t filled = 0;
    window.moveTo(
        kernels::printSamplesKernels().runLengthRecords(window.input(), window.at(), out.data() + at, filled));
    at += filled;
  }
  keep(out.data());
  return at;
}

std::vector<std::uint8_t> records(const QAVPixelImage& image) {
  std::vector<std::uint8_t> all;
  all.resize(encodeRecords(image, all));
  return all;
}

void encodeRecords(const QAVPixelImage& image) {
  static std::vector<std::uint8_t> out;
  encodeRecords(image, out);
}

const QAVPixelImage& image(const std::vector<std::uint8_t>& samples) {
  auto* const made = new QAVPixelImage(kPageWidth, kPageHeight, L8);
  std::memcpy(made->GetPixelsToModify(), samples.data(), samples.size());
  return *made;
}

const QAVPixelImage& textImage() {
  static const QAVPixelImage& made = image(greyText());
  return made;
}
const QAVPixelImage& photographOfPageSize() {
  static const QAVPixelImage& made = image(greyPhotograph());
  return made;
}

const std::vector<std::uint8_t>& base85Text() {
  static const std::vector<std::uint8_t> text = [] {
    struct Buffer : std::streambuf {
      std::streamsize xsputn(const char* s, std::streamsize n) override {
        text.insert(text.end(), s, s + n);
        return n;
      }
      std::vector<std::uint8_t> text;
    } buffer;
    std::ostream stream(&buffer);
    DumpASCII85(stream, eightMegabytes().data(), eightMegabytes().size());
    return buffer.text;
  }();
  return text;
}

[[maybe_unused]] const bool added[] = {
    addOurs("base-85 encode 8 MB, in memory", 8, encodeInMemory),
    addOurs("base-85 encode 8 MB, stream by lines", 2.5,
            [] { DumpASCII85(discardingStream(), eightMegabytes().data(), eightMegabytes().size()); }),
    addOurs("base-85 encode 8 MB, stream by characters", 14,
            [] { DumpASCII85(discardingStream(), eightMegabytes().data(), eightMegabytes().size()); }),
    addOurs("base-85 decode to 8 MB", 5, [] { decoded(ASCII85Decode, base85Text()); }),
    addOurs("run-length records, grey text page", 5, [] { encodeRecords(textImage()); }),
    addOurs("run-length records, grey photograph", 8, [] { encodeRecords(photographOfPageSize()); }),
    addOurs("run-length encode as text, grey text page", 5,
            [] { RunLengthEncode(discardingStream(), 1, &textImage(), 0, 0); }),
    addOurs("run-length encode as text, grey photograph", 8,
            [] { RunLengthEncode(discardingStream(), 1, &photographOfPageSize(), 0, 0); }),
    addOurs("run-length size, grey text page", 5, [] { IsRLECompressible(discardingStream(), 1, &textImage(), 0); }),
    addOurs("run-length decode, grey text page", 3,
            [] {
              static const auto coded = records(textImage());
              decoded(RunLengthDecode, coded);
            }),
    addOurs("run-length decode, grey photograph", 3,
            [] {
              static const auto coded = records(photographOfPageSize());
              decoded(RunLengthDecode, coded);
            }),
    addOurs("mask dump, 8 MB RGBA", 0,
            [] {
              static const QAVPixelImage& picture = *photographImage(2048, 1024, RGBA8888);
              DumpMask(discardingStream(), &picture, 0);
            }),
    addOurs("image dump, 8 MB RGBA", 0,
            [] {
              static const QAVPixelImage& picture = *photographImage(2048, 1024, RGBA8888);
              DumpImage(discardingStream(), &picture, 1);
            }),
};

}  // namespace
}  // namespace qav::bench
