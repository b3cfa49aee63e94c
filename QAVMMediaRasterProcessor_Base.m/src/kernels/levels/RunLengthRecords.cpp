#include "kernels/RunLengthRecords.h"

#include <type_traits>

#include "RegionBegin.h"

#include "Vector.h"

namespace {

[[gnu::always_inline]] inline std::size_t least(std::size_t a, std::size_t b) { return a < b ? a : b; }

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

bool isRecord(const std::uint8_t* src, std::size_t read, std::size_t limit) {
  return read < limit && src[read] != kRunLengthEnd;
}

// Counts up to `most` records and returns how many there were.
template <bool branching>
std::size_t countSome(const std::uint8_t* src, std::size_t limit, RunLengthPlace& place, std::size_t most = kTogether) {
  RunLengthPlace at = place;
  std::size_t records = 0;
  for (; records < most && isRecord(src, at.read, limit); ++records) pass<branching>(lengthAt(src + at.read), at);
  place = at;
  return records;
}

void countTo(const std::uint8_t* src, std::size_t limit, RunLengthPlace& place) {
  countSome<false>(src, limit, place, limit);
}

// As countSome, for records of which most repeat a byte.
std::size_t countRepeats(const std::uint8_t* src, std::size_t limit, RunLengthPlace& place) {
#if QAV_KERNEL_LEVEL >= 1
  constexpr std::uint64_t lengths = 0x5555555555555555u >> (64 - kVectorBytes);
  U16 numbers, written{};
  for (std::size_t i = 0; i < kLanes<U16>; ++i) numbers[i] = static_cast<std::uint16_t>(i);
  RunLengthPlace at = place;
  std::size_t records = 0;
  for (std::size_t n = 0; n < kTogether && at.read + kVectorBytes < limit; ++n) {
    const U8 bytes = load<U8>(src + at.read);
    const std::uint64_t others = (~signBits(bytes) | equalBits(bytes, splat<U8>(kRunLengthEnd))) & lengths;
    const U16 repeated = 257 - ((U16)bytes & 255);
    const std::size_t repeats = others ? static_cast<std::size_t>(__builtin_ctzll(others)) / 2 : kLanes<U16>;
    records += repeats;
    at.read += 2 * repeats;
    if (!others) {
      written += repeated;
      continue;
    }
    written += repeated & (U16)(numbers < splat<U16>(static_cast<std::uint16_t>(repeats)));
    if (src[at.read] == kRunLengthEnd) break;
    pass<true>(lengthAt(src + at.read), at);
    ++records;
  }
  for (std::size_t i = 0; i < kLanes<U16>; ++i) at.written += written[i];
  place = at;
  if (records > 0) return records;
#endif
  return countSome<true>(src, limit, place);
}

/// Several chains, the first from a known place on, the others from guessed ones. A guess is wrong, but soon comes upon
/// the place of a record by chance, and goes along with the records from there on. Whether it has is seen when the
/// chain before arrives.
class GuessedChains {
 public:
  static constexpr std::size_t kWorthwhile = std::size_t{1} << 20;  // bytes of records

  GuessedChains(const std::uint8_t* src, std::size_t srcLen, const RunLengthPlace& from) : src_(src) {
    for (std::size_t k = 0; k < kRunLengthChains; ++k)
      first_[k].read = from.read + (srcLen - from.read) / kRunLengthChains * k;
    for (std::size_t n = 0; n < kRecordsToMeet; ++n)
      for (std::size_t k = 1; k < kRunLengthChains; ++k) pass<false>(lengthAt(src_ + first_[k].read), first_[k]);
    for (std::size_t k = 0; k < kRunLengthChains; ++k) {
      first_[k].written = 0;
      limits_[k] = k + 1 < kRunLengthChains ? first_[k + 1].read : srcLen;
    }
    first_[0] = from;
  }

  RunLengthMap Count() const {
    RunLengthPlace chains[kRunLengthChains];
    FollowAll(chains);
    RunLengthMap map;  // whose first chain has the records before those counted here, too
    RunLengthPlace at = chains[0];
    for (std::size_t k = 1; k < kRunLengthChains; ++k) {
      map.starts[k] = map.starts[k - 1];
      if (at.read == first_[k].read) {
        map.starts[k] = at;
        at = {chains[k].read, at.written + chains[k].written};
      } else if (at.read > first_[k].read) {
        countTo(src_, limits_[k], at);
      }
    }
    map.starts[kRunLengthChains] = at;
    return map;
  }

 private:
  static constexpr std::size_t kRecordsToMeet = 512;

