#include "CCITTRow.h"

#include <CCITT.h>

#include <cstring>
#include <limits>
#include <memory>

void CCITT::build_decoding_states() {}

void CCITT::destroy_decoding_states() {}

void CCITT::decode(unsigned char* bitmap, const unsigned char* coded, unsigned int codedLength, unsigned int width) {
  if (!bitmap) return;
  forEachBlackRun(coded, codedLength, width,
                  [bitmap](std::int64_t from, std::int64_t to) { setBits(bitmap, from, to); });
}

int CCITT::encode(unsigned char*& coded, const unsigned char* bitmap, unsigned int width) {
  coded = nullptr;
  if (!bitmap) return 0;
  const std::unique_ptr<unsigned char[]> scratch(new unsigned char[ccittRowBound(width)]);
  const std::size_t length = encodeCCITTRow(bitmap, width, scratch.get());
  if (length > static_cast<std::size_t>(std::numeric_limits<int>::max())) return 0;
  coded = new unsigned char[length];
  std::memcpy(coded, scratch.get(), length);
  return static_cast<int>(length);
}
