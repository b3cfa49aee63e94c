#include "fuzz/operation_levels.h"

#include "support/Corpus.h"

namespace qav::test {
namespace {

TEST(OperationLevels, Replay) { replayCorpus("operation_levels", fuzz::operation_levels); }

}  // namespace
}  // namespace qav::test
