#include <QAVPrintEncoding.h>

#include "fuzz/print_decoders.h"
#include "print/PrintReference.h"
#include "support/Test.h"

namespace qav::test {
namespace {

struct Decoded {
  HRESULT status;
  Bytes bytes;
  friend bool operator==(const Decoded&, const Decoded&) = default;
};

void PrintTo(const Decoded& decoded, std::ostream* os) {
  *os << std::hex << static_cast<unsigned>(decoded.status) << " " << testing::PrintToString(decoded.bytes);
}

using Decoder = HRESULT (*)(const std::uint8_t*, unsigned int, std::uint8_t*&, unsigned int&, int);

// From an array of exactly the source's size, so that sanitizers see every byte read behind it.
Decoded decoded(Decoder decoder, const Bytes& source, int sizeOnly = 0) {
  const auto exact = std::make_unique<std::uint8_t[]>(source.size());
  std::copy(source.begin(), source.end(), exact.get());
  std::uint8_t* out = exact.get();
  unsigned int outLen = 99;
  const HRESULT status = decoder(exact.get(), static_cast<unsigned>(source.size()), out, outLen, sizeOnly);
  if (sizeOnly || status != S_OK) {
    EXPECT_EQ(out, nullptr);
    return {status, Bytes(outLen)};
  }
  Decoded result{status, {out, out + outLen}};
  delete[] out;
  return result;
}

Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

TEST(RunLengthDecode, RecordsAndTheirEnds) {
  struct Case {
    Bytes source;
    Decoded expected;
    std::size_t counted;
  };
  const Case cases[] = {
      {{128}, {E_FAIL, {}}, 0},
      {{2, 'a', 'b', 'c', 128}, {S_OK, bytesOf("abc")}, 3},
      {{254, 'x'}, {S_OK, bytesOf("xxx")}, 3},
      {{0, 'a', 255, 'b', 128, 0, 'c'}, {S_OK, bytesOf("abb")}, 3},
      {{4, 'a', 'b'}, {S_OK, bytesOf("ab")}, 5},  // cut short: counted in full
      {{0, 'a', 129}, {S_OK, bytesOf("a")}, 129},
      {{5}, {E_FAIL, {}}, 6},
      {{200}, {E_FAIL, {}}, 57},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(decoded(RunLengthDecode, c.source), c.expected);
    EXPECT_EQ(decoded(RunLengthDecode, c.source, 1), (Decoded{c.counted ? S_OK : E_FAIL, Bytes(c.counted)}));
    EXPECT_EQ(decoded(RunLengthDecode, c.source, 2), (Decoded{E_FAIL, {}}));
  }
  std::uint8_t byte = 0, *out = &byte;
  unsigned int outLen = 5;
  EXPECT_EQ(RunLengthDecode(nullptr, 3, out, outLen, 0), E_FAIL);
  EXPECT_EQ(RunLengthDecode(&byte, 0, out, outLen, 0), E_FAIL);
  EXPECT_TRUE(out == &byte && outLen == 5);
}

// At every level, against the plain decoder; copies end where their memory does.
TEST(RunLengthDecode, RandomRecordsOfEveryLength) {
  std::mt19937 random(5);
  for (int round = 0; round < 2400; ++round) {
    Bytes source(1 + random() % (round % 8 < 6 ? 3000 : 30000));
    fill(source.data(), source.size(), Texture::Noise, random);
    // A stretch that is all repetitions, and an end somewhere in every other text.
    const std::size_t begin = random() % source.size(), end = begin + random() % (source.size() / 2 + 1);
    for (std::size_t i = 0; i < source.size(); ++i) {
      if (i >= begin && i < end) source[i] |= 129;
      if (source[i] == 128) source[i] = 127;
    }
    if (round % 2) source[random() % source.size()] = 128;
    fuzz::run_length_decode(Bytes(source));
  }
}

// Large enough to be decoded from several places at once: where places that are guessed meet the records, where they
// never do (every byte leads to one 129 further on), and with an end or a cut anywhere.
TEST(RunLengthDecode, LargeSources) {
  std::mt19937 random(11);
  Bytes noise(1'700'000), apart(1'300'000, 127), mixed(2'400'000);
  fill(noise.data(), noise.size(), Texture::Noise, random);
  fill(mixed.data(), mixed.size(), Texture::Noise, random);
  for (std::size_t i = mixed.size() / 3; i < mixed.size() / 2; ++i) mixed[i] |= 129;
  for (Bytes* source : {&noise, &mixed})
    std::replace(source->begin(), source->end(), std::uint8_t{128}, std::uint8_t{9});
  std::vector<Bytes> sources{noise, apart, mixed};
  for (const Bytes& source : {noise, apart, mixed}) {
    sources.emplace_back(source.begin(), source.end() - 1 - static_cast<std::ptrdiff_t>(random() % 200));
    sources.push_back(source);
    for (std::size_t i = source.size() / 8 * (3 + random() % 5), end = i + 200; i < end; ++i) sources.back()[i] = 128;
  }
  for (const Bytes& source : sources) fuzz::run_length_decode(source);
}

TEST(ASCII85Decode, GroupsAndTheirEnds) {
  struct Case {
    std::string text;
    std::optional<Bytes> expected;  // none: malformed
  };
  using namespace std::string_literals;
  const Case cases[] = {
      {"z", Bytes(4)},
      {"!!z", {}},
      {"!!!!!z", Bytes(8)},
      {"~x", {}},
      {"~", {}},
      {"", Bytes()},
      {" \t\n\f\r\b\x7f\0"s, Bytes()},
      {"9j\bqo\x7f^\0 "s, bytesOf("Man ")},
      {"9jq\vo^", {}},
      {"9jqo^~>9jqo^", bytesOf("Man Man ")},
      {"~>~>9jqo^~>", bytesOf("Man ")},
      {"9~>", {}},
      {"9jqo^9", {}},
      {"9jqo^~", {}},
      {"v", {}},
      {"uuuuu", Bytes{0x08, 0x78, 0x0E, 0xC4}},  // 85^5 - 1 wraps at 2^32
      {"!!", Bytes{0}},
      {"9j", Bytes{0x4D}},
      {"!!!", Bytes{0, 0}},
      {"9jq~>", Bytes{0x4D, 0x61}},
      {"9jqo", bytesOf("Man")},
      {"!!!!", Bytes{0, 0, 0}},
      {"uuu", Bytes{0x08, 0x78}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const Bytes text = bytesOf(c.text), none;
    const bool empty = !c.expected || c.expected->empty();
    const Decoded counted{c.expected ? S_OK : E_UNEXPECTED, Bytes(c.expected ? c.expected->size() : 0)};
    EXPECT_EQ(decoded(ASCII85Decode, text), (Decoded{empty ? E_FAIL : S_OK, empty ? none : *c.expected}));
    EXPECT_EQ(decoded(ASCII85Decode, text, 1), counted);
    EXPECT_EQ(decoded(ASCII85Decode, text, 7), (Decoded{counted.status, {}}));
  }
  std::uint8_t* out = nullptr;
  unsigned int outLen = 1;
  EXPECT_EQ(ASCII85Decode(nullptr, 0, out, outLen, 0), E_FAIL);
  EXPECT_EQ(ASCII85Decode(nullptr, 0, out, outLen, 1), S_OK);
}

// The text of random groups, values beyond 2^32 among them, broken by white space, 'z' and short groups.
TEST(ASCII85Decode, RandomTextsAtEveryLevel) {
  std::mt19937 random(6);
  for (int round = 0; round < 1600; ++round) {
    Bytes text;
    const unsigned broken = round % 3 ? 100 : 6;
    for (std::size_t groups = random() % (round % 8 ? 200 : 4000); groups > 0; --groups) {
      if (random() % 20 == 0) text.push_back('z');
      constexpr std::uint8_t whiteSpace[] = {0, 8, 9, 10, 12, 13, 32, 127};
      const int digits = random() % 60 ? 5 : 2 + below(3, random);
      for (int k = 0; k < digits; ++k) {
        text.push_back(static_cast<std::uint8_t>('!' + random() % 85));
        while (random() % broken == 0) text.push_back(whiteSpace[random() % 8]);
      }
      if (digits < 5) text.insert(text.end(), {'~', '>'});
    }
    ASSERT_TRUE(fuzz::plainBase85Decode(text));
    fuzz::ascii85_decode(Bytes(text));
    if (text.empty()) continue;
    constexpr std::uint8_t malformed[] = {'v', '{', 11, 128, 160, 255};
    text[random() % text.size()] = malformed[random() % 6];
    atEveryLevel([&] { ASSERT_EQ(decoded(ASCII85Decode, text, 1), (Decoded{E_UNEXPECTED, {}})); });
  }
}

}  // namespace
}  // namespace qav::test
