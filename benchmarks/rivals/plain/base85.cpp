#include "support/PrintData.h"

#include <memory>

namespace qav::bench {
namespace {

// Five digits and now and then a new line, handed to `put` a line or a character at a time.
template <class PutLine>
void encode(PutLine putLine) {
  const auto& data = eightMegabytes();
  char line[128];
  std::size_t length = 0;
  for (std::size_t p = 0; p + 4 <= data.size(); p += 4) {
    std::uint32_t value =
        std::uint32_t{data[p]} << 24 | std::uint32_t{data[p + 1]} << 16 | std::uint32_t{data[p + 2]} << 8 | data[p + 3];
    if (value == 0) {
      line[length++] = 'z';
    } else {
      for (int k = 4; k >= 0; --k, value /= 85)
        line[length + static_cast<std::size_t>(k)] = static_cast<char>('!' + value % 85);
      length += 5;
    }
    if (p != 0 && p % 80 == 0) {
      line[length++] = '\n';
      putLine(line, length);
      length = 0;
    }
  }
  putLine(line, length);
}

bool isSpace(std::uint8_t c) {
  return c == 0 || c == 8 || c == 9 || c == 10 || c == 12 || c == 13 || c == 32 || c == 127;
}

template <class PutByte>
void decode(const std::vector<std::uint8_t>& text, PutByte putByte) {
  constexpr std::uint32_t weights[] = {52200625, 614125, 7225, 85, 1};
  std::uint32_t value = 0;
  int k = 0;
  for (const std::uint8_t c : text) {
    if (isSpace(c)) continue;
    if (c == 'z' && k == 0) {
      for (int i = 0; i < 4; ++i) putByte(0);
      continue;
    }
    if (c < '!' || c > 'u') return;
    value += static_cast<std::uint32_t>(c - '!') * weights[k++];
    if (k < 5) continue;
    for (int shift = 24; shift >= 0; shift -= 8) putByte(static_cast<std::uint8_t>(value >> shift));
    value = 0;
    k = 0;
  }
}

[[maybe_unused]] const bool added[] = {
    add("base-85 encode 8 MB, in memory", "plain loop",
        [] {
          static std::vector<char> text(eightMegabytes().size() / 4 * 6);
          char* end = text.data();
          encode([&](const char* line, std::size_t length) {
            for (std::size_t i = 0; i < length; ++i) *end++ = line[i];
          });
          keep(text.data());
        }),
    add("base-85 encode 8 MB, stream by lines", "plain loop",
        [] {
          encode([](const char* line, std::size_t length) {
            discardingStream().write(line, static_cast<std::streamsize>(length)).flush();
          });
        }),
    add("base-85 encode 8 MB, stream by characters", "plain loop",
        [] {
          encode([](const char* line, std::size_t length) {
            for (std::size_t i = 0; i < length; ++i) discardingStream().put(line[i]);
            discardingStream().flush();
          });
        }),
    add("base-85 decode to 8 MB", "plain loop",
        [] {
          static const std::vector<std::uint8_t> text = [] {
            std::vector<std::uint8_t> made;
            encode([&](const char* line, std::size_t length) { made.insert(made.end(), line, line + length); });
            return made;
          }();
          std::size_t size = 0;
          decode(text, [&](std::uint8_t) { ++size; });
          const std::unique_ptr<std::uint8_t[]> out(new std::uint8_t[size]);
          std::uint8_t* at = out.get();
          decode(text, [&](std::uint8_t byte) { *at++ = byte; });
          keep(out.get());
        }),
};

}  // namespace
}  // namespace qav::bench
