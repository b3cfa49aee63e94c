#include <CCITT_G4.h>
#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "Run.h"
#include "codecs/block_file_writer.h"
#include "support/Images.h"

namespace qav::test {
namespace {

TEST(Group4Files, HoldThePictureAsTheConversionMakesIt) {
  std::mt19937 random(5);
  for (const auto& [width, height] : {std::pair{13, 9}, {64, 3}, {1, 1}, {257, 31}}) {
    SCOPED_TRACE(width);
    const Folder folder;
    const Image picture = randomImage(width, height, RGBA8888, random);
    ASSERT_TRUE(SUCCEEDED(picture->WriteToFile((folder / "in.png").c_str(), "PNG")));
    ASSERT_EQ(run({folder / "in.png", "-o", folder / "page.g4"}).code, 0);

    const Image grey(picture->CreateConvertedCopy(L8));
    const std::string coded = contentOf(folder / "page.g4");
    std::vector<unsigned char> bitmap(static_cast<std::size_t>(width * height + 7) / 8);
    int size[2] = {width, height}, rows = 0, error = 0;
    ASSERT_EQ(CCITT_G4_dec(reinterpret_cast<const unsigned char*>(coded.data()), static_cast<int>(coded.size()), size,
                           bitmap.data(), rows, error),
              0);
    for (std::size_t i = 0; i < static_cast<std::size_t>(width * height); ++i)
      ASSERT_EQ(bitmap[i / 8] >> (7 - i % 8) & 1, grey->GetPixelsToRead()[i] < 128) << i;

    const std::string sizeText = std::to_string(width) + "x" + std::to_string(height);
    ASSERT_EQ(run({folder / "page.g4", "-o", folder / "out.tif", "--size", sizeText}).code, 0);
    const Image back = readBack(folder / "out.tif");
    ASSERT_TRUE(back);
    EXPECT_EQ(back->GetFormat(), BitonalRuns);
    back->ExpandRuns(0);
    for (std::size_t i = 0; i < static_cast<std::size_t>(width * height); ++i)
      ASSERT_EQ(back->GetPixelsToRead()[i] < 128, grey->GetPixelsToRead()[i] < 128) << i;
  }
}

std::string asText(const std::vector<std::uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

TEST(BlockRecordFiles, AreReadAsColour) {
  const Folder folder;
  BlockFileWriter file(1);
  file.image(3, 2, 10400, 1, 0).record({1, 2, 3, 4, 5, 6}).record({11, 12, 13, 14, 15, 16}).record({7, 7, 7, 8, 8, 8});
  writeFile(folder / "in.rip", asText(file.bytes()));
  ASSERT_EQ(run({folder / "in.rip", "-o", folder / "out.png"}).code, 0);
  const Image picture = readBack(folder / "out.png");
  ASSERT_TRUE(picture);
  ASSERT_EQ(picture->GetFormat(), RGB888);
  const std::vector<std::uint8_t> expected{1, 11, 7, 2, 12, 7, 3, 13, 7, 4, 14, 8, 5, 15, 8, 6, 16, 8};
  EXPECT_TRUE(std::equal(expected.begin(), expected.end(), picture->GetPixelsToRead()));
}

TEST(CodecFiles, AreDescribedOrRefused) {
  const Folder folder;
  writeFile(folder / "page.g4", std::string("\xC0\x04\x00\x40", 4));  // two white rows and the end
  writeFile(folder / "cut.g4", "\x90");
  writeFile(folder / "empty.g4", "");
  writeFile(folder / "good.rip", asText(BlockFileWriter(1).image(30, 20, 20400, -1, 0).bytes()));
  writeFile(folder / "huge.rip", asText(BlockFileWriter(1).image(1 << 20, 1 << 20, 20400, -1, 0).bytes()));
  writeFile(folder / "odd.rip", asText(BlockFileWriter(1).image(30, 20, 10500, 0, 0).bytes()));
  std::filesystem::copy_file(QAV_TEST_CARD, folder / "card.rip");
  const struct {
    const char* arguments;
    int code;
    const char* message;
  } cases[] = {
      {"info page.g4", 0, "Group 4, 4 bytes, 1 channel of 1 bit; .*--size"},
      {"info page.g4 --size 50x2", 0, "50 x 2, 1 channel of 1 bit, 2 rows decoded\n"},
      {"info page.g4 --size 50x1", 0, "1 rows decoded: the end code"},
      {"info cut.g4 --size 50x2", 0, "1 rows decoded: .*ends inside a row"},
      {"info good.rip", 0, "block-record, extents 30 x 20"},
      {"info card.rip", 0, "PNG, 640 x 480 RGBA8888, 4 channels of 8 bits, 32 bits a pixel"},
      {"page.g4 -o out.png", 2, "--size WIDTHxHEIGHT"},
      {"page.g4 --size 50x3 -o out.png", 1, "beyond row 2"},
      {"cut.g4 --size 50x2 -o out.png", 1, "beyond row 1: the data ends inside a row"},
      {"empty.g4 --size 50x2 -o out.png", 1, "empty"},
      {"page.g4 --size 999999x999999 -o out.png", 1, "too large"},
      {"good.rip -o out.png", 1, "damaged"},
      {"huge.rip -o out.png", 1, "not all of it"},
      {"odd.rip -o out.png", 1, "unknown kind of samples"},
      {"info odd.rip", 1, "unknown kind of samples"},
      {"page.g4 -o out.rip", 2, "no known extension"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.arguments);
    std::vector<std::string> arguments = words(each.arguments);
    for (std::string& argument : arguments)
      if (argument.find('.') != std::string::npos) argument = folder / argument;
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, each.code);
    EXPECT_TRUE(std::regex_search(outcome.out + outcome.err, std::regex(each.message))) << outcome.out << outcome.err;
    EXPECT_FALSE(std::filesystem::exists(folder / "out.png"));
  }
}

}  // namespace
}  // namespace qav::test
