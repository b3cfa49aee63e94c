#pragma once

#include <QAVExport.h>

#include <cstdint>

/// Identity of a class of the object model, derived from its name: the same name has the same identity in
/// every process.
struct QAVClassId {
  /// The upper half of 128 bits.
  std::uint64_t high = 0;
  /// The lower half.
  std::uint64_t low = 0;
  /// True for identities of the same name.
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

  /// The class's identity.
  const QAVClassId& ClassId() const noexcept { return classId_; }
  /// The class's name.
  const char* ClassName() const noexcept { return className_; }
  /// The name of its base, as registered.
  const char* BaseName() const noexcept { return baseName_; }
  /// The framework that it belongs to, as registered.
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
