#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <csignal>
#include <regex>
#include <thread>

#include "Run.h"
#include "support/Images.h"

namespace qav::test {
namespace {

// The program in a folder of its own, where its temporary files would be left too.
class Workplace {
 public:
  Workplace() {
    // Pictures that differ, so that one written under another's name is found.
    for (int i = 0; i < 5; ++i) {
      const Image image = makeImage(3 + i, 2, RGB888);
      std::fill_n(image->GetPixelsToModify(), 3, static_cast<unsigned char>(40 * i));
      for (const char* type : {"PNG", "TIFF"}) {
        const std::string name = std::string(1, static_cast<char>('a' + i)) + (type[0] == 'P' ? ".png" : ".tif");
        EXPECT_EQ(image->WriteToFile((folder / name).c_str(), type), S_OK);
      }
    }
    writeFile(folder / "bad.png", "no picture");
    std::filesystem::create_directory(folder / "out");
    std::filesystem::create_symlink("out", folder / "link");
  }

  Outcome operator()(const std::string& arguments, const std::function<void()>& prepare = {}) const {
    return run(words(arguments), [&] { enter(prepare); });
  }
  void enter(const std::function<void()>& prepare) const {
    if (chdir((folder / ".").c_str()) != 0) _exit(126);
    setenv("TMPDIR", ".", 1);
    if (prepare) prepare();
  }
  std::vector<std::string> made() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "out"))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

  const Folder folder;
};

void from(const char* path, int descriptor) { dup2(open(path, O_RDWR), descriptor); }

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
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.arguments);
    const Workplace work;
    const Outcome outcome = work(each.arguments, [] { from("a.png", STDIN_FILENO); });
    EXPECT_EQ(outcome.code, each.code);
    EXPECT_EQ(outcome.out, "");
    std::string said = outcome.err;
    std::replace(said.begin(), said.end() - !said.empty(), '\n', ' ');
    EXPECT_TRUE(std::regex_search(said, std::regex(each.said))) << said;
    EXPECT_EQ(work.made(), words(each.made));
  }
  const Workplace work;
  ASSERT_EQ(work("a.png b.tif c.png --channels r --negative -o out/{index}{name}.png").code, 0);
  for (const auto& [input, output] : {std::pair{"a.tif", "1a.png"}, {"b.png", "2b.png"}, {"c.tif", "3c.png"}}) {
    ASSERT_EQ(work(std::string(input) + " --channels r --negative -o alone.png").code, 0);
    EXPECT_EQ(contentOf(work.folder / "alone.png"), contentOf(work.folder / "out/" + output));
  }
}

TEST(SeveralInputs, AreRefusedBeforeAnythingIsWritten) {
  const struct {
    const char* arguments;
    int code;
    const char* message;
  } cases[] = {
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
      {"a.png -o -", 2, "standard output.*--format.*png"},
      {"a.png --fit 9x9 --background 1,2 -o out/x.png", 2, "--fit: --background: '1,2'.*give 4 numbers"},
      {"a.png -o x --format rip", 2, "--format.*'rip'.*tif, "},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.arguments);
    const Workplace work;
    const std::string before = contentOf(work.folder / "a.png");
    const Outcome outcome = work(each.arguments);
    EXPECT_EQ(outcome.code, each.code);
    EXPECT_TRUE(std::regex_search(outcome.err, std::regex(each.message))) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_TRUE(work.made().empty());
    EXPECT_EQ(contentOf(work.folder / "a.png"), before);
    EXPECT_EQ(work.folder.files().size(), 13u);
  }
}

TEST(StandardStreams, CarryPicturesOfEveryType) {
  for (const char* type : {"tif", "png", "jpg", "sgi", "ps", "eps", "g4"}) {
    SCOPED_TRACE(type);
    const Workplace work;
    const std::string file = std::string("file.") + type, size = " --size 7x2 ";
    ASSERT_EQ(work("e.png -o " + file).code, 0);
    const Outcome written = work(std::string("- -o - --format ") + type, [] { from("e.tif", STDIN_FILENO); });
    EXPECT_EQ(written.code, 0);
    EXPECT_EQ(written.err, "");
    EXPECT_TRUE(written.out == contentOf(work.folder / file));
    if (type[0] == 'p' && type[1] == 's') continue;
    if (type[0] == 'e') continue;
    writeFile(work.folder / "input", written.out);
    const auto feed = [] { from("input", STDIN_FILENO); };
    EXPECT_EQ(work("-" + size + "-o read.png", feed).code, 0);
    ASSERT_EQ(work(file + size + "-o same.png").code, 0);
    EXPECT_EQ(contentOf(work.folder / "read.png"), contentOf(work.folder / "same.png"));
    EXPECT_EQ(work("info -" + size, feed).out.substr(1), work("info " + file + size).out.substr(file.size()));
  }
  const Workplace work;
  EXPECT_EQ(work("compare - a.png", [] { from("a.tif", STDIN_FILENO); }).code, 0);
}

void onTerminal(int descriptor) {
  const int master = posix_openpt(O_RDWR);
  if (grantpt(master) != 0 || unlockpt(master) != 0) _exit(125);
  from(ptsname(master), descriptor);
}

