#include <QAVBaseUnknown.h>

HRESULT QAVBaseUnknown::QueryInterface(const QAVClassId& id, void** object) {
  if (!object) return E_POINTER;
  *object = nullptr;
  const QAVMetaClass* meta = GetMetaObject();
  while (meta && !(meta->ClassId() == id)) meta = QAVMetaClass::Find(meta->BaseName());
  if (!meta) return E_NOINTERFACE;
  AddRef();
  *object = this;
  return S_OK;
}

unsigned int QAVBaseUnknown::AddRef() { return references_.fetch_add(1, std::memory_order_relaxed) + 1; }

unsigned int QAVBaseUnknown::Release() {
  const unsigned int left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (left == 0) delete this;
  return left;
}

HRESULT QAVBaseUnknown::GetTypeInfoCount(unsigned int* count) {
  if (!count) return E_POINTER;
  *count = 0;
  return S_OK;
}

HRESULT QAVBaseUnknown::GetTypeInfo(unsigned int, unsigned int, void**) { return E_NOTIMPL; }

HRESULT QAVBaseUnknown::GetIDsOfNames(const QAVClassId&, const char* const*, unsigned int, unsigned int, int*) {
  return E_NOTIMPL;
}

HRESULT QAVBaseUnknown::Invoke(int, const QAVClassId&, unsigned int, unsigned int, void*, void*) { return E_NOTIMPL; }

QAVBaseUnknown::~QAVBaseUnknown() = default;

const QAVMetaClass* QAVBaseUnknown::MetaObject() {
  static const QAVMetaClass* const meta = QAVMetaClass::Register("QAVBaseUnknown", "QAVNull", "System");
  return meta;
}

const QAVMetaClass* QAVBaseUnknown::GetMetaObject() const { return MetaObject(); }

const char* QAVBaseUnknown::IsA() const { return GetMetaObject()->ClassName(); }

int QAVBaseUnknown::IsAKindOf(const char* className) const { return GetMetaObject()->IsAKindOf(className); }

QAVBaseUnknown* QAVBaseUnknown::GetImpl() const {
  return implementation_ ? implementation_ : const_cast<QAVBaseUnknown*>(this);
}

void QAVBaseUnknown::SetImpl(QAVBaseUnknown* implementation) { implementation_ = implementation; }

int QAVBaseUnknown::IsNull() const { return 0; }

int QAVBaseUnknown::IsEqual(const QAVBaseUnknown* other) const {
  return other && other->GetImpl() == GetImpl() ? 1 : 0;
}
