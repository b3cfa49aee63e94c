#pragma once

#include <cstddef>
#include <cstdint>

namespace qav::kernels {

/// The smallest and largest sample of each channel.
struct ChannelExtremesKernels {
  /// Over `pixels` pixels of 1 to 4 channels. A maximum starts at 0, a minimum at 255, and a sample that raises the
  /// maximum so far is not taken into the minimum.
  void (*find)(const std::uint8_t* bytes, std::size_t pixels, int channels, std::uint8_t* minima, std::uint8_t* maxima);
};

const ChannelExtremesKernels& channelExtremesKernels() noexcept;

}  // namespace qav::kernels
