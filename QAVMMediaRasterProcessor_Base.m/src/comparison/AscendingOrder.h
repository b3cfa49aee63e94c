#pragma once

#include <cstddef>
#include <memory>
#include <span>

namespace qav {

/// The `count` of `entries` that are not below `threshold`, in ascending order. The entries must be 0 or more.
std::unique_ptr<double[]> ascendingExceedances(std::span<const double> entries, double threshold, std::size_t count);

}  // namespace qav
