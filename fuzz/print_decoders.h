#pragma once

#include "fuzz/Expect.h"

#include <QAVPrintEncoding.h>

#include <cstdint>
#include <memory>
#include <span>

namespace qav::fuzz {

using PrintDecoder = HRESULT (*)(const std::uint8_t*, unsigned int, std::uint8_t*&, unsigned int&, int);

/// Decodes and counts: both agree whether there is anything, and no more is decoded than counted.
inline void decodePrintData(PrintDecoder decoder, std::span<const std::uint8_t> input) {
  std::uint8_t* out = nullptr;
  unsigned int counted = 0, decoded = 0;
  const auto size = static_cast<unsigned int>(input.size());
  const HRESULT countStatus = decoder(input.data(), size, out, counted, 1);
  expect(out == nullptr);
  const HRESULT status = decoder(input.data(), size, out, decoded, 0);
  const std::unique_ptr<std::uint8_t[]> owned(out);
  expect(decoded <= counted);
  expect(status == S_OK ? out && decoded > 0 && countStatus == S_OK : !out && decoded == 0);
}

inline void ascii85_decode(std::span<const std::uint8_t> input) { decodePrintData(ASCII85Decode, input); }
inline void run_length_decode(std::span<const std::uint8_t> input) { decodePrintData(RunLengthDecode, input); }

}  // namespace qav::fuzz
