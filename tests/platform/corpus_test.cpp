#include "support/Corpus.h"
#include "fuzz/picture_files.h"

namespace qav::test {
namespace {

TEST(PictureCorpora, Replay) {
  replayCorpus("read_tiff", fuzz::read_tiff);
  replayCorpus("read_png", fuzz::read_png);
  replayCorpus("read_jpeg", fuzz::read_jpeg);
}

}  // namespace
}  // namespace qav::test
