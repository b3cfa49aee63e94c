#include <QAVMMIHelperRGBA.h>
#include <QAVMMResamplingKernels.h>
#include <QAVMMResizeEngine.h>
#include <QAVMMediaImageProcessor.h>
#include <sys/stat.h>

#include <regex>

#include "Run.h"
#include "TestCard.h"
#include "support/Test.h"

namespace qav::test {
namespace {

using Processor = QAVMMediaImageProcessor;

TEST(QavRaster, AppliesOperationsInTheOrderWritten) {
  struct Case {
    const char* arguments;
    void (*expected)(QAVPixelImage&);
  };
  constexpr int rgb = 14;
  const Case cases[] = {
      {"", [](QAVPixelImage&) {}},
      {"--brightness 0.2 --negative --channels ra --solarize 0.5 --gamma 1.4 --channels all --contrast -.25 "
       "--solarize 0.3",
       [](QAVPixelImage& i) {
         Processor::Brightness(i, 0.2f, rgb, nullptr, 1);
         Processor::Negative(i, rgb, nullptr, 1);
         Processor::Solarize(i, 0.5f, 2 | 16, nullptr, 1);
         Processor::Gamma(i, 1.4f, 2 | 16, nullptr, 1);
         Processor::Contrast(i, -0.25f, 31, nullptr, 1);
         Processor::Solarize(i, 0.3f, 31, nullptr, 1);
       }},
      {"--adjust -0.1 0.2 0.8 --balance 0.1 -0.2 0.3 --posterize 40",
       [](QAVPixelImage& i) {
         Processor::AdjustColor(i, -0.1f, 0.2f, 0.8f, rgb, nullptr, 1);
         Processor::Balance(i, 0.1f, -0.2f, 0.3f, nullptr, 1);
         Processor::Posterize(i, 40, rgb, nullptr, 1);
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
      {"--passes 2 --filter sharpen --antialias 3 --filter gauss --passes 1 --kernel 3 0,-1,0,-1,5,.5,0,-1,0 "
       "--filter kirsch",
       [](QAVPixelImage& i) {
         Processor::Filter(i, QAVMMIFilterSharpen, 2, nullptr, 1);
         Processor::Antialiase(i, 3, nullptr, 1);
         Processor::Filter(i, QAVMMIFilterSmoothGauss, 1, nullptr, 1);
         const float weights[] = {0, -1, 0, -1, 5, 0.5f, 0, -1, 0};
         Processor::LinearConvolveMatrix(i, 3, weights);
         Processor::Filter(i, QAVMMIFilterKirsch, 1, nullptr, 1);
       }},
      {"--stretch --mirror both --mask-type alpha --mask card.png --grey luma-video",
       [](QAVPixelImage& i) {
         Processor::StretchHistogram(i, rgb, nullptr, 1);
         Processor::Mirror(i, QAVMMIMirrorBoth, nullptr, 1);
         Processor::Grey(i, QAVMMIGreyLumaVideo, nullptr, 1);
       }},
      {"--convert L8 --negative --threshold 90 --dither threshold --mirror top-bottom",
       [](QAVPixelImage& i) {
         i.ConvertToFormat(L8);
         Processor::Negative(i, 1, nullptr, 1);
         Processor::SetDitherThreshold(90);
         Processor::Dither(i, QAVMMIDitherThreshold, nullptr, 0, 0);
         Processor::Mirror(i, QAVMMIMirrorTopBottom, nullptr, 1);
       }},
      {"--dither jarvis --bitonal --grey 0",
       [](QAVPixelImage& i) { Processor::Dither(i, QAVMMIDitherJarvis, nullptr, 0, 0); }},
      {"--convert L8 --draw 'rect 5 6 90 70 #10203040 filled' --draw 'rect 95 3 200 40 #102030' --negative",
       [](QAVPixelImage& i) {
         i.ConvertToFormat(L8);
         i.ConvertToFormat(RGBA8888);
         QAVMMIHelperRGBA(i).Rectangle(5, 6, 90, 70, 0x40302010u, 1);
         QAVMMIHelperRGBA(i).Rectangle(95, 3, 200, 40, 0xFF302010u, 0);
         Processor::Negative(i, rgb, nullptr, 1);
       }},
      {"--draw 'clear 7' --draw 'ellipse 100 200 90 40 #112233 filled' --draw 'ellipse 300 200 20 70 50' "
       "--draw 'circle 500 100 60 #445566' --draw 'fill 500 100 #778899aa' "
       "--draw 'line -9 20 300 90 #ff8000 brush=5' --draw 'point 40 50 #01020304 brush=12' --draw 'line 1 2 30 4 0'",
       [](QAVPixelImage& i) {
         QAVMMIHelperRGBA helper(i);
         helper.Clear(0xFF070707u);
         helper.Ellipse(100, 200, 90, 40, 0xFF332211u, 1);
         helper.Ellipse(300, 200, 20, 70, 0xFF323232u, 0);
         helper.Circle(500, 100, 60, 0xFF665544u, 0);
         helper.Fill(500, 100, 0xAA998877u);
         helper.Line(-9, 20, 300, 90, 0xFF0080FFu, QAVMMIBrushSquare7);
         helper.Brush(40, 50, 0x04030201u, QAVMMIBrushSpray12);
         helper.Line(1, 2, 30, 4, 0xFF000000u, QAVMMIBrushPixel);
       }},
      {"--mirror both --draw 'polygon 10,10 200,30 90,300 / 50,60 120,50 90,90 600,-40 #10203040' "
       "--blend card.png@-40,30",
       [](QAVPixelImage& i) {
         const Image source = copyOf(i);
         const int counts[] = {3, 4}, points[] = {10, 10, 200, 30, 90, 300, 50, 60, 120, 50, 90, 90, 600, -40};
         Processor::Mirror(i, QAVMMIMirrorBoth, nullptr, 1);
         QAVMMIHelperRGBA(i).FillArea(2, counts, points, 0x40302010u);
         QAVMMIHelperRGBA(i).Blend(*source, -40, 30);
       }},
  };
  const Image card = readBack(QAV_TEST_CARD);
  ASSERT_TRUE(card);
  const Workplace work;
  for (const Case& each : cases) {
    SCOPED_TRACE(each.arguments);
    const Outcome outcome = work("card.png -o out/x.png " + std::string(each.arguments));
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.out + outcome.err, "");
    const Image expected = copyOf(*card);
    each.expected(*expected);
    const Image result = readBack(work / "out/x.png");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->GetFormat(), expected->GetFormat());
    EXPECT_TRUE(bytesOf(*result) == bytesOf(*expected));
    EXPECT_EQ(work.made(), std::vector<std::string>{"x.png"});
  }
}

// Grey pictures go through the engine as colour, and come back as what they were.
TEST(QavRaster, ResizesGreyPictures) {
  const Workplace work;
  for (const auto& [grey, colour] : {std::pair{"L8", "RGB888"}, {"LA88", "RGBA8888"}}) {
    const auto made = [&](const std::string& formats) {
      const std::string begin = "--trim --convert LA88 --solarize .4 --channels a --brightness -.3 --convert ";
      EXPECT_EQ(work("card.png " + begin + formats + " --resize 77x99 -o made.tif").code, 0) << formats;
      return readBack(work / "made.tif");
    };
    const Image one = made(grey), three = made(std::string(grey) + " --convert " + colour);
    ASSERT_TRUE(one && three);
    EXPECT_EQ(one->GetFormat(), grey[1] == '8' ? L8 : LA88);
    ASSERT_EQ(one->ConvertToFormat(three->GetFormat()), S_OK);
    EXPECT_TRUE(bytesOf(*one) == bytesOf(*three)) << grey;
  }
}

TEST(QavRaster, TrimsTheBorderOnAllSides) {
  const Workplace work;
  const Image inside = makeImage(5, 4, RGBA8888), framed = makeImage(9, 10, RGBA8888);
  inside->SetTransparency(200);
  ASSERT_EQ(framed->PasteImage(1, 2, inside.get(), 0), S_OK);
  ASSERT_EQ(framed->WriteToFile(work / "in.tif", "TIFF"), S_OK);
  ASSERT_EQ(work("in.tif --trim -o out.tif").code, 0);
  EXPECT_TRUE(bytesOf(*readBack(work / "out.tif")) == bytesOf(*inside));
}

TEST(QavRaster, WritesCompletelyOrNotAtAll) {
  const Workplace work;
  work.write("out/x.png", "what was there before");
  const Outcome full = work("card.png -o out/x.png", [] {
    const rlimit limit{20000, 20000};
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, SIG_IGN);
  });
  EXPECT_EQ(full.code, 1);
  EXPECT_NE(full.err.find("cannot write 'out/x.png"), std::string::npos) << full.err;
  EXPECT_EQ(work.read("out/x.png"), "what was there before");
  EXPECT_EQ(work.made().size(), 1u);

