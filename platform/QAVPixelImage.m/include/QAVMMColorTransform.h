#pragma once

#include <QAVExport.h>
#include <QAVMMPIPixelColorSpec.h>
#include <QAVResult.h>

#include <cstdint>

/// Formula of a colour difference.
enum DELTA_E_METHOD : std::int32_t {
  DELTA_E_CIE76 = 0,      ///< Euclidean distance
  DELTA_E_CIE94 = 1,      ///< CIE 1994
  DELTA_E_BFD = 2,        ///< BFD(l:c)
  DELTA_E_CMC = 3,        ///< CMC(l:c)
  DELTA_E_CIEDE2000 = 4,  ///< CIE 142-2001
};

/// Colour transforms and colour differences.
class QAV_EXPORT QAVMMColorTransform {
 public:
  /// CIE Lab, relative to D65, of three values in `space`: XYZ with Y of white = 1 for kind 10, sRGB in 0..1 for
  /// kind 0. E_FAIL for a null argument or another kind.
  static HRESULT DoTransformToLab(const QAVMMPIColorSpace* space, const double* values, double* lab);
  /// Difference of two Lab colours. `weights` are kL, kC, kH of CIEDE2000 (CIE 142-2001), and l, c of CMC; null
  /// stands for ones. CIE94 has the constants for textiles (0.048 and 0.014) over the geometric mean of the two
  /// chromas. `reserved` has no effect on these formulas. E_FAIL for a null colour or an unknown method.
  static HRESULT ComputeDeltaE(const double* first, const double* second, DELTA_E_METHOD method, double& result,
                               double reserved, const double* weights);
};
