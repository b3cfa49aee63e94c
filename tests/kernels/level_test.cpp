#include "kernels/Level.h"

#include "kernels/TableLookup.h"
#include "support/Test.h"

#include <set>

namespace qav::kernels {
namespace {

TEST(Level, TheBestOneIsInUseAndEachHasKernelsOfItsOwn) {
  EXPECT_EQ(activeLevel(), bestLevel());
  EXPECT_FALSE(setActiveLevel(static_cast<Level>(-1)));
  EXPECT_FALSE(setActiveLevel(static_cast<Level>(kLevelCount)));
  std::set<const void*> chosen;
  for (int level = 0; level <= static_cast<int>(bestLevel()); ++level) {
    ASSERT_TRUE(setActiveLevel(static_cast<Level>(level)));
    EXPECT_TRUE(chosen.insert(&tableLookupKernels()).second) << levelName(static_cast<Level>(level));
  }
  EXPECT_EQ(activeLevel(), bestLevel());
}

}  // namespace
}  // namespace qav::kernels
