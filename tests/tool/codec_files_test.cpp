#include <CCITT_G4.h>

#include "Run.h"
#include "codecs/block_file_writer.h"
#include "support/Test.h"

namespace qav::test {
namespace {

TEST(Group4Files, HoldThePictureAsTheConversionMakesIt) {
  std::mt19937 random(5);
  for (const auto& [width, height] : {std::pair{13, 9}, {64, 3}, {1, 1}, {257, 31}}) {
    SCOPED_TRACE(width);
    const Workplace work;
    const Image picture = randomImage(width, height, RGBA8888, random);
    ASSERT_TRUE(SUCCEEDED(picture->WriteToFile((work / "in.png").c_str(), "PNG")));
    ASSERT_EQ(work("in.png -o page.g4").code, 0);
    const std::string coded = work.read("page.g4");
    std::vector<unsigned char> bitmap(static_cast<std::size_t>(width * height + 7) / 8);
    int size[2] = {width, height}, rows = 0, error = 0;
    ASSERT_EQ(CCITT_G4_dec(reinterpret_cast<const unsigned char*>(coded.data()), static_cast<int>(coded.size()), size,
                           bitmap.data(), rows, error),
              0);

    ASSERT_EQ(work("page.g4 -o out.tif --size " + std::to_string(width) + "x" + std::to_string(height)).code, 0);
    const Image back = readBack(work / "out.tif"), grey(picture->CreateConvertedCopy(L8));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->GetFormat(), BitonalRuns);
    back->ExpandRuns(0);
    for (std::size_t i = 0; i < static_cast<std::size_t>(width * height); ++i) {
      const bool black = grey->GetPixelsToRead()[i] < 128;
      ASSERT_EQ(bitmap[i / 8] >> (7 - i % 8) & 1, black) << i;
      ASSERT_EQ(back->GetPixelsToRead()[i] < 128, black) << i;
    }
  }
}

TEST(BlockRecordFiles, AreReadAsColour) {
  const Workplace work;
  BlockFileWriter file(1);
  file.image(3, 2, 10400, 1, 0).record({1, 2, 3, 4, 5, 6}).record({11, 12, 13, 14, 15, 16}).record({7, 7, 7, 8, 8, 8});
  work.write("in.rip", {file.bytes().begin(), file.bytes().end()});
  ASSERT_EQ(work("in.rip -o out.png").code, 0);
  const Image picture = readBack(work / "out.png");
  ASSERT_TRUE(picture);
  ASSERT_EQ(picture->GetFormat(), RGB888);
  EXPECT_EQ(bytesOf(*picture), (std::vector<std::uint8_t>{1, 11, 7, 2, 12, 7, 3, 13, 7, 4, 14, 8, 5, 15, 8, 6, 16, 8}));
}

}  // namespace
}  // namespace qav::test
