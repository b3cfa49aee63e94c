#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// Between pixels of 3 or 4 channels and planes of one channel each.
struct ChannelPlanesKernels {
  /// Makes `pixels` pixels from the planes of their `channels` channels.
  void (*interleave)(const std::uint8_t* const* planes, int channels, std::size_t pixels, std::uint8_t* to);
  /// Takes channel `channel` out of `pixels` pixels of `channels` channels.
  void (*extract)(const std::uint8_t* from, int channels, int channel, std::size_t pixels, std::uint8_t* plane);
};

const ChannelPlanesKernels& channelPlanesKernels() noexcept;

}  // namespace qav::kernels
