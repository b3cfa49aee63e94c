#include <QAVMMediaRasterVersion.h>

#include "kernels/Level.h"

const char* QAVMMediaRasterProcessorVersion() noexcept { return QAV_VERSION; }

const char* QAVMMediaRasterProcessorInstructionSet() noexcept {
  return qav::kernels::levelName(qav::kernels::activeLevel());
}
