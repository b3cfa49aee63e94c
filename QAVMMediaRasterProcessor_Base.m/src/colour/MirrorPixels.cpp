#include "colour/MirrorPixels.h"

#include "kernels/Mirror.h"

#include <cstddef>

namespace qav {
namespace {

HRESULT checkPixels(const unsigned char* pixels, int width, int height, int bytesPerPixel) {
  if (!pixels || width < 1 || height < 1 || bytesPerPixel < 1) return E_FAIL;
  return bytesPerPixel <= 4 ? S_OK : E_NOTIMPL;
}

}  // namespace

HRESULT ReversePixelsInRows(unsigned char* pixels, int width, int height, int bytesPerPixel) {
  const HRESULT status = checkPixels(pixels, width, height, bytesPerPixel);
  if (FAILED(status)) return status;
  const auto& kernels = kernels::mirrorKernels();
  const std::size_t rowBytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(bytesPerPixel);
  for (int row = 0; row < height; ++row)
    kernels.reverse(pixels + static_cast<std::size_t>(row) * rowBytes, static_cast<std::size_t>(width), bytesPerPixel);
  return S_OK;
}

HRESULT SwapRows(unsigned char* pixels, std::int64_t rowBytes, int height) {
  if (!pixels || rowBytes < 1 || height < 1) return E_FAIL;
  const auto& kernels = kernels::mirrorKernels();
  for (int row = 0; row < height / 2; ++row)
    kernels.exchange(pixels + row * rowBytes, pixels + (height - 1 - row) * rowBytes,
                     static_cast<std::size_t>(rowBytes));
  return S_OK;
}

HRESULT ReversePixels(unsigned char* pixels, int width, int height, int bytesPerPixel) {
  const HRESULT status = checkPixels(pixels, width, height, bytesPerPixel);
  if (FAILED(status)) return status;
  kernels::mirrorKernels().reverse(pixels, static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                                   bytesPerPixel);
  return S_OK;
}

}  // namespace qav
