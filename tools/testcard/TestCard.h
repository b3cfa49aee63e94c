#pragma once

#include "Canvas.h"

namespace qav::testcard {

inline constexpr int kWidth = 640;
inline constexpr int kHeight = 480;

/// A landscape with soft gradients, texture and shaded spheres.
void drawLandscape(Canvas& canvas, Box box);
/// Saturated and muted patches, a continuous and a stepped grey ramp.
void drawPatches(Canvas& canvas, Box box);
/// Rings that become finer outwards, down to two pixels.
void drawZonePlate(Canvas& canvas, Box box);
/// Gratings of 1 to 4 pixels in both directions, and slanted lines.
void drawGratings(Canvas& canvas, Box box);
/// Lines of letters and figures in three sizes, dark on light and light on dark.
void drawText(Canvas& canvas, Box box);
/// Thirty-six wedges that meet in one point.
void drawStar(Canvas& canvas, Box box);
/// Alpha from clear to opaque, half-clear discs and a hole.
void drawTransparency(Canvas& canvas, Box box);

/// Draws the whole card into an RGBA8888 image of kWidth x kHeight.
inline void drawTestCard(QAVPixelImage& image) {
  Canvas canvas(image);
  drawLandscape(canvas, {0, 0, 640, 296});
  drawPatches(canvas, {0, 296, 640, 64});
  drawZonePlate(canvas, {0, 360, 120, 120});
  drawGratings(canvas, {120, 360, 120, 120});
  drawText(canvas, {240, 360, 160, 120});
  drawStar(canvas, {400, 360, 120, 120});
  drawTransparency(canvas, {520, 360, 120, 120});
}

}  // namespace qav::testcard
