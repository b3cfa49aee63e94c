#include <QAVMMColorTransform.h>

#include <lcms2.h>

#include <cmath>

namespace {

constexpr cmsCIEXYZ kD65{0.95047, 1.0, 1.08883};

cmsCIELab labOf(const double* lab) { return {lab[0], lab[1], lab[2]}; }

double linearFromSRGB(double value) {
  const double magnitude = std::fabs(value);
  const double linear = magnitude <= 0.04045 ? magnitude / 12.92 : std::pow((magnitude + 0.055) / 1.055, 2.4);
  return std::copysign(linear, value);
}

cmsCIEXYZ xyzFromSRGB(const double* rgb) {
  const double r = linearFromSRGB(rgb[0]), g = linearFromSRGB(rgb[1]), b = linearFromSRGB(rgb[2]);
  return {0.4124564 * r + 0.3575761 * g + 0.1804375 * b, 0.2126729 * r + 0.7151522 * g + 0.0721750 * b,
          0.0193339 * r + 0.1191920 * g + 0.9503041 * b};
}

}  // namespace

HRESULT QAVMMColorTransform::DoTransformToLab(const QAVMMPIColorSpace* space, const double* values, double* lab) {
  if (!space || !values || !lab || (space->kind != 0 && space->kind != 10)) return E_FAIL;
  const cmsCIEXYZ xyz = space->kind == 10 ? cmsCIEXYZ{values[0], values[1], values[2]} : xyzFromSRGB(values);
  cmsCIELab result;
  cmsXYZ2Lab(&kD65, &result, &xyz);
  lab[0] = result.L;
  lab[1] = result.a;
  lab[2] = result.b;
  return S_OK;
}

HRESULT QAVMMColorTransform::ComputeDeltaE(const double* first, const double* second, DELTA_E_METHOD method,
                                           double& result, double, const double* weights) {
  if (!first || !second) return E_FAIL;
  static constexpr double kOnes[3] = {1.0, 1.0, 1.0};
  if (!weights) weights = kOnes;
  const cmsCIELab a = labOf(first), b = labOf(second);
  switch (method) {
    case DELTA_E_CIE76:
      result = cmsDeltaE(&a, &b);
      return S_OK;
    case DELTA_E_CIE94:
      result = cmsCIE94DeltaE(&a, &b);
      return S_OK;
    case DELTA_E_BFD:
      result = cmsBFDdeltaE(&a, &b);
      return S_OK;
    case DELTA_E_CMC:
      result = cmsCMCdeltaE(&a, &b, weights[0], weights[1]);
      return S_OK;
    case DELTA_E_CIEDE2000:
      result = cmsCIE2000DeltaE(&a, &b, weights[0], weights[1], weights[2]);
      return S_OK;
    default:
      return E_FAIL;
  }
}
