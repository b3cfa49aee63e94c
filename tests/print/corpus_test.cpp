#include "fuzz/print_decoders.h"

#include "support/Corpus.h"

namespace qav::test {
namespace {

TEST(PrintDecoders, SurviveTheirCorpora) {
  replayCorpus("ascii85_decode", fuzz::ascii85_decode);
  replayCorpus("run_length_decode", fuzz::run_length_decode);
}

}  // namespace
}  // namespace qav::test
