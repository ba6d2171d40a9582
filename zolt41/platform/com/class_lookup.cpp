#include "zolt41/platform/com/class_lookup.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "zolt41/platform/com/com_alloc.h"
#include "zolt41/platform/com/fork_order.h"
#include "zolt41/platform/registry/registry.h"

namespace zolt {
namespace {

constexpr uint32_t kTextSize = 4096;

struct KnownClass {
  CLSID id;
  HKEY key;  // where its module is told
};

struct KnownClasses {
  std::mutex lock;
  std::vector<KnownClass> all;
};

KnownClasses &TheKnownClasses();

KnownClasses *MakeKnownClasses() {
  CallBeforeHivesAroundForks([] { TheKnownClasses().lock.lock(); },
                             [] { TheKnownClasses().lock.unlock(); },
                             [] { RenewInChild(&TheKnownClasses().lock); });
  return new KnownClasses;
}

KnownClasses &TheKnownClasses() {
  // Never destroyed: components may still be asked for while the process ends.
  static auto *const classes = MakeKnownClasses();
  return *classes;
}

std::string TextOf(HKEY key) {
  char text[kTextSize];
  uint32_t size = sizeof text;
  return ZOLTQueryText(key, nullptr, text, &size) == ERROR_SUCCESS ? std::string(text)
                                                                   : std::string();
}

// Looks for the class among the user's, and keeps its key.
std::string LookUpUsers(REFCLSID id, std::string const &path, std::vector<KnownClass> *known) {
  HKEY key = 0;
  if (RegOpenKeyExA(HKEY_CURRENT_USER, ("Software\\Classes\\" + path).c_str(), 0, KEY_READ, &key) !=
      ERROR_SUCCESS) {
    return {};
  }
  std::string text = TextOf(key);
  if (text.empty()) {
    RegCloseKey(key);
  } else {
    known->push_back({id, key});
  }
  return text;
}

}  // namespace

std::string ClassIdText(REFCLSID id) {
  constexpr int32_t kSize = 39;
  char16_t wide[kSize];
  StringFromGUID2(id, wide, kSize);
  std::string text(kSize - 1, '\0');
  std::transform(wide, wide + kSize - 1, text.begin(),
                 [](char16_t letter) { return static_cast<char>(letter); });
  return text;
}

std::string TextOfClassKey(std::string const &path) {
  HKEY key = 0;
  if (RegOpenKeyExA(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return {};
  std::string text = TextOf(key);
  RegCloseKey(key);
  return text;
}

std::string ModuleOfClass(REFCLSID id) {
  auto &[lock, known] = TheKnownClasses();
  std::lock_guard const guard(lock);
  if (auto const found = std::ranges::find(known, id, &KnownClass::id); found != known.end()) {
    if (std::string text = TextOf(found->key); !text.empty()) return text;
    RegCloseKey(found->key);
    known.erase(found);
  }
  known.reserve(known.size() + 1);
  std::string const path = "CLSID\\" + ClassIdText(id) + "\\InprocServer32";
  std::string text = LookUpUsers(id, path, &known);
  return text.empty() ? TextOfClassKey(path) : text;
}

void ForgetClasses() {
  auto &[lock, known] = TheKnownClasses();
  std::lock_guard const guard(lock);
  for (KnownClass const &one : known) RegCloseKey(one.key);
  known.clear();
}

}  // namespace zolt
