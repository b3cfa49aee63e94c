#pragma once

#include <QAVBaseUnknown.h>

#include <memory>

namespace qav {

struct ReleaseReference {
  void operator()(QAVBaseUnknown* object) const { object->Release(); }
};
/// Holds one reference of an object and releases it.
template <class Object>
using Owned = std::unique_ptr<Object, ReleaseReference>;

}  // namespace qav
