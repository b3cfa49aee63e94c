#pragma once

#include <QAVExport.h>
#include <QAVMetaClass.h>
#include <QAVResult.h>

#include <atomic>

/// Base of every reference-counted object of the framework.
///
/// A new object has one reference, which its creator owns. AddRef and Release may be called from any thread;
/// the Release that takes the last reference deletes the object. Objects on the stack work too, as long as
/// nobody releases their one reference.
class QAV_EXPORT QAVBaseUnknown {
 public:
  QAVBaseUnknown() noexcept = default;
  /// A copy is a new object with one reference of its own.
  QAVBaseUnknown(const QAVBaseUnknown&) noexcept {}
  /// Assignment changes what an object holds, never who refers to it.
  QAVBaseUnknown& operator=(const QAVBaseUnknown&) noexcept { return *this; }

  /// Stores this object with one more reference in `object` when `id` is the identity of one of its classes;
  /// otherwise stores null and returns E_NOINTERFACE. A null `object` gives E_POINTER.
  virtual HRESULT QueryInterface(const QAVClassId& id, void** object);
  /// Adds a reference and returns the new count.
  virtual unsigned int AddRef();
  /// Takes a reference and returns the new count; at 0 the object is gone.
  virtual unsigned int Release();

  /// No type information is kept: stores 0 (E_POINTER for null).
  virtual HRESULT GetTypeInfoCount(unsigned int* count);
  /// E_NOTIMPL: no type information is kept.
  virtual HRESULT GetTypeInfo(unsigned int index, unsigned int locale, void** info);
  /// E_NOTIMPL: members cannot be called by name.
  virtual HRESULT GetIDsOfNames(const QAVClassId& id, const char* const* names, unsigned int count, unsigned int locale,
                                int* ids);
  /// E_NOTIMPL: members cannot be called by number.
  virtual HRESULT Invoke(int member, const QAVClassId& id, unsigned int locale, unsigned int flags, void* arguments,
                         void* result);

  virtual ~QAVBaseUnknown();

  /// The meta-object of the most derived class that has one.
  virtual const QAVMetaClass* GetMetaObject() const;
  /// Name of that class.
  virtual const char* IsA() const;
  /// 1 when the object is of the class `className` or of one derived from it, else 0.
  virtual int IsAKindOf(const char* className) const;

  /// The object that does the work: this one, unless SetImpl has named another.
  virtual QAVBaseUnknown* GetImpl() const;
  /// Names the object that does the work (not owned; null means this object).
  virtual void SetImpl(QAVBaseUnknown* implementation);
  /// 1 when there is no object behind this one; 0 for every living object.
  virtual int IsNull() const;
  /// 1 when both have the same implementation object, else 0.
  virtual int IsEqual(const QAVBaseUnknown* other) const;

  /// The meta-object of this class itself.
  static const QAVMetaClass* MetaObject();

 private:
  std::atomic<unsigned int> references_{1};
  QAVBaseUnknown* implementation_ = nullptr;
};