  // In place, through a link: the link stays, and so does the file's mode.
  chmod((work / "card.png").c_str(), 0640);
  std::filesystem::create_symlink("card.png", work / "link.png");
  EXPECT_EQ(work("link.png --negative -o link.png").code, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(work / "link.png"));
  EXPECT_EQ(std::filesystem::status(work / "card.png").permissions(), std::filesystem::perms{0640});
  EXPECT_NE(work.read("card.png"), readFile<std::string>(QAV_TEST_CARD));
}

// A pipe that nobody writes to keeps the program waiting for its input; the standard one is kept in a file meanwhile.
TEST(QavRaster, LeavesNothingBehindWhenItIsStopped) {
  const Workplace work;
  ASSERT_EQ(mkfifo((work / "pipe").c_str(), 0600), 0);
  const auto files = work.count();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    for (const std::string input : {"-", "pipe"}) {
      SCOPED_TRACE(input + std::to_string(signal));
      const auto readPipe = [&] { dup2(ends[0], STDIN_FILENO); };
      EXPECT_EQ(work.stopped(input + " -o out/x.png", signal, files + (input == "-"), readPipe).code, -signal);
      EXPECT_TRUE(work.made().empty());
      EXPECT_EQ(work.count(), files);
    }
}

TEST(QavRaster, ComparesPictures) {
  const Workplace work;
  const Image black = makeImage(4, 2, RGB888), white = copyOf(*black);
  std::fill_n(white->GetPixelsToModify(), 6, 255);
  ASSERT_EQ(black->WriteToFile(work / "out/black.png", "PNG"), S_OK);
  ASSERT_EQ(white->WriteToFile(work / "out/white.png", "PNG"), S_OK);

  Outcome outcome = work("compare out/black.png out/white.png --json");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.out.find("{\"count\": 2, \"percentage\": 25, \"mean\": 100.0000038666"), 0u) << outcome.out;
  outcome = work("compare out/black.png out/white.png --threshold 101");
  EXPECT_EQ(outcome.code, 0);
  EXPECT_NE(outcome.out.find("deviation   -\n"), std::string::npos) << outcome.out;
  EXPECT_EQ(work.made().size(), 2u);
  EXPECT_EQ(work("compare a.png a.png --out new --heat --relative").code, 0);
  EXPECT_TRUE(readBack(work / "new/\\xAbsolutediff_a_a.TIFF") && readBack(work / "new/\\xRelativediff_a_a.TIFF"));
  for (const char* wrong : {"b.png", "missing"}) EXPECT_EQ(work("compare a.png " + std::string(wrong)).code, 2);
}

