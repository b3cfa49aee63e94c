#pragma once

#include <QAVPixelImage.h>

#include <memory>

struct Release {
  void operator()(QAVPixelImage* image) const { image->Release(); }
};
/// The one reference that Create operations, and `new`, give their caller.
using Image = std::unique_ptr<QAVPixelImage, Release>;
