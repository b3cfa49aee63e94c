#include <regex>

#include "Run.h"
#include "support/Test.h"

namespace qav::test {
namespace {

TEST(SeveralInputs, AreWrittenUnderTheirOwnNames) {
  const struct {
    const char* arguments;
    int code;
    const char *made, *said;
  } cases[] = {
      {"a.png b.png -o out/{name}.tif", 0, "a.tif b.tif", "2 pictures written\n"},
      {"a.png a.tif --negative ./b.tif -o link/{name}-{index}.{ext}", 0, "a-1.png a-2.tif b-3.tif",
       "3 pictures written\n"},
      {"a.png b.png c.png d.png e.png a.tif b.tif c.tif d.tif e.tif -o out/{index}.png", 0,
       "01.png 02.png 03.png 04.png 05.png 06.png 07.png 08.png 09.png 10.png", "10 pictures written\n"},
      {"a.png bad.png none.png c.png -o out/{{{name}}}.ps", 1, "{a}.ps {c}.ps",
       "'bad.png': not an undamaged.*'none.png': No such file.*2 of 4 pictures written; not 'bad.png', 'none.png'\n"},
      {"a.png b.tif --filter opening -o out/{name}.png", 1, "", "'a.png': --filter opening: .*0 of 2 .*'b.tif'\n"},
      // A pattern that is used for one input only.
      {"e.tif -o out/{name}.{ext}", 0, "e.tif", "^$"},
      {"- -o out/{name}.x --format tif", 0, "stdin.x", "^$"},
      {"- --size 9x9 -o out/{name}.png", 0, "stdin.png", "^$"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.arguments);
    const Workplace work;
    const auto before = work.count();
    const Outcome outcome = work(each.arguments, [] { from("a.png", STDIN_FILENO); });
    EXPECT_EQ(outcome.code, each.code);
    EXPECT_EQ(outcome.out, "");
    std::string said = outcome.err;
    std::replace(said.begin(), said.end() - !said.empty(), '\n', ' ');
    EXPECT_TRUE(std::regex_search(said, std::regex(each.said))) << said;
    EXPECT_EQ(work.made(), words(each.made));
    EXPECT_EQ(work.count(), before);
  }
  const Workplace work;
  ASSERT_EQ(work("a.png b.tif c.png --channels r --negative -o out/{index}{name}.png").code, 0);
  for (const auto& [input, output] : {std::pair{"a.tif", "1a.png"}, {"b.png", "2b.png"}, {"c.tif", "3c.png"}}) {
    ASSERT_EQ(work(std::string(input) + " --channels r --negative -o alone.png").code, 0);
    EXPECT_EQ(work.read("alone.png"), work.read(std::string("out/") + output));
  }
}

TEST(StandardStreams, CarryPicturesOfEveryType) {
  for (const std::string type : {"tif", "png", "jpg", "sgi", "ps", "eps", "g4"}) {
    SCOPED_TRACE(type);
    const Workplace work;
    const std::string file = "file." + type, size = " --size 7x2 ";
    ASSERT_EQ(work("e.png -o " + file).code, 0);
    const Outcome written = work("- -o - --format " + type, [] { from("e.tif", STDIN_FILENO); });
    EXPECT_EQ(written.code, 0);
    EXPECT_EQ(written.err, "");
    EXPECT_TRUE(written.out == work.read(file));
    if (type == "ps" || type == "eps") continue;
    work.write("input", written.out);
    const auto feed = [] { from("input", STDIN_FILENO); };
    EXPECT_EQ(work("-" + size + "-o read.png", feed).code, 0);
    ASSERT_EQ(work(file + size + "-o same.png").code, 0);
    EXPECT_EQ(work.read("read.png"), work.read("same.png"));
    EXPECT_EQ(work("info -" + size, feed).out.substr(1), work("info " + file + size).out.substr(file.size()));
  }
  EXPECT_EQ(Workplace()("compare - a.png", [] { from("a.tif", STDIN_FILENO); }).code, 0);
}

TEST(Verbose, SaysHowLongEachStepTakes) {
  const Workplace work;
  const Outcome outcome =
      work("- -v --channels r --negative --resize 9x8 -o - --format png", [] { from("a.png", STDIN_FILENO); });
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.out.substr(1, 3), "PNG");
  const std::string time = " +[0-9]+\\.[0-9]{2} ms  ";
  EXPECT_TRUE(std::regex_match(outcome.err, std::regex("- -> -\n" + time + "reading standard input: 3 x 2 RGB888\n" +
                                                       time + "--negative\n" + time + "--resize 9x8: 9 x 8 RGB888\n" +
                                                       time + "writing standard output: PNG\n" + time + "in all\n")))
      << outcome.err;
}

}  // namespace
}  // namespace qav::test
