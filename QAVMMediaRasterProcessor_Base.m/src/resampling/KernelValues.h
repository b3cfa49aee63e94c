#pragma once

#include <QAVMMGenericFilter.h>

#include <cstddef>

namespace qav {

/// Replaces distances by the kernel's values there, from first to last; those of the ready kernels many at a time.
void kernelValues(QAVMMGenericFilter& filter, double* x, std::size_t count);

}  // namespace qav
