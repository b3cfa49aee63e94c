#include <QAVMMIHelperRGBA.h>
#include <QAVMMResamplingKernels.h>
#include <QAVMMResizeEngine.h>
#include <QAVMMediaImageProcessor.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <regex>
#include <thread>

#include "Run.h"
#include "support/Images.h"

namespace qav::test {
namespace {

using Processor = QAVMMediaImageProcessor;

// CARD at the start of an argument stands for the test card.
std::string withCard(const std::string& argument) {
  return argument.starts_with("CARD") ? QAV_TEST_CARD + argument.substr(4) : argument;
}

TEST(QavRaster, AppliesOperationsInTheOrderWritten) {
  struct Case {
    const char* arguments;
    void (*expected)(QAVPixelImage&);
  };
  constexpr int rgb = 14;
  const Case cases[] = {
      {"", [](QAVPixelImage&) {}},
      {"--brightness 0.2 --posterize 4",
       [](QAVPixelImage& i) {
         Processor::Brightness(i, 0.2f, rgb, nullptr, 1);
         Processor::Posterize(i, 4, rgb, nullptr, 1);
       }},
      {"--posterize 4 --brightness 0.2",
       [](QAVPixelImage& i) {
         Processor::Posterize(i, 4, rgb, nullptr, 1);
         Processor::Brightness(i, 0.2f, rgb, nullptr, 1);
       }},
      {"--negative --channels ra --solarize 0.5 --gamma 1.4 --channels all --contrast -.25 --solarize 0.3",
       [](QAVPixelImage& i) {
         Processor::Negative(i, rgb, nullptr, 1);
         Processor::Solarize(i, 0.5f, 2 | 16, nullptr, 1);
         Processor::Gamma(i, 1.4f, 2 | 16, nullptr, 1);
         Processor::Contrast(i, -0.25f, 31, nullptr, 1);
         Processor::Solarize(i, 0.3f, 31, nullptr, 1);
       }},
      {"--adjust -0.1 0.2 0.8 --balance 0.1 -0.2 0.3",
       [](QAVPixelImage& i) {
         Processor::AdjustColor(i, -0.1f, 0.2f, 0.8f, rgb, nullptr, 1);
         Processor::Balance(i, 0.1f, -0.2f, 0.3f, nullptr, 1);
       }},
      {"--resize 100x70 --kernel catmull-rom --resize 90x81",
       [](QAVPixelImage& i) {
         QAVMMCatmullRomFilter kernel;
         for (const auto& [w, h] : {std::pair{100u, 70u}, {90u, 81u}})
           i = *Image(QAVMMResizeEngine(&kernel).scale(&i, w, h));
       }},
      {"--fit 100x90 --background 0,0,0,90",
       [](QAVPixelImage& i) {
         const Image inner(i.CreateResizedCopy(100, 75, QAVMMIResampleMitchell)), canvas = makeImage(100, 90, RGBA8888);
         canvas->SetTransparency(90);
         canvas->PasteImage(0, 7, inner.get(), 0);
         i = *canvas;
       }},
      {"--passes 2 --filter sharpen --antialias 3 --filter gauss --passes 1",
       [](QAVPixelImage& i) {
         Processor::Filter(i, QAVMMIFilterSharpen, 2, nullptr, 1);
         Processor::Antialiase(i, 3, nullptr, 1);
         Processor::Filter(i, QAVMMIFilterSmoothGauss, 1, nullptr, 1);
       }},
      {"--kernel 3 0,-1,0,-1,5,.5,0,-1,0 --filter kirsch",
       [](QAVPixelImage& i) {
         const float weights[] = {0, -1, 0, -1, 5, 0.5f, 0, -1, 0};
         Processor::LinearConvolveMatrix(i, 3, weights);
         Processor::Filter(i, QAVMMIFilterKirsch, 1, nullptr, 1);
       }},
      {"--convert L8 --negative",
       [](QAVPixelImage& i) {
         i.ConvertToFormat(L8);
         Processor::Negative(i, 1, nullptr, 1);
       }},
      {"--stretch --mirror both --mask-type alpha --mask CARD --grey luma-video",
       [](QAVPixelImage& i) {
         Processor::StretchHistogram(i, rgb, nullptr, 1);
         Processor::Mirror(i, QAVMMIMirrorBoth, nullptr, 1);
         Processor::Grey(i, QAVMMIGreyLumaVideo, nullptr, 1);
       }},
      {"--threshold 90 --dither threshold --mirror top-bottom",
       [](QAVPixelImage& i) {
         Processor::SetDitherThreshold(90);
         Processor::Dither(i, QAVMMIDitherThreshold, nullptr, 0, 0);
         Processor::Mirror(i, QAVMMIMirrorTopBottom, nullptr, 1);
       }},
      {"--dither jarvis --bitonal --grey 0",
       [](QAVPixelImage& i) { Processor::Dither(i, QAVMMIDitherJarvis, nullptr, 0, 0); }},
      {"--draw 'line -9 20 300 90 #ff8000 brush=5' --draw 'point 40 50 #01020304 brush=12' --draw 'line 1 2 30 4 0'",
       [](QAVPixelImage& i) {
         QAVMMIHelperRGBA helper(i);
         helper.Line(-9, 20, 300, 90, 0xFF0080FFu, QAVMMIBrushSquare7);
         helper.Brush(40, 50, 0x04030201u, QAVMMIBrushSpray12);
         helper.Line(1, 2, 30, 4, 0xFF000000u, QAVMMIBrushPixel);
       }},
      {"--convert L8 --draw 'rect 5 6 90 70 #10203040 filled' --draw 'rect 95 3 200 40 #102030' --negative",
       [](QAVPixelImage& i) {
         i.ConvertToFormat(L8);
         i.ConvertToFormat(RGBA8888);
         QAVMMIHelperRGBA(i).Rectangle(5, 6, 90, 70, 0x40302010u, 1);
         QAVMMIHelperRGBA(i).Rectangle(95, 3, 200, 40, 0xFF302010u, 0);
         Processor::Negative(i, rgb, nullptr, 1);
       }},
      {"--draw 'clear 7' --draw 'ellipse 100 200 90 40 #112233 filled' --draw 'ellipse 300 200 20 70 50' "
       "--draw 'circle 500 100 60 #445566' --draw 'fill 500 100 #778899aa'",
       [](QAVPixelImage& i) {
         QAVMMIHelperRGBA helper(i);
         helper.Clear(0xFF070707u);
         helper.Ellipse(100, 200, 90, 40, 0xFF332211u, 1);
         helper.Ellipse(300, 200, 20, 70, 0xFF323232u, 0);
         helper.Circle(500, 100, 60, 0xFF665544u, 0);
         helper.Fill(500, 100, 0xAA998877u);
       }},
      {"--draw 'polygon 10,10 200,30 90,300 / 50,60 120,50 90,90 600,-40 #102030'",
       [](QAVPixelImage& i) {
         const int counts[] = {3, 4}, points[] = {10, 10, 200, 30, 90, 300, 50, 60, 120, 50, 90, 90, 600, -40};
         QAVMMIHelperRGBA(i).FillArea(2, counts, points, 0xFF302010u);
       }},
      {"--mirror both --draw 'rect 0 0 300 200 #80402010 filled' --blend CARD@-40,30",
       [](QAVPixelImage& i) {
         const Image source = readBack(QAV_TEST_CARD);
         Processor::Mirror(i, QAVMMIMirrorBoth, nullptr, 1);
         QAVMMIHelperRGBA(i).Rectangle(0, 0, 300, 200, 0x10204080u, 1);
         QAVMMIHelperRGBA(i).Blend(*source, -40, 30);
       }},
  };
  const Image card = readBack(QAV_TEST_CARD);
  ASSERT_TRUE(card);
  for (const Case& each : cases) {
    SCOPED_TRACE(each.arguments);
    const Folder folder;
    std::vector<std::string> arguments = {QAV_TEST_CARD, "-o", folder / "out.png"};
    for (const std::string& word : words(each.arguments)) arguments.push_back(withCard(word));
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    const Image expected = copyOf(*card);
    each.expected(*expected);
    const Image result = readBack(folder / "out.png");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->GetFormat(), expected->GetFormat());
    EXPECT_TRUE(bytesOf(*result) == bytesOf(*expected));
    EXPECT_EQ(folder.files(), std::vector<std::string>{"out.png"});
  }
}

// The exit code, and what standard error must say: the wrong word and what would be right.
TEST(QavRaster, NamesWhatIsWrong) {
  struct Case {
    const char* arguments;
    int code;
    const char* message;
  };
  const Case cases[] = {
      {"CARD --brightness 2 -o OUT", 2, "--brightness.*'2'.*from -1 to 1"},
      {"CARD --brightness nan -o OUT", 2, "--brightness.*'nan'.*from -1 to 1"},
      {"CARD --brightness 0.1x -o OUT", 2, "--brightness.*'0.1x'.*number"},
      {"CARD --adjust 0 0 9 -o OUT", 2, "--adjust.*GAMMA.*'9'.*from 0.0001 to 3"},
      {"CARD -o OUT --adjust 0 0", 2, "--adjust.*BRIGHTNESS CONTRAST GAMMA"},
      {"CARD --posterize 2.5 -o OUT", 2, "--posterize.*'2.5'.*integer"},
      {"CARD --posterize 99999999999999999999 -o OUT", 2, "--posterize.*'9+'.*integer"},
      {"CARD --channels xyz --negative -o OUT", 2, "--channels.*'xyz'.*l, r, g, b, a"},
      {"CARD --convert RGB -o OUT", 2, "--convert.*'RGB'.*RGB888"},
      {"CARD --brightnes 0.1 -o OUT", 2, "'--brightnes'.*--brightness"},
      {"CARD --negative=1 -o OUT", 2, "--negative"},
      {"CARD second -o OUT", 2, "'second'"},
      {"CARD", 2, "-o OUTPUT"},
      {"", 2, "INPUT"},
      {"CARD -o out.gif", 2, "'out.gif'.*\\.png"},
      {"info", 2, "FILE"},
      {"CARD --channels l --negative -o OUT", 1, "--negative.*640 x 480 RGBA8888"},
      {"CARD --convert RGBFloat --negative -o OUT", 1, "--negative.*RGBFloat"},
      {"CARD --filter blur -o OUT", 2, "--filter.*'blur'.*box"},
      {"CARD --filter minimum -o OUT", 1, "--filter minimum.*RGBA8888"},
      {"CARD --convolve 3 1,2 -o OUT", 1, "--convolve.*2 weights.*9"},
      {"CARD --convolve 1 x -o OUT", 1, "--convolve.*'x'"},
      {"CARD --convert L8 --convolve 1 1 -o OUT", 1, "--convolve.*RGBA8888"},
      {"CARD --draw line -o OUT", 2, "--draw: give a shape"},
      {"CARD --draw 'line filled brush=2' -o OUT", 2, "--draw: give a colour"},
      {"CARD --draw 'blob 1 2 #102030' -o OUT", 2, "--draw: 'blob'.*no shape"},
      {"CARD --draw 'line 1 2 3 #102030' -o OUT", 2, "--draw: line.*4 numbers"},
      {"CARD --draw 'circle 1 2 2147483648 9' -o OUT", 2, "--draw: R: '2147483648'.*to 2147483647"},
      {"CARD --draw 'fill 1 2 #1234567' -o OUT", 2, "--draw: COLOUR: '#1234567'"},
      {"CARD --draw 'point 1 2 9 brush=13' -o OUT", 2, "--draw: brush: '13'.*from 0 to 12"},
      {"CARD --draw 'polygon 1,2 3,4 5 9' -o OUT", 2, "--draw: polygon: '5'.*X,Y"},
      {"CARD --draw 'polygon 1,2 3,4 5,6 / 7,8 9' -o OUT", 2, "--draw: polygon: give 3 vertices"},
      {"CARD --blend CARD@1 -o OUT", 2, "--blend: '.*card.png@1'.*FILE@X,Y"},
      {"CARD --blend CARD@1,b -o OUT", 2, "--blend: Y: 'b'.*integer"},
      {"CARD --blend none.png@1,2 -o OUT", 1, "'none.png'.*No such file"},
      {"CARD --blend CARD@640,0 -o OUT", 1, "--blend .*@640,0: nothing.*inside"},
      {"no/such/file.png -o OUT", 1, "'no/such/file.png'.*No such file"},
      {"/ -o OUT", 1, "'/'.*folder"},
      {"CARD -o no/such/folder/out.png", 1, "'no/such/folder/out.png'.*No such file"},
      {"info no-such-file", 1, "'no-such-file'"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.arguments);
    const Folder folder;
    std::vector<std::string> arguments = words(each.arguments);
    for (std::string& argument : arguments) {
      argument = withCard(argument);
      if (argument == "OUT") argument = folder / "out.png";
    }
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, each.code);
    EXPECT_TRUE(std::regex_search(outcome.err, std::regex(each.message))) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_TRUE(folder.files().empty());
  }
}