TEST(QavRaster, ListsWhatItUnderstands) {
  const Workplace work;
  const Outcome list = work("--list");
  EXPECT_EQ(list.code, 0);
  const std::regex option("^  (--[a-z0-9-]+)", std::regex::multiline);
  std::vector<std::string> names;
  // Commands have settings of their own.
  const std::size_t commands = list.out.find("\nCommands\n"), files = list.out.find("\nFiles\n");
  ASSERT_TRUE(commands < files && files < list.out.size());
  const std::string lines = list.out.substr(0, commands) + list.out.substr(files);
  for (std::sregex_iterator it(lines.begin(), lines.end(), option), end; it != end; ++it) names.push_back((*it)[1]);
  EXPECT_GE(names.size(), 30u);
  for (const std::string& name : names) EXPECT_EQ(work(name).err.find("not expected"), std::string::npos) << name;
  EXPECT_NE(list.out.find("number from -1 to 1"), std::string::npos);
  EXPECT_TRUE(std::regex_search(
      work("--version").out, std::regex("^qavraster [0-9.]+\ninstruction set: (baseline|avx2|avx512|avx512vbmi)\n$")));
}

TEST(QavRaster, NeedsLessThanThreePicturesOfMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer's own memory hides the program's";
#endif
  const Workplace work;
  constexpr int width = 4000, height = 3000;
  {
    std::mt19937 random(1);
    ASSERT_TRUE(SUCCEEDED(randomImage(width, height, RGB888, random, Texture::Smooth)
                              ->WriteToFile((work / "large.jpg").c_str(), "JPEG")));
  }
  for (const std::string output : {"out.jpg", "out.png", "out.tif"}) {
    const Outcome outcome = work("large.jpg --brightness 0.1 --posterize 9 -o " + output);
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_LT(outcome.peakKilobytes, 3L * width * height * 3 / 1024) << output;
    RecordProperty(output, std::to_string(outcome.peakKilobytes));
  }
}

TEST(TestCard, IsThePictureThatIsShipped) {
  const Image shipped = readBack(QAV_TEST_CARD), drawn = makeImage(testcard::kWidth, testcard::kHeight, RGBA8888);
  ASSERT_TRUE(shipped);
  testcard::drawTestCard(*drawn);
  EXPECT_EQ(shipped->GetFormat(), RGBA8888);
  EXPECT_TRUE(bytesOf(*shipped) == bytesOf(*drawn)) << "qav_testcard docs/pictures/testcard.png makes it anew";
}

}  // namespace
}  // namespace qav::test
