#pragma once

#include "fuzz/Expect.h"
#include "fuzz/Levels.h"
#include "fuzz/PrintReference.h"

#include <QAVPrintEncoding.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace qav::fuzz {

using PrintDecoder = HRESULT (*)(const std::uint8_t*, unsigned int, std::uint8_t*&, unsigned int&, int);

/// Decodes and counts at every level: both agree whether there is anything, and no more is decoded than counted.
inline std::vector<std::uint8_t> decodePrintData(PrintDecoder decoder, std::span<const std::uint8_t> input) {
  return sameAtEveryLevel([&] {
    std::uint8_t* out = nullptr;
    unsigned int counted = 0, decoded = 0;
    const auto size = static_cast<unsigned int>(input.size());
    const HRESULT countStatus = decoder(input.data(), size, out, counted, 1);
    expect(out == nullptr);
    const HRESULT status = decoder(input.data(), size, out, decoded, 0);
    const std::unique_ptr<std::uint8_t[]> owned(out);
    expect(decoded <= counted);
    expect(status == S_OK ? out && decoded > 0 && countStatus == S_OK : !out && decoded == 0);
    return std::vector<std::uint8_t>(out, out + decoded);
  });
}

inline void ascii85_decode(std::span<const std::uint8_t> input) {
  const auto expected = plainBase85Decode(input);
  expect(decodePrintData(ASCII85Decode, input) == expected.value_or(std::vector<std::uint8_t>()));
}
inline void run_length_decode(std::span<const std::uint8_t> input) {
  expect(decodePrintData(RunLengthDecode, input) == plainRunLengthDecode(input));
}

}  // namespace qav::fuzz
