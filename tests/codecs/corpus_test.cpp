#include "support/Corpus.h"
#include "fuzz/block_records.h"
#include "fuzz/g4_pages.h"
#include "fuzz/sgi_rows.h"

namespace qav::test {
namespace {

TEST(CodecCorpora, Replay) {
  replayCorpus("g4_decode", fuzz::g4_decode);
  replayCorpus("g4_pages", fuzz::g4_pages);
  replayCorpus("block_raster", fuzz::block_raster);
  replayCorpus("block_records", fuzz::block_records);
  replayCorpus("read_rgb", fuzz::read_rgb);
  replayCorpus("sgi_rows", fuzz::sgi_rows);
}

}  // namespace
}  // namespace qav::test
