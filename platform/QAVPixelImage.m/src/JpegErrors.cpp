#include "JpegErrors.h"

#include <jerror.h>

namespace {

JpegErrors& errorsOf(j_common_ptr object) { return *reinterpret_cast<JpegErrors*>(object->err); }

[[noreturn]] void leave(j_common_ptr object) { std::longjmp(errorsOf(object).place, 1); }

// Oddities around the picture data, which cameras and editors do write, leave the picture as it should be.
bool isHarmless(int code) {
  return code == JWRN_ADOBE_XFORM || code == JWRN_EXTRANEOUS_DATA || code == JWRN_JFIF_MAJOR ||
         code == JWRN_TOO_MUCH_DATA || code == JWRN_BOGUS_ICC;
}

void note(j_common_ptr object, int level) {
  if (level < 0 && !isHarmless(object->err->msg_code)) errorsOf(object).damaged = true;
}

void keepQuiet(j_common_ptr) {}

}  // namespace

jpeg_error_mgr* prepareJpegErrors(JpegErrors& errors) {
  jpeg_std_error(&errors.manager);
  errors.manager.error_exit = leave;
  errors.manager.emit_message = note;
  errors.manager.output_message = keepQuiet;
  errors.damaged = false;
  return &errors.manager;
}
