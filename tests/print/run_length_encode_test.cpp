#include <QAVPrintEncoding.h>

#include "print/PrintReference.h"
#include "support/Test.h"

#include <sstream>

namespace qav::test {
namespace {

std::string encoded(const QAVPixelImage& image, int bottomUp, int mode) {
  RecordingStream stream;
  EXPECT_EQ(RunLengthEncode(stream, mode, &image, bottomUp, 0), 1);
  return stream.text();
}

void expectAsMachine(const QAVPixelImage& image, int bottomUp, int mode) {
  const RunLengthMachine machine = runLengthMachine(image, bottomUp != 0, mode);
  ASSERT_EQ(encoded(image, bottomUp, mode), RunLengthMachine(machine).finish());
  RecordingStream stream;
  ASSERT_EQ(IsRLECompressible(stream, mode, &image, bottomUp), machine.isCompressible(byteCount(image)) ? 1 : 0);
  ASSERT_EQ(stream.text(), "");
}

// Runs whose lengths stand around everything that the machine counts to.
Bytes awkwardRuns(std::size_t count, std::mt19937& random) {
  constexpr unsigned lengths[] = {1,  1,   1,   1,   1,   1,   2,   2,   3,   4,   63, 64,
                                  65, 126, 127, 128, 129, 130, 255, 256, 257, 258, 400};
  const unsigned shortest = random() % 3 ? 9 : 23;  // mostly short runs, or all of them
  Bytes bytes;
  std::uint8_t value = 0;
  while (bytes.size() < count) {
    unsigned length = lengths[random() % shortest];
    if (random() % 8 == 0) length = lengths[random() % 23];
    // Long literals, so that records end around their limit.
    const std::size_t singles = random() % 4 == 0 ? 118 + random() % 14 : 0;
    for (std::size_t i = 0; i < singles; ++i)
      bytes.push_back(value = static_cast<std::uint8_t>(value + 1 + random() % 5));
    value = static_cast<std::uint8_t>(value + 1 + random() % 250);
    bytes.insert(bytes.end(), length, value);
  }
  bytes.resize(count);
  return bytes;
}

TEST(RunLengthEncode, IsTheStateMachineForEveryFormatModeAndRowOrder) {
  std::mt19937 random(8);
  atEveryLevel([&] {
    for (int round = 0; round < 700; ++round) {
      const auto format = kByteFormats[round % 4];
      const int width = 1 + below(round % 9 ? 70 : 3000, random), height = 1 + below(40, random);
      Image image = makeImage(width, height, format);
      const Bytes bytes = awkwardRuns(byteCount(*image), random);
      std::copy(bytes.begin(), bytes.end(), image->GetPixelsToModify());
      expectAsMachine(*image, round & 4, round & 8 ? 1 : below(3, random));
      if (HasFatalFailure()) FAIL() << width << " x " << height << " format " << format << " round " << round;
    }
    for (const Texture texture : kTextures)
      for (const auto format : kByteFormats) expectAsMachine(*randomImage(611, 90, format, random, texture), 1, 1);
  });
}

TEST(RunLengthEncode, ShortSequences) {
  struct Case {
    Bytes samples;
    Bytes records;
  };
  const Case cases[] = {
      {{7}, {0, 7, 128}},
      {Bytes(130, 9), {129, 9, 255, 9, 128}},
      {{1, 2, 2, 3}, {3, 1, 2, 2, 3, 128}},
      {{1, 2, 2}, {0, 1, 255, 2, 128}},
      {{1, 2, 2, 3, 3, 4}, {0, 1, 255, 2, 255, 3, 0, 4, 128}},
      {{}, {128}},
  };
  for (const Case& c : cases) {
    const int width = static_cast<int>(c.samples.size());
    const Image image = imageOf(width, 1, L8, c.samples);
    EXPECT_EQ(encoded(*image, 0, 1), base85Text(c.records.data(), c.records.size()));
    std::ostringstream unused;
    EXPECT_EQ(IsRLECompressible(unused, 1, image.get(), 0), c.records.size() <= c.samples.size() ? 1 : 0);
  }
}

// The whole pixels count against the records of the colours alone.
TEST(RunLengthEncode, TransparencyIsRoomForTheRecords) {
  const Image image = imageOf(3, 1, LA88, {1, 255, 2, 255, 3, 255});
  std::ostringstream unused;
  EXPECT_EQ(IsRLECompressible(unused, 1, image.get(), 0), 1);
  EXPECT_EQ(IsRLECompressible(unused, 1, imageOf(3, 1, L8, {1, 2, 3}).get(), 0), 0);
}

TEST(RunLengthEncode, RefusesWhatHoldsNoBytes) {
  std::ostringstream stream;
  EXPECT_EQ(RunLengthEncode(stream, 1, nullptr, 0, 0), 0);
  for (const auto format : kAllFormats) {
    if (format > RGBA8888) {
      EXPECT_EQ(RunLengthEncode(stream, 1, makeImage(4, 4, format).get(), 0, 0), 0);
    }
  }
  EXPECT_EQ(stream.str(), "");
}

TEST(RunLengthEncode, LetsAStreamsExceptionPass) {
  struct Refusing : std::streambuf {
    int_type overflow(int_type) override { throw std::runtime_error("full"); }
    std::streamsize xsputn(const char*, std::streamsize) override { throw std::runtime_error("full"); }
  } buffer;
  std::mt19937 random(1);
  const Image image = randomImage(300, 20, RGBA8888, random);
  const auto expectPassed = [&](auto write) {
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit);
    EXPECT_THROW(write(stream), std::runtime_error);
  };
  expectPassed([&](std::ostream& os) { RunLengthEncode(os, 1, image.get(), 0, 0); });
  expectPassed([&](std::ostream& os) { DumpImage(os, image.get(), 0); });
  expectPassed([&](std::ostream& os) { DumpMask(os, image.get(), 0); });
}

}  // namespace
}  // namespace qav::test
