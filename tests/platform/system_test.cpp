#include "support/Checks.h"
#include "support/Test.h"

#include <QAVBaseUnknown.h>
#include <QAVMath3x3Matrix.h>
#include <QAVPixelImage.h>
#include <QAVRawColldouble.h>
#include <QAVUnicodeString.h>

#include <thread>

namespace qav::test {
namespace {

struct Counted : QAVBaseUnknown {
  explicit Counted(int& deaths) : deaths_(deaths) {}
  ~Counted() override { ++deaths_; }
  int& deaths_;
};

TEST(BaseUnknown, DiesExactlyOnceWhenManyThreadsRelease) {
  int deaths = 0;
  auto* object = new Counted(deaths);
  constexpr int kThreads = 8, kRounds = 20000;
  for (int i = 0; i < kThreads; ++i) object->AddRef();
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i)
    threads.emplace_back([object] {
      for (int round = 0; round < kRounds; ++round) {
        object->AddRef();
        object->Release();
      }
      object->Release();
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(deaths, 0);
  EXPECT_EQ(object->Release(), 0u);
  EXPECT_EQ(deaths, 1);
}

TEST(BaseUnknown, CopiesHaveTheirOwnReferences) {
  QAVPixelImage first(1, 1, L8);
  EXPECT_EQ(first.AddRef(), 2u);
  QAVPixelImage second(first);
  EXPECT_EQ(second.AddRef(), 2u);
  second.AddRef();
  second = first;
  EXPECT_EQ(second.Release(), 2u);
}

TEST(MetaObject, AnswersForItsClassAndItsBases) {
  const QAVMetaClass* derived = QAVMetaClass::Register("TestDerived", "TestBase", "Tests");
  EXPECT_EQ(derived->IsAKindOf("TestBase"), 0) << "the base is not known yet";
  QAVMetaClass::Register("TestBase", "QAVNull", "Tests");
  EXPECT_EQ(QAVMetaClass::Register("TestDerived", "Other", "Other"), derived);
  struct {
    const char* name;
    int expected;
  } const kinds[] = {{"TestDerived", 1}, {"TestBase", 1}, {"QAVNull", 1}, {"QAVPixelImage", 0}, {nullptr, 0}};
  for (const auto& kind : kinds) EXPECT_EQ(derived->IsAKindOf(kind.name), kind.expected);
  QAVMetaClass::Register("TestRing", "TestRing", "Tests");
  EXPECT_EQ(QAVMetaClass::Find("TestRing")->IsAKindOf("TestBase"), 0) << "a ring of bases must end";
  EXPECT_FALSE(derived->ClassId() == QAVMetaClass::Find("TestBase")->ClassId());

  QAVPixelImage image(1, 1, L8);
  EXPECT_STREQ(image.IsA(), "QAVPixelImage");
  EXPECT_EQ(image.IsAKindOf("QAVBaseUnknown"), 1);
}

TEST(MetaObject, QueryInterfaceFindsOwnAndBaseClasses) {
  QAVPixelImage image(1, 1, L8);
  void* found = nullptr;
  EXPECT_EQ(image.QueryInterface(QAVBaseUnknown::MetaObject()->ClassId(), &found), S_OK);
  EXPECT_EQ(found, static_cast<QAVBaseUnknown*>(&image));
  EXPECT_EQ(image.Release(), 1u);
  EXPECT_EQ(image.QueryInterface(QAVClassId{1, 2}, &found), E_NOINTERFACE);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(image.QueryInterface(QAVClassId{}, nullptr), E_POINTER);
}

TEST(UnicodeString, SearchesAndCutsByCharacters) {
  const QAVUnicodeString text("gr\xC3\xBC\xC3\x9F.t\xFFif.x");  // 2-byte characters and a stray byte
  EXPECT_EQ(text.GetLengthInChar(), 11);
  struct {
    const char* pattern;
    int start, expected;
  } const searches[] = {{".", 0, 4},  {".", 5, 9},  {".", 10, -1}, {"\xC3\x9F", 0, 3},
                        {"", 11, 11}, {"", 12, -1}, {"g", -1, -1}, {"\xFF", 0, 6}};
  for (const auto& s : searches) EXPECT_EQ(text.SearchSubString(s.pattern, s.start), s.expected) << s.pattern;
  EXPECT_EQ(text.SubString(0, 4), "gr\xC3\xBC\xC3\x9F");
  EXPECT_EQ(text.SubString(3, 2), "\xC3\x9F.");
  EXPECT_EQ(text.SubString(9, 99), ".x");
  EXPECT_TRUE(text.SubString(12, 1).IsEmpty());
  EXPECT_TRUE(text.SubString(0, -1).IsEmpty());
}

TEST(SplitPath, CutsAtTheLastSlashOnly) {
  const char* const cases[][3] = {{"/a/b.c", "/a", "b.c"}, {"b.c", "", "b.c"}, {"/b", "/", "b"},
                                  {"a/", "a", ""},         {"", "", ""},       {"d\\e/f\\g", "d\\e", "f\\g"}};
  for (const auto& c : cases) {
    QAVUnicodeString folder, name;
    QAVSplitPath(c[0], folder, name);
    EXPECT_STREQ(folder.ConvertToUTF8(), c[1]);
    EXPECT_STREQ(name.ConvertToUTF8(), c[2]);
  }
}

TEST(RawCollection, CountsFromOneAndKeepsItsMemory) {
  QAVRawColldouble values;
  for (int i = 1; i <= 100; ++i) values.Append(i);
  EXPECT_EQ(values[1], 1.0);
  EXPECT_EQ(values[100], 100.0);
  const double* const memory = &values[1];
  values.RemoveAll();
  EXPECT_EQ(values.Size(), 0);
  for (int i = 0; i < 100; ++i) values.Append(7.0);
  EXPECT_EQ(&values[1], memory);

  const CheckRecorder recorder;
  for (const int position : {0, 101, -1}) values[position] = 5.0;
  EXPECT_EQ(recorder.reports().size(), 3u);
  EXPECT_EQ(values[100], 7.0);
}

TEST(Matrix, MultipliesRowsByTheVectorInPlaceToo) {
  const QAVMath3x3Matrix matrix(1, 2, 3, 4, 5, 6, 7, 8, 10);
  double vector[3] = {1, 10, 100};
  matrix.Multiply(vector, vector);
  EXPECT_EQ(vector[0], 321);
  EXPECT_EQ(vector[1], 654);
  EXPECT_EQ(vector[2], 1087);
  double coefficients[9];
  matrix.GetCoef(coefficients);
  EXPECT_EQ(coefficients[5], matrix.GetCoef(1, 2));
  for (const auto& bad : {std::pair(3, 0), std::pair(0, 3), std::pair(-1, 0), std::pair(0, -1)})
    EXPECT_TRUE(std::isnan(matrix.GetCoef(bad.first, bad.second)));
}

TEST(Checks, GoToStandardErrorWhereNobodyAsksForThem) {
  testing::internal::CaptureStderr();
  Check_TRUE_Failed__("a < b", "module", 12, nullptr);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("a < b"), std::string::npos);
}

}  // namespace
}  // namespace qav::test
