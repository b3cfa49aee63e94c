#pragma once

#include <cstddef>

namespace qav::kernels {

/// A cubic of |x| in two pieces, lowest power first: on 0..1 and on 1..2. 0 beyond.
struct CubicPieces {
  double inner[4];
  double outer[4];
};

/// Values of reconstruction kernels at many distances, which they replace. Not-a-number gives 0.
struct ReconstructionKernels {
  void (*box)(double* x, std::size_t count);
  void (*triangle)(double* x, std::size_t count);
  void (*cubic)(const CubicPieces& pieces, double* x, std::size_t count);
  /// A sinc in a window of 2 or 3 lobes.
  void (*lanczos)(double lobes, double* x, std::size_t count);
};

const ReconstructionKernels& reconstructionKernels() noexcept;

}  // namespace qav::kernels
