#include <QAVMetaClass.h>

#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <string>

namespace {

struct Registry {
  std::mutex mutex;
  std::map<std::string, const QAVMetaClass*, std::less<>> classes;
};

// Never destroyed: meta-objects outlive every static object that may still ask for them.
Registry& registry() {
  static Registry& instance = *new Registry;
  return instance;
}

constexpr const char* kRootName = "QAVNull";

// Fowler-Noll-Vo hash, 64 bits, variant 1a.
std::uint64_t hashOf(const char* text, std::uint64_t seed) {
  std::uint64_t hash = seed;
  for (; *text; ++text) {
    hash ^= static_cast<unsigned char>(*text);
    hash *= 0x100000001b3u;
  }
  return hash;
}

// Kept by the pointer to its first byte, so that leak checkers find it.
const char* keptCopy(const char* text) {
  const std::size_t size = text ? std::strlen(text) + 1 : 1;
  return static_cast<const char*>(std::memcpy(new char[size], text ? text : "", size));
}

}  // namespace

const QAVMetaClass* QAVMetaClass::Register(const char* className, const char* baseName, const char* frameworkName) {
  Registry& all = registry();
  const std::lock_guard lock(all.mutex);
  const std::string name = className ? className : "";
  if (const auto found = all.classes.find(name); found != all.classes.end()) return found->second;
  auto* meta = new QAVMetaClass;
  meta->className_ = keptCopy(className);
  meta->baseName_ = keptCopy(baseName);
  meta->frameworkName_ = keptCopy(frameworkName);
  meta->classId_ = {hashOf(meta->className_, 0xcbf29ce484222325u), hashOf(meta->className_, 0x9ae16a3b2f90404fu)};
  all.classes.emplace(name, meta);
  return meta;
}

const QAVMetaClass* QAVMetaClass::Find(const char* className) noexcept {
  if (!className) return nullptr;
  Registry& all = registry();
  const std::lock_guard lock(all.mutex);
  const auto found = all.classes.find(className);
  return found == all.classes.end() ? nullptr : found->second;
}

int QAVMetaClass::IsAKindOf(const char* className) const noexcept {
  if (!className) return 0;
  if (std::strcmp(className, kRootName) == 0) return 1;
  const QAVMetaClass* meta = this;
  // The bound ends a walk through classes that name one another as their base.
  for (int depth = 0; meta && depth < 64; ++depth) {
    if (std::strcmp(meta->ClassName(), className) == 0) return 1;
    meta = Find(meta->BaseName());
  }
  return 0;
}
