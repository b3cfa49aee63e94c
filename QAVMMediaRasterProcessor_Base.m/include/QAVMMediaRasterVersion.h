#pragma once

#include <QAVExport.h>

/// Version of the library that is loaded, as "major.minor.patch".
QAV_EXPORT const char* QAVMMediaRasterProcessorVersion() noexcept;

/// The instruction set that the inner loops use on this machine: "baseline", "avx2", "avx512" or "avx512vbmi". Results
/// are the same with each.
QAV_EXPORT const char* QAVMMediaRasterProcessorInstructionSet() noexcept;
