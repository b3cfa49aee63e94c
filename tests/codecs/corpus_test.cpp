#include "support/Corpus.h"
#include "fuzz/block_raster.h"
#include "fuzz/g4_decode.h"
#include "support/Levels.h"

namespace qav::test {
namespace {

TEST(CodecCorpora, Replay) {
  atEveryLevel([] { replayCorpus("g4_decode", fuzz::g4_decode); });
  replayCorpus("block_raster", fuzz::block_raster);
}

}  // namespace
}  // namespace qav::test