TEST(QavRaster, RefusesWhatIsNoPicture) {
  const std::string card = contentOf(QAV_TEST_CARD);
  const struct {
    const char* name;
    std::string content;
  } cases[] = {{"head.png", card.substr(0, card.size() / 7)},
               {"cut.png", card.substr(0, card.size() - 1)},
               {"empty.png", ""},
               {"text.jpg", "only some text\n"},
               {"start.jpg", "\xFF\xD8\xFF"},
               {"start.tif", std::string("II*\0\x08\0\0\0", 8)}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    const Folder folder, output;
    writeFile(folder / each.name, each.content);
    const Outcome outcome = run({folder / each.name, "--negative", "-o", output / "out.png"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_NE(outcome.err.find("'" + folder / each.name + "'"), std::string::npos) << outcome.err;
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
    EXPECT_TRUE(output.files().empty());
  }
}

TEST(QavRaster, WritesCompletelyOrNotAtAll) {
  const Folder folder;
  writeFile(folder / "out.png", "what was there before");
  const auto limitFiles = [] {
    const rlimit limit{20000, 20000};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, SIG_IGN);
  };
  const Outcome full = run({QAV_TEST_CARD, "-o", folder / "out.png"}, limitFiles);
  EXPECT_EQ(full.code, 1);
  EXPECT_NE(full.err.find("cannot write '" + folder / "out.png"), std::string::npos) << full.err;
  EXPECT_EQ(contentOf(folder / "out.png"), "what was there before");
  EXPECT_EQ(folder.files().size(), 1u);

  // In place, through a link: the link stays, and so does the file's mode.
  std::filesystem::copy_file(QAV_TEST_CARD, folder / "card.png");
  chmod((folder / "card.png").c_str(), 0640);
  std::filesystem::create_symlink("card.png", folder / "link.png");
  EXPECT_EQ(run({folder / "link.png", "--negative", "-o", folder / "link.png"}).code, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.png"));
  struct stat status {};
  ASSERT_EQ(stat((folder / "card.png").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0640u);
  EXPECT_NE(contentOf(folder / "card.png"), contentOf(QAV_TEST_CARD));

  ASSERT_EQ(mkfifo((folder / "pipe.png").c_str(), 0600), 0);
  EXPECT_EQ(run({QAV_TEST_CARD, "-o", folder / "pipe.png"}).code, 1);
  EXPECT_TRUE(std::filesystem::is_fifo(folder / "pipe.png"));
}

TEST(QavRaster, LeavesNothingBehindWhenItIsStopped) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    SCOPED_TRACE(signal);
    const Folder input, output, logs;
    // A pipe that nobody writes to keeps the program waiting for its input.
    ASSERT_EQ(mkfifo((input / "pipe").c_str(), 0600), 0);
    // Whoever runs the tests may ignore these signals, and what is ignored stays so.
    const pid_t child = start({input / "pipe", "-o", output / "out.png"}, logs, [] {
      for (const int each : {SIGINT, SIGTERM, SIGHUP}) std::signal(each, SIG_DFL);
    });
    for (int i = 0; i < 1000 && output.files().empty(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(output.files().size(), 1u);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    kill(child, signal);
    EXPECT_EQ(finish(child, logs).code, -signal);
    EXPECT_TRUE(output.files().empty());
  }
}

TEST(QavRaster, ComparesPictures) {
  const Folder folder;
  const Image black = makeImage(4, 2, RGB888), white = copyOf(*black);
  std::fill_n(white->GetPixelsToModify(), 6, 255);
  const std::string first = folder / "a.png", second = folder / "b.png", small = folder / "small.png";
  ASSERT_EQ(black->WriteToFile(first, "PNG"), S_OK);
  ASSERT_EQ(white->WriteToFile(second, "PNG"), S_OK);
  ASSERT_EQ(makeImage(1, 1, RGB888)->WriteToFile(small, "PNG"), S_OK);

  Outcome outcome = run({"compare", first, second, "--json"});
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.out.find("{\"count\": 2, \"percentage\": 25, \"mean\": 100.0000038666"), 0u) << outcome.out;
  outcome = run({"compare", first, second, "--threshold", "101"});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_NE(outcome.out.find("deviation   -\n"), std::string::npos) << outcome.out;
  EXPECT_EQ(folder.files().size(), 3u);
  EXPECT_EQ(run({"compare", first, first, "--out", folder / "out", "--heat", "--relative"}).code, 0);
  EXPECT_TRUE(readBack(folder / "out/\\xAbsolutediff_a_a.TIFF") && readBack(folder / "out/\\xRelativediff_a_a.TIFF"));
  for (const std::string& wrong : {small, folder / "missing"}) EXPECT_EQ(run({"compare", first, wrong}).code, 2);
}

TEST(QavRaster, TrimsTheBorderOnAllSides) {
  const Folder folder;
  const Image inside = makeImage(5, 4, RGBA8888), framed = makeImage(9, 10, RGBA8888);
  inside->SetTransparency(200);
  ASSERT_EQ(framed->PasteImage(1, 2, inside.get(), 0), S_OK);
  ASSERT_EQ(framed->WriteToFile(folder / "in.tif", "TIFF"), S_OK);
  ASSERT_EQ(run({folder / "in.tif", "--trim", "-o", folder / "out.tif"}).code, 0);
  const Image trimmed = readBack(folder / "out.tif");
  ASSERT_TRUE(trimmed);
  EXPECT_TRUE(bytesOf(*trimmed) == bytesOf(*inside));
}

TEST(QavRaster, ListsWhatItUnderstands) {
  const Outcome list = run({"--list"});
  EXPECT_EQ(list.code, 0);
  const std::regex option("^  (--[a-z0-9-]+)", std::regex::multiline);
  std::vector<std::string> names;
  // Commands have settings of their own.
  const std::size_t commands = list.out.find("\nCommands\n"), files = list.out.find("\nFiles\n");
  ASSERT_TRUE(commands < files && files < list.out.size());
  const std::string lines = list.out.substr(0, commands) + list.out.substr(files);
  for (std::sregex_iterator it(lines.begin(), lines.end(), option), end; it != end; ++it) names.push_back((*it)[1]);
  EXPECT_GE(names.size(), 30u);
  for (const std::string& name : names) EXPECT_EQ(run({name}).err.find("not expected"), std::string::npos) << name;
  EXPECT_NE(list.out.find("number from -1 to 1"), std::string::npos);
  EXPECT_TRUE(std::regex_search(
      run({"--version"}).out, std::regex("^qavraster [0-9.]+\ninstruction set: (baseline|avx2|avx512|avx512vbmi)\n$")));
  EXPECT_NE(run({"info", QAV_TEST_CARD}).out.find("640 x 480 RGBA8888"), std::string::npos);
}

TEST(QavRaster, NeedsLessThanThreePicturesOfMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer's own memory hides the program's";
#endif
  const Folder folder;
  constexpr int width = 4000, height = 3000;
  {
    std::mt19937 random(1);
    ASSERT_TRUE(SUCCEEDED(randomImage(width, height, RGB888, random, Texture::Smooth)
                              ->WriteToFile((folder / "large.jpg").c_str(), "JPEG")));
  }
  for (const char* output : {"out.jpg", "out.png", "out.tif"}) {
    const Outcome outcome =
        run({folder / "large.jpg", "--brightness", "0.1", "--posterize", "9", "-o", folder / output});
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_LT(outcome.peakKilobytes, 3L * width * height * 3 / 1024) << output;
    RecordProperty(output, std::to_string(outcome.peakKilobytes));
  }
}

}  // namespace
}  // namespace qav::test
