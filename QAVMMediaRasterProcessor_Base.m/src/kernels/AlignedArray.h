#pragma once

#include <cstddef>
#include <memory>
#include <new>

namespace qav {

struct FreeAligned {
  void operator()(void* memory) const noexcept { ::operator delete[](memory, std::align_val_t{64}); }
};

/// Uninitialised numbers at a boundary that suits the widest vectors.
template <class T>
using AlignedArray = std::unique_ptr<T[], FreeAligned>;

template <class T>
AlignedArray<T> makeAlignedArray(std::size_t count) {
  return AlignedArray<T>(static_cast<T*>(::operator new[](count * sizeof(T), std::align_val_t{64})));
}

}  // namespace qav
