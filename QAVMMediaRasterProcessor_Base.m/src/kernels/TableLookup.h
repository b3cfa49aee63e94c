#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Replacing bytes by entries of 256-entry tables, in place.
struct TableLookupKernels {
  /// Every one of `count` bytes b becomes table[b].
  void (*mapBytes)(std::uint8_t* bytes, std::size_t count, const std::uint8_t* table);
  /// As mapBytes for the channels k (bit k of `selected`) of `pixels` pixels of 2, 3 or 4 channels; the others stay.
  void (*mapSelected)(std::uint8_t* bytes, std::size_t pixels, int channels, unsigned selected,
                      const std::uint8_t* table);
  /// Channel k of every pixel goes through tables[k]; a null table leaves its channel alone. 2, 3 or 4 channels.
  void (*mapEach)(std::uint8_t* bytes, std::size_t pixels, int channels, const std::uint8_t* const* tables);
};

const TableLookupKernels& tableLookupKernels() noexcept;

}  // namespace qav::kernels
