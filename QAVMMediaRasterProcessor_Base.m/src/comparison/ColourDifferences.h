#pragma once

#include <cstddef>

namespace qav {

/// The difference of two colours as the platform's colour transforms compute it: three bytes each, taken for linear
/// sRGB of full scale 255; CIEDE2000 in Lab (D65).
double plainColourDifference(const unsigned char* first, const unsigned char* second);

/// The differences of `pixels` pixels of `stride` bytes (3 or 4): exactly 0 where the first three bytes are equal,
/// elsewhere within 1e-9 of plainColourDifference and the same bits on every processor.
void colourDifferences(const unsigned char* first, const unsigned char* second, std::size_t pixels, std::size_t stride,
                       double* differences);

}  // namespace qav
