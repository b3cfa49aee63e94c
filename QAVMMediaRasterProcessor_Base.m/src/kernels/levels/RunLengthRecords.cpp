#include "kernels/RunLengthRecords.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

// Where most records repeat a byte, the processor foretells their kind and goes ahead of the length bytes it has
// yet to load. Where kinds alternate it guesses wrong too often: there both are done alike, without a branch. The
// records before tell which way is better.
constexpr std::size_t kTogether = 128;

bool mostlyRepeats(std::size_t bytesRead) { return bytesRead <= 8 * kTogether; }

// Bytes to copy less one, or the negative of that for a repetition.
[[gnu::always_inline]] inline int lengthAt(const std::uint8_t* record) { return static_cast<std::int8_t>(*record); }

template <bool branching>
[[gnu::always_inline]] inline void pass(int length, RunLengthPlace& at) {
  if (branching && __builtin_expect(length < 0, 1)) {
    at.read += 2;
    at.written += static_cast<std::size_t>(1 - length);
    return;
  }
  const int literal = length < 0 ? 0 : length;
  at.read += static_cast<std::size_t>(literal + 2);
  at.written += static_cast<std::size_t>((length < 0 ? -length : length) + 1);
}

// Writes as much as the longest record has; the next one overwrites what was too much.
template <bool branching>
[[gnu::always_inline]] inline void writeLongest(const std::uint8_t* from, int length, std::uint8_t* to) {
#if QAV_KERNEL_LEVEL >= 1
  if (!branching) {
    const U8 first = splat<U8>(from[0]);
    const U8 repeated = splat<U8>(static_cast<std::uint8_t>(length >> 8));
    for (std::size_t i = 0; i < kRunLengthLongest; i += kVectorBytes)
      store(to + i, (first & repeated) | (load<U8>(from + i) & ~repeated));
    return;
  }
#endif
  if (length < 0)
    std::memset(to, from[0], kRunLengthLongest);
  else
    std::memcpy(to, from, kRunLengthLongest);
}

template <bool branching>
void countSome(const std::uint8_t* src, std::size_t srcLen, RunLengthPlace& place) {
  RunLengthPlace at = place;
  for (std::size_t n = 0; n < kTogether && at.read < srcLen && src[at.read] != kRunLengthEnd; ++n)
    pass<branching>(lengthAt(src + at.read), at);
  place = at;
}

std::size_t count(const std::uint8_t* src, std::size_t srcLen) {
  RunLengthPlace at;
  bool branching = true;
  while (at.read < srcLen && src[at.read] != kRunLengthEnd) {
    const std::size_t before = at.read;
    (branching ? countSome<true> : countSome<false>)(src, srcLen, at);
    branching = mostlyRepeats(at.read - before);
  }
  return at.written;
}

struct DecodingBuffers {
  const std::uint8_t* src;
  std::size_t srcLen;
  std::uint8_t* bytes;
  std::size_t size;

  bool haveRoom(const RunLengthPlace& at) const {
    return srcLen - at.read > kRunLengthLongest && size - at.written >= kRunLengthLongest &&
           src[at.read] != kRunLengthEnd;
  }
};

template <bool branching>
void decodeSome(const DecodingBuffers& buffers, RunLengthPlace& place) {
  RunLengthPlace at = place;
  for (std::size_t n = 0; n < kTogether && buffers.haveRoom(at); ++n) {
    const std::uint8_t* const record = buffers.src + at.read;
    const int length = lengthAt(record);
    writeLongest<branching>(record + 1, length, buffers.bytes + at.written);
    pass<branching>(length, at);
  }
  place = at;
}

RunLengthPlace decode(const std::uint8_t* src, std::size_t srcLen, std::uint8_t* bytes, std::size_t size) {
  const DecodingBuffers buffers{src, srcLen, bytes, size};
  RunLengthPlace at;
  bool branching = true;
  while (buffers.haveRoom(at)) {
    const std::size_t before = at.read;
    (branching ? decodeSome<true> : decodeSome<false>)(buffers, at);
    branching = mostlyRepeats(at.read - before);
  }
  return at;
}

}  // namespace

extern const RunLengthRecordsKernels runLengthRecords;
const RunLengthRecordsKernels runLengthRecords = {&count, &decode};

#include "RegionEnd.h"
