#pragma once

#include <QAVExport.h>

#include <cstdint>

/// Identity of a class of the object model, derived from its name: the same name has the same identity in
/// every process.
struct QAVClassId {
  std::uint64_t high = 0;
  std::uint64_t low = 0;
  friend bool operator==(const QAVClassId&, const QAVClassId&) = default;
};

/// Meta-object of a class: what the object model knows of it. Meta-objects are created once for each class
/// name, live until the process ends, and are never changed, so they are safe to share between threads.
class QAV_EXPORT QAVMetaClass {
 public:
  /// The meta-object of `className`, registered on the first call. Later calls with the same name return the
  /// first registration whatever their other arguments. A base that is unknown counts as the root "QAVNull".
  static const QAVMetaClass* Register(const char* className, const char* baseName, const char* frameworkName);
  /// The meta-object of `className`, or null when no such class is registered.
  static const QAVMetaClass* Find(const char* className) noexcept;

  const QAVClassId& ClassId() const noexcept { return classId_; }
  const char* ClassName() const noexcept { return className_; }
  const char* BaseName() const noexcept { return baseName_; }
  const char* FrameworkName() const noexcept { return frameworkName_; }
  /// 1 when this class is `className` or derives from it, else 0 (also for null).
  int IsAKindOf(const char* className) const noexcept;

  QAVMetaClass(const QAVMetaClass&) = delete;
  QAVMetaClass& operator=(const QAVMetaClass&) = delete;

 private:
  QAVMetaClass() = default;

  QAVClassId classId_;
  const char* className_ = nullptr;
  const char* baseName_ = nullptr;
  const char* frameworkName_ = nullptr;
};