TEST(StandardStreams, AreRefusedWhereTheyCannotWork) {
  const struct {
    const char* arguments;
    void (*prepare)();
    int code;
    const char* message;
  } cases[] = {
      {"a.png -o - --format png", [] { onTerminal(STDOUT_FILENO); }, 2, "standard output is a terminal"},
      {"- -o out/x.png", [] { onTerminal(STDIN_FILENO); }, 1, "standard input: it is a terminal"},
      {"- -o out/x.png", [] { from("bad.png", STDIN_FILENO); }, 1, "cannot read standard input: not an undamaged"},
      {"- -o out/x.png", [] { from("/dev/null", STDIN_FILENO); }, 1, "cannot read standard input: not an undamaged"},
      {"- -o out/x.png", [] { close(STDIN_FILENO); }, 1, "cannot read standard input.*Bad file"},
      {"- --size 9x9 -o out/x.png", [] { from("a.png", STDIN_FILENO); }, 0, "^$"},
      {"- --size 9x9 -o out/x.png", [] { from("bad.png", STDIN_FILENO); }, 1, "standard input: nothing beyond row"},
      {"a.png -o - --format tif", [] { from("/dev/full", STDOUT_FILENO); }, 1, "standard output: No space left"},
      {"--list", [] { from("/dev/full", STDOUT_FILENO); }, 1, "cannot write standard output"},
      {"a.png -o - --format tif",
       [] {
         int ends[2];
         if (pipe(ends) != 0) _exit(125);
         dup2(ends[1], STDOUT_FILENO);
         close(ends[0]);
       },
       1, "standard output: Broken pipe"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.message);
    const Workplace work;
    const Outcome outcome = work(each.arguments, each.prepare);
    EXPECT_EQ(outcome.code, each.code);
    EXPECT_TRUE(std::regex_search(outcome.err, std::regex(each.message))) << outcome.err;
    EXPECT_EQ(work.made().size(), each.code == 0 ? 1u : 0u);
    EXPECT_EQ(work.folder.files().size(), 13u);
  }
}

TEST(StandardStreams, LeaveNothingBehindWhenTheProgramIsStopped) {
  const Workplace work;
  const Folder logs;
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const pid_t child = start({"-", "-o", "out/x.png"}, logs, [&] {
    std::signal(SIGTERM, SIG_DFL);
    work.enter([&] { dup2(ends[0], STDIN_FILENO); });
  });
  const auto waiting = [&] { return work.made().size() == 1 && work.folder.files().size() == 14; };
  for (int i = 0; i < 1000 && !waiting(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_TRUE(waiting());
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  kill(child, SIGTERM);
  EXPECT_EQ(finish(child, logs).code, -SIGTERM);
  EXPECT_TRUE(work.made().empty());
  EXPECT_EQ(work.folder.files().size(), 13u);
  close(ends[0]);
  close(ends[1]);
}

// The formats are found by trying; each is one that the same command takes after --convert.
TEST(Refusals, NameTheFormatsThatWouldDo) {
  const struct {
    const char *operation, *formats;
  } cases[] = {{"--filter opening", "L8 would do, as after --convert L8"},
               {"--channels l --negative", "L8 or LA88 would do, as after --convert L8"},
               {"--filter median --filter closing", "L8 would do"},
               {"--grey antialiased", "BitonalRuns would do"},
               {"--convert RGB161616 --resize 5x5", "RGB888, RGBA8888, RGBFloat or RGBAFloat would do"},
               {"--mask e.png", "the mask has another size than the picture: 7 x 2"}};
  const Workplace work;
  for (const auto& [operation, formats] : cases) {
    SCOPED_TRACE(operation);
    const Outcome outcome = work("a.png " + std::string(operation) + " -o out/x.png");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_NE(outcome.err.find(formats), std::string::npos) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
  }
}

// Grey pictures go through the engine as colour, and come back as what they were.
TEST(Resize, TakesGreyPictures) {
  const Workplace work;
  for (const auto& [grey, colour] : {std::pair{"L8", "RGB888"}, {"LA88", "RGBA8888"}}) {
    const std::string begin = "CARD --trim --convert LA88 --solarize .4 --channels a --brightness -.3 --convert ";
    const auto made = [&](const std::string& formats, const char* name) {
      std::vector<std::string> arguments = words(begin + formats + " -o " + (work.folder / name));
      arguments[0] = QAV_TEST_CARD;
      EXPECT_EQ(run(arguments).code, 0) << formats;
      return Image(QAVPixelImage::CreateFromFile((work.folder / name).c_str(), QAVReadOnly, 0));
    };
    const Image one = made(std::string(grey) + " --resize 77x99", "grey.tif");
    const Image three = made(std::string(grey) + " --convert " + colour + " --resize 77x99", "colour.tif");
    ASSERT_TRUE(one && three);
    EXPECT_EQ(one->GetFormat(), grey[1] == '8' ? L8 : LA88);
    ASSERT_EQ(one->ConvertToFormat(three->GetFormat()), S_OK);
    EXPECT_TRUE(bytesOf(*one) == bytesOf(*three)) << grey;
  }
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
