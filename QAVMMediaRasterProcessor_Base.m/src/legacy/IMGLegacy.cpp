#include <IMGLegacy.h>

// Deliberately empty: what these once did is not part of this library.
#define QAV_DEFINE_LEGACY_FUNCTION(name) \
  std::int32_t name(...) { return -1; }
QAV_LEGACY_FUNCTIONS(QAV_DEFINE_LEGACY_FUNCTION)