  // Every chain up to the first place of the next one, or to an end of the records.
  void FollowAll(RunLengthPlace (&chains)[kRunLengthChains]) const {
    for (std::size_t k = 0; k < kRunLengthChains; ++k) chains[k] = first_[k];
    for (bool ended = false; !ended;) {
      std::size_t steps = ~std::size_t{0};
      for (std::size_t k = 0; k < kRunLengthChains; ++k)
        steps =
            least(steps, chains[k].read < limits_[k] ? (limits_[k] - chains[k].read - 1) / (kRunLengthLongest + 1) : 0);
      if (steps == 0) break;
      for (; steps > 0 && !ended; --steps) {
        for (std::size_t k = 0; k < kRunLengthChains; ++k) ended |= src_[chains[k].read] == kRunLengthEnd;
        for (std::size_t k = 0; k < kRunLengthChains && !ended; ++k)
          pass<false>(lengthAt(src_ + chains[k].read), chains[k]);
      }
    }
    for (std::size_t k = 0; k < kRunLengthChains; ++k) countTo(src_, limits_[k], chains[k]);
  }

  const std::uint8_t* src_;
  RunLengthPlace first_[kRunLengthChains];  // of the places that are counted
  std::size_t limits_[kRunLengthChains];
};

RunLengthMap count(const std::uint8_t* src, std::size_t srcLen) {
  RunLengthPlace at;
  bool repeating = true;
  while (isRecord(src, at.read, srcLen)) {
    const std::size_t before = at.read;
    const std::size_t records = repeating ? countRepeats(src, srcLen, at) : countSome<false>(src, srcLen, at);
    repeating = at.read - before <= 3 * records;
    if (!repeating && at.read < srcLen && srcLen - at.read >= GuessedChains::kWorthwhile)
      return GuessedChains(src, srcLen, at).Count();
  }
  RunLengthMap map;
  map.starts[kRunLengthChains] = at;
  return map;
}

struct DecodingBuffers {
  const std::uint8_t* src;
  std::size_t srcLen;
  std::uint8_t* bytes;

  bool haveRoom(const RunLengthPlace& at, std::size_t writtenEnd) const {
    return writtenEnd - at.written >= kRunLengthLongest && at.read + kRunLengthLongest < srcLen;
  }
  // Records that there is room for, whatever they are.
  std::size_t safeSteps(const RunLengthPlace& at, std::size_t writtenEnd) const {
    const std::size_t readable = at.read < srcLen ? (srcLen - at.read - 1) / (kRunLengthLongest + 1) : 0;
    return least((writtenEnd - at.written) / kRunLengthLongest, readable);
  }
  template <bool branching>
  [[gnu::always_inline]] void decodeOne(RunLengthPlace& at) const {
    const std::uint8_t* const record = src + at.read;
    const int length = lengthAt(record);
    writeLongest<branching>(record + 1, length, bytes + at.written);
    pass<branching>(length, at);
  }
};

template <bool branching>
void decodeSome(const DecodingBuffers& buffers, std::size_t writtenEnd, RunLengthPlace& place) {
  RunLengthPlace at = place;
  for (std::size_t n = 0; n < kTogether && buffers.haveRoom(at, writtenEnd); ++n) buffers.decodeOne<branching>(at);
  place = at;
}

// All chains in step, as long as none can come to its end.
void decodeAll(const DecodingBuffers& buffers, const std::size_t (&ends)[kRunLengthChains], RunLengthMap& map) {
  RunLengthMap at = map;
  for (;;) {
    std::size_t steps = ~std::size_t{0};
    for (std::size_t k = 0; k < kRunLengthChains; ++k) steps = least(steps, buffers.safeSteps(at.starts[k], ends[k]));
    if (steps == 0) break;
    for (; steps > 0; --steps)
      for (std::size_t k = 0; k < kRunLengthChains; ++k) buffers.decodeOne<false>(at.starts[k]);
  }
  map = at;
}

void decode(const std::uint8_t* src, std::size_t srcLen, std::uint8_t* bytes, RunLengthMap& map) {
  const DecodingBuffers buffers{src, srcLen, bytes};
  std::size_t ends[kRunLengthChains];
  for (std::size_t k = 0; k < kRunLengthChains; ++k) ends[k] = map.starts[k + 1].written;
  decodeAll(buffers, ends, map);
  for (std::size_t k = 0; k < kRunLengthChains; ++k) {
    RunLengthPlace& at = map.starts[k];
    bool branching = true;
    while (buffers.haveRoom(at, ends[k])) {
      const std::size_t before = at.read;
      (branching ? decodeSome<true> : decodeSome<false>)(buffers, ends[k], at);
      branching = mostlyRepeats(at.read - before);
    }
  }
}

}  // namespace

extern const RunLengthRecordsKernels runLengthRecords;
const RunLengthRecordsKernels runLengthRecords = {&count, &decode};

#include "RegionEnd.h"
