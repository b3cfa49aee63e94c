#include "fuzz/block_records.h"
#include "fuzz/g4_pages.h"
#include "fuzz/operation_levels.h"
#include "fuzz/picture_files.h"
#include "fuzz/print_decoders.h"
#include "fuzz/sgi_rows.h"
#include "support/Files.h"
#include "support/Test.h"

namespace qav::test {
namespace {

struct Corpus {
  const char* name;
  void (*target)(std::span<const std::uint8_t>);
  friend void PrintTo(const Corpus& corpus, std::ostream* os) { *os << corpus.name; }
};

const Corpus kCorpora[] = {
    {"ascii85_decode", fuzz::ascii85_decode},
    {"block_raster", fuzz::block_raster},
    {"block_records", fuzz::block_records},
    {"g4_decode", fuzz::g4_decode},
    {"g4_pages", fuzz::g4_pages},
    {"operation_levels", fuzz::operation_levels},
    {"read_jpeg", fuzz::read_jpeg},
    {"read_png", fuzz::read_png},
    {"read_rgb", fuzz::read_rgb},
    {"read_tiff", fuzz::read_tiff},
    {"run_length_decode", fuzz::run_length_decode},
    {"sgi_rows", fuzz::sgi_rows},
};

class Corpora : public testing::TestWithParam<Corpus> {
 protected:
  // In an array of its exact size.
  void run(std::span<const std::uint8_t> input) {
    const auto exact = std::make_unique<std::uint8_t[]>(input.size());
    std::copy(input.begin(), input.end(), exact.get());
    GetParam().target({exact.get(), input.size()});
  }
};

// Every file in the corpus, every prefix of it, and every single bit turned over; of large files only some thousand of
// these.
TEST_P(Corpora, Replay) {
  std::size_t files = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(QAV_SOURCE_DIR "/fuzz/corpus/" + std::string(GetParam().name))) {
    SCOPED_TRACE(entry.path().string());
    auto bytes = readFile(entry.path().string());
    const std::size_t step = bytes.size() / 2000 + 1;
    run(bytes);
    for (std::size_t size = 0; size < bytes.size(); size += step) run(std::span(bytes).first(size));
    for (std::size_t bit = 0; bit < 8 * bytes.size(); bit += 4 * step - 3) {
      const auto flipped = static_cast<std::uint8_t>(1u << bit % 8);
      bytes[bit / 8] ^= flipped;
      run(bytes);
      bytes[bit / 8] ^= flipped;
    }
    ++files;
  }
  EXPECT_GT(files, 0u);
}

// From a few values to all of them, so that some inputs are mostly headers, counts or runs.
TEST_P(Corpora, RandomInputs) {
  std::mt19937 random(8);
  for (int round = 0; round < 1000; ++round) {
    std::vector<std::uint8_t> input(random() % 900);
    const unsigned values = 2u << random() % 8;
    for (auto& byte : input) byte = static_cast<std::uint8_t>(random() % 4 ? random() % values : random());
    run(input);
  }
}

INSTANTIATE_TEST_SUITE_P(Fuzz, Corpora, testing::ValuesIn(kCorpora), [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace qav::test
