#include <sys/stat.h>

#include <regex>

#include "Run.h"
#include "codecs/block_file_writer.h"
#include "support/Test.h"

namespace qav::test {
namespace {

void onTerminal(int descriptor) {
  const int master = posix_openpt(O_RDWR);
  if (grantpt(master) != 0 || unlockpt(master) != 0) _exit(125);
  from(ptsname(master), descriptor);
}

void intoBrokenPipe() {
  int ends[2];
  if (pipe(ends) != 0) _exit(125);
  dup2(ends[1], STDOUT_FILENO);
  close(ends[0]);
}

// The exit code, and what is said in one line: the wrong word and what would be right. Whatever the arguments, nothing
// is written and no input is changed.
struct Case {
  const char* arguments;
  int code;
  const char* said;
  void (*prepare)() = nullptr;
};

void expectRefusals(const Workplace& work, const std::vector<Case>& cases) {
  const auto files = work.count();
  const std::string before = work.read("a.png") + work.read("card.png");
  for (const auto& [arguments, code, said, prepare] : cases) {
    SCOPED_TRACE(testing::Message() << arguments << ": " << said);
    const Outcome outcome = work(arguments, prepare);
    EXPECT_EQ(outcome.code, code);
    const std::string all = outcome.out + outcome.err;
    EXPECT_TRUE(std::regex_search(all, std::regex(said))) << all;
    EXPECT_TRUE(code == 0 || std::count(all.begin(), all.end(), '\n') == 1) << all;
    EXPECT_TRUE(work.made().empty());
    EXPECT_EQ(work.count(), files);
    EXPECT_TRUE(work.read("a.png") + work.read("card.png") == before);
  }
}

TEST(Refusals, NameWhatIsWrong) {
  const std::vector<Case> cases = {
      {"card.png --brightness 2 -o out/x.png", 2, "--brightness.*'2'.*from -1 to 1"},
      {"card.png --adjust 0 0 9 -o out/x.png", 2, "--adjust.*GAMMA.*'9'.*from 0.0001 to 3"},
      {"card.png -o out/x.png --adjust 0 0", 2, "--adjust.*BRIGHTNESS CONTRAST GAMMA"},
      {"card.png --posterize 2.5 -o out/x.png", 2, "--posterize.*'2.5'.*integer"},
      {"card.png --channels xyz --negative -o out/x.png", 2, "--channels.*'xyz'.*l, r, g, b, a"},
      {"card.png --convert RGB -o out/x.png", 2, "--convert.*'RGB'.*RGB888"},
      {"card.png --brightnes 0.1 -o out/x.png", 2, "'--brightnes'.*--brightness"},
      {"card.png --negative=1 -o out/x.png", 2, "--negative"},
      {"card.png second -o out/x.png", 2, "'second'"},
      {"card.png", 2, "-o OUTPUT"},
      {"", 2, "INPUT"},
      {"card.png -o out.gif", 2, "'out.gif'.*\\.png"},
      {"info", 2, "FILE"},
      {"card.png --channels l --negative -o out/x.png", 1, "--negative.*640 x 480 RGBA8888"},
      {"card.png --convert RGBFloat --negative -o out/x.png", 1, "--negative.*RGBFloat"},
      {"card.png --filter blur -o out/x.png", 2, "--filter.*'blur'.*box"},
      {"card.png --filter minimum -o out/x.png", 1, "--filter minimum.*RGBA8888"},
      {"card.png --convolve 3 1,2 -o out/x.png", 1, "--convolve.*2 weights.*9"},
      {"card.png --convolve 1 x -o out/x.png", 1, "--convolve.*'x'"},
      {"card.png --convert L8 --convolve 1 1 -o out/x.png", 1, "--convolve.*RGBA8888"},
      {"card.png --draw line -o out/x.png", 2, "--draw: give a shape"},
      {"card.png --draw 'line filled brush=2' -o out/x.png", 2, "--draw: give a colour"},
      {"card.png --draw 'blob 1 2 #102030' -o out/x.png", 2, "--draw: 'blob'.*no shape"},
      {"card.png --draw 'line 1 2 3 #102030' -o out/x.png", 2, "--draw: line.*4 numbers"},
      {"card.png --draw 'circle 1 2 2147483648 9' -o out/x.png", 2, "--draw: R: '2147483648'.*to 2147483647"},
      {"card.png --draw 'fill 1 2 #1234567' -o out/x.png", 2, "--draw: COLOUR: '#1234567'"},
      {"card.png --draw 'point 1 2 9 brush=13' -o out/x.png", 2, "--draw: brush: '13'.*from 0 to 12"},
      {"card.png --draw 'polygon 1,2 3,4 5 9' -o out/x.png", 2, "--draw: polygon: '5'.*X,Y"},
      {"card.png --draw 'polygon 1,2 3,4 5,6 / 7,8 9' -o out/x.png", 2, "--draw: polygon: give 3 vertices"},
      {"card.png --blend card.png@1 -o out/x.png", 2, "--blend: '.*card.png@1'.*FILE@X,Y"},
      {"card.png --blend card.png@1,b -o out/x.png", 2, "--blend: Y: 'b'.*integer"},
      {"card.png --blend none.png@1,2 -o out/x.png", 1, "'none.png'.*No such file"},
      {"card.png --blend card.png@640,0 -o out/x.png", 1, "--blend .*@640,0: nothing.*inside"},
      {"no/such/file.png -o out/x.png", 1, "'no/such/file.png'.*No such file"},
      {"/ -o out/x.png", 1, "'/'.*folder"},
      {"card.png -o no/such/folder/out.png", 1, "'no/such/folder/out.png'.*No such file"},
      {"card.png -o pipe.png", 1, "pipe.png': it is not an ordinary file"},
      {"info no-such-file", 1, "'no-such-file'"},
      {"a.png -o -", 2, "standard output.*--format.*png"},
      {"a.png --fit 9x9 --background 1,2 -o out/x.png", 2, "--fit: --background: '1,2'.*give 4 numbers"},
      {"a.png -o x --format rip", 2, "--format.*'rip'.*tif, "},
      // Of several inputs, before anything is written.
      {"a.png b.png -o out/x.png", 2, "'a.png' and 'b.png' .* 'out/x.png'; put \\{name\\}"},
      {"a.png b.png a.tif -o out/{name}.png", 2, "'a.png' and 'a.tif' .* 'out/a.png'.*\\{index\\}"},
      {"a.png b.png -o - --format png", 2, "both be written to standard output"},
      {"out/../a.png b.png -o {name}.png", 2, "'a.png' is an input too"},
      {"a.png b.png -o link/../{name}.png", 2, "is an input too"},
      {"a.png -o {name}.png", 2, "'a.png' is an input too"},
      {"a.png -o out/{nam}.png", 2, "'\\{nam\\}'.*\\{name\\}, \\{ext\\} or \\{index\\}"},
      {"a.png -o out/{name.png", 2, "'\\{name.png'.*\\{\\{ for a brace"},
      {"a.png b.tif -o out/{name}.{ext}x", 2, "'out/a.pngx' has no known extension; give --format TYPE or .* \\.png"},
      {"a.png b.png -o new/{name}.png", 1, "'new/a.png'.*No such file.*make the folder 'new'"},
      {"a.png b.png -o a.png/{name}.png", 1, "'a.png/a.png'.*Not a directory"},
      // Standard streams that cannot work.
      {"a.png -o - --format png", 2, "standard output is a terminal", [] { onTerminal(STDOUT_FILENO); }},
      {"- -o out/x.png", 1, "standard input: it is a terminal", [] { onTerminal(STDIN_FILENO); }},
      {"- -o out/x.png", 1, "read standard input: not an undamaged", [] { from("bad.png", STDIN_FILENO); }},
      {"- -o out/x.png", 1, "read standard input: not an undamaged", [] { from("/dev/null", STDIN_FILENO); }},
      {"- -o out/x.png", 1, "cannot read standard input.*Bad file", [] { close(STDIN_FILENO); }},
      {"- --size 9x9 -o out/x.png", 1, "input: nothing beyond row", [] { from("bad.png", STDIN_FILENO); }},
      {"a.png -o - --format tif", 1, "output: No space left", [] { from("/dev/full", STDOUT_FILENO); }},
      {"a.png -o - --format tif", 1, "standard output: Broken pipe", intoBrokenPipe},
      {"--list", 1, "cannot write standard output", [] { from("/dev/full", STDOUT_FILENO); }},
      // The formats are found by trying; each is one that the same command takes after --convert.
      {"a.png --filter opening -o out/x.png", 1, "L8 would do, as after --convert L8"},
      {"a.png --channels l --negative -o out/x.png", 1, "L8 or LA88 would do, as after --convert L8"},
      {"a.png --filter median --filter closing -o out/x.png", 1, "L8 would do"},
      {"a.png --grey antialiased -o out/x.png", 1, "BitonalRuns would do"},
      {"a.png --convert RGB161616 --resize 5x5 -o out/x.png", 1, "RGB888, RGBA8888, RGBFloat or RGBAFloat would do"},
      {"a.png --mask e.png -o out/x.png", 1, "the mask has another size than the picture: 7 x 2"},
  };
  const Workplace work;
  ASSERT_EQ(mkfifo((work / "pipe.png").c_str(), 0600), 0);
  expectRefusals(work, cases);
  EXPECT_TRUE(std::filesystem::is_fifo(work / "pipe.png"));
}

TEST(Refusals, NameWhatIsNoPicture) {
  const Workplace work;
  const std::string card = work.read("card.png");
  work.write("head.png", card.substr(0, card.size() / 7));
  work.write("cut.png", card.substr(0, card.size() - 1));
  work.write("empty.png", "");
  work.write("start.jpg", "\xFF\xD8\xFF");
  work.write("start.tif", std::string("II*\0\x08\0\0\0", 8));
  expectRefusals(work, {{"bad.png --negative -o out/x.png", 1, "'bad.png'"},
                        {"head.png -o out/x.png", 1, "'head.png'"},
                        {"cut.png -o out/x.png", 1, "'cut.png'"},
                        {"empty.png -o out/x.png", 1, "'empty.png'"},
                        {"start.jpg -o out/x.png", 1, "'start.jpg'"},
                        {"start.tif -o out/x.png", 1, "'start.tif'"}});
}

TEST(CodecFiles, AreDescribedOrRefused) {
  const Workplace work;
  work.write("page.g4", std::string("\xC0\x04\x00\x40", 4));  // two white rows and the end
  work.write("cut.g4", "\x90");
  work.write("empty.g4", "");
  const auto writeRecords = [&](const char* name, int side, int type) {
    const auto bytes = BlockFileWriter(1).image(side, side, type, -1, 0).bytes();
    work.write(name, {bytes.begin(), bytes.end()});
  };
  writeRecords("good.rip", 30, 20400);
  writeRecords("huge.rip", 1 << 20, 20400);
  writeRecords("odd.rip", 30, 10500);
  std::filesystem::copy_file(QAV_TEST_CARD, work / "card.rip");
  const std::vector<Case> cases = {
      {"info page.g4", 0, "Group 4, 4 bytes, 1 channel of 1 bit; .*--size"},
      {"info page.g4 --size 50x2", 0, "50 x 2, 1 channel of 1 bit, 2 rows decoded\n"},
      {"info page.g4 --size 50x1", 0, "1 rows decoded: the end code"},
      {"info cut.g4 --size 50x2", 0, "1 rows decoded: .*ends inside a row"},
      {"info good.rip", 0, "block-record, extents 30 x 30"},
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
  expectRefusals(work, cases);
}

}  // namespace
}  // namespace qav::test
