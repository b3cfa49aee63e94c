#include "kernels/TableLookup.h"

#include "support/GuardedBytes.h"
#include "support/Images.h"
#include "support/Levels.h"

namespace qav::test {
namespace {

struct Tables {
  explicit Tables(std::mt19937& random) {
    for (auto& table : entries)
      for (auto& entry : table) entry = static_cast<std::uint8_t>(random());
  }
  std::uint8_t entries[4][256];
};

GuardedBytes guardedNoise(std::size_t count, std::size_t misalignment, std::mt19937& random) {
  GuardedBytes bytes(count, misalignment);
  fill(bytes.data(), count, Texture::Noise, random);
  return bytes;
}

TEST(TableLookup, EveryChoiceOfChannelsAtEveryLength) {
  std::mt19937 random(1);
  atEveryLevel([&] {
    const auto& kernels = kernels::tableLookupKernels();
    for (std::size_t pixels = 0; pixels < 300; pixels += pixels < 70 ? 1 : 13) {
      const Tables tables(random);
      for (int channels = 1; channels <= 4; ++channels) {
        const auto stride = static_cast<std::size_t>(channels);
        for (unsigned selected = 0; selected < 1u << channels; ++selected) {
          GuardedBytes one = guardedNoise(pixels * stride, pixels % 3, random);
          GuardedBytes each = one;
          auto expectedOne = one.bytes(), expectedEach = one.bytes();
          const std::uint8_t* chosen[4] = {};
          for (std::size_t i = 0; i < expectedOne.size(); ++i) {
            const std::size_t k = i % stride;
            if (!(selected >> k & 1u)) continue;
            chosen[k] = tables.entries[k];
            expectedOne[i] = tables.entries[0][expectedOne[i]];
            expectedEach[i] = tables.entries[k][expectedEach[i]];
          }
          if (channels == 1) {
            if (!selected) continue;
            kernels.mapBytes(one.data(), pixels, tables.entries[0]);
            kernels.mapBytes(each.data(), pixels, tables.entries[0]);
          } else {
            kernels.mapSelected(one.data(), pixels, channels, selected, tables.entries[0]);
            kernels.mapEach(each.data(), pixels, channels, chosen);
          }
          ASSERT_EQ(one.bytes(), expectedOne) << pixels << " pixels of " << channels << ", channels " << selected;
          ASSERT_EQ(each.bytes(), expectedEach) << pixels << " pixels of " << channels << ", channels " << selected;
          ASSERT_TRUE(one.guardsIntact() && each.guardsIntact());
        }
      }
    }
  });
}

}  // namespace
}  // namespace qav::test
