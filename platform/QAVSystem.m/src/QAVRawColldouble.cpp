#include <QAVCheck.h>
#include <QAVRawColldouble.h>

QAVRawColldouble::QAVRawColldouble(int capacity) {
  if (capacity > 0) values_.reserve(static_cast<std::size_t>(capacity));
}

double& QAVRawColldouble::Scratch() {
  Check_TRUE_Failed__("position >= 1 && position <= Size()", "QAVSystem.m/src/QAVRawColldouble", __LINE__, nullptr);
  thread_local double scratch;
  scratch = 0.0;
  return scratch;
}
