#pragma once

#include <QAVMMIHelperRGBA.h>

#include "drawing/Canvas.h"
#include "kernels/Fill.h"

#include <cstdint>
#include <span>

namespace qav {

/// A row of a stamp: the columns left..right, dy rows below the brush's position.
struct StampRow {
  std::int8_t dy;
  std::int8_t left;
  std::int8_t right;
};

/// No pixel of a stamp lies further from its position, in either direction.
inline constexpr std::int64_t kBrushReach = 7;

/// The rows of a brush, one for each unbroken run of its pixels; none for an unknown brush.
std::span<const StampRow> stampOf(QAVMMIBrush brush);

/// Stamps a brush along rows.
class StampPainter {
 public:
  StampPainter(const Canvas& canvas, std::span<const StampRow> stamp, std::uint32_t colour)
      : canvas_(canvas), stamp_(stamp), colour_(colour), fill_(kernels::fillKernels().fillSpan) {}

  /// At each of the positions x1 to x2, in this order, of row y.
  void operator()(std::int64_t y, std::int64_t x1, std::int64_t x2) const;

 private:
  Canvas canvas_;
  std::span<const StampRow> stamp_;
  std::uint32_t colour_;
  decltype(kernels::FillKernels::fillSpan) fill_;
};

}  // namespace qav
