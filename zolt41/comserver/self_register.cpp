#include "zolt41/comserver/self_register.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "zolt41/comserver/pref_manager_interface.h"
#include "zolt41/platform/com/class_lookup.h"
#include "zolt41/platform/com/module_path.h"
#include "zolt41/platform/registry/classes_root.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/string_table.h"

namespace zolt {
namespace {

constexpr char kName[] = "Preference Manager";
constexpr char kProgId[] = "Brindle.PrefManager";
constexpr char kNumberedProgId[] = "Brindle.PrefManager.1";

// The file that this library was loaded from; empty if it cannot be told or is too long.
std::string ModulePath() {
  char path[512];
  uint32_t const length = GetModuleFileNameA(LibraryInstance(), path, sizeof path);
  return {path, length};
}

bool IsProgram(std::string const &path) {
  return path.find(".exe") != std::string::npos || path.find(".EXE") != std::string::npos;
}

// The first failure, for the result.
class Outcome {
 public:
  void Note(int32_t result) {
    failure_.Note();
    if (result_ == ERROR_SUCCESS) result_ = result;
  }
  HRESULT Result() const {
    if (result_ == ERROR_SUCCESS) return S_OK;
    return result_ == ERROR_ACCESS_DENIED ? E_ACCESSDENIED : E_FAIL;
  }

 private:
  FirstFailure failure_;
  int32_t result_ = ERROR_SUCCESS;
};

// Makes the key that a path of names leads to and gives it a text.
int32_t Enter(HKEY classes, std::string_view path, char const *valueName, std::string const &text) {
  HKEY key = classes;
  int32_t result = ERROR_SUCCESS;
  while (!path.empty() && result == ERROR_SUCCESS) {
    std::string const name(path.substr(0, path.find('\\')));
    path.remove_prefix(std::min(name.size() + 1, path.size()));
    HKEY const above = key;
    result =
        RegCreateKeyExA(above, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (above != classes) RegCloseKey(above);
  }
  if (result != ERROR_SUCCESS) return result;
  result =
      RegSetValueExA(key, valueName, 0, REG_SZ, reinterpret_cast<uint8_t const *>(text.c_str()),
                     static_cast<uint32_t>(text.size()) + 1);
  RegCloseKey(key);
  return result;
}

void EnterModule(HKEY classes, std::string const &classKey, Outcome *outcome) {
  std::string const path = ModulePath();
  if (path.empty()) return outcome->Note(ERROR_INVALID_PARAMETER);
  if (IsProgram(path)) {
    return outcome->Note(Enter(classes, classKey + "\\LocalServer32", nullptr, path));
  }
  outcome->Note(Enter(classes, classKey + "\\InprocServer32", nullptr, path));
  outcome->Note(Enter(classes, classKey + "\\InprocServer32", "ThreadingModel", "Apartment"));
}

int32_t DeleteTree(HKEY parent, char const *name) {
  HKEY key = 0;
  int32_t result = RegOpenKeyExA(parent, name, 0, KEY_ALL_ACCESS, &key);
  if (result != ERROR_SUCCESS) return result;
  char child[256];
  uint32_t length = sizeof child;
  while (result == ERROR_SUCCESS && RegEnumKeyExA(key, 0, child, &length, nullptr, nullptr, nullptr,
                                                  nullptr) == ERROR_SUCCESS) {
    result = DeleteTree(key, child);
    length = sizeof child;
  }
  RegCloseKey(key);
  return result == ERROR_SUCCESS ? RegDeleteKeyA(parent, name) : result;
}

void TakeAway(HKEY parent, std::string const &name, Outcome *outcome) {
  int32_t const result = DeleteTree(parent, name.c_str());
  outcome->Note(result == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : result);
}

HKEY RootOf(bool machine) {
  return machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

void EnterAll(HKEY root, Outcome *outcome) {
  HKEY classes = 0;
  outcome->Note(MakeClasses(root, &classes));
  if (classes == 0) return;
  std::string const id = ClassIdText(CLSID_PrefManager);
  std::string const classKey = "CLSID\\" + id;
  std::string const numbered = kNumberedProgId;
  std::string const plain = kProgId;
  outcome->Note(Enter(classes, classKey, nullptr, kName));
  EnterModule(classes, classKey, outcome);
  struct {
    std::string path;
    std::string text;
  } const entries[] = {
      {classKey + "\\ProgID", plain},
      {classKey + "\\VersionIndependentProgID", numbered},
      {numbered, kName},
      {numbered + "\\CLSID", id},
      {numbered + "\\CurVer", plain},
      {plain, kName},
      {plain + "\\CLSID", id},
  };
  for (auto const &entry : entries) outcome->Note(Enter(classes, entry.path, nullptr, entry.text));
  RegCloseKey(classes);
}

void TakeAwayAll(HKEY root, Outcome *outcome) {
  HKEY classes = 0;
  if (RegOpenKeyExA(root, "Software\\Classes", 0, KEY_ALL_ACCESS, &classes) != ERROR_SUCCESS)
    return;
  HKEY ids = 0;
  if (RegOpenKeyExA(classes, "CLSID", 0, KEY_ALL_ACCESS, &ids) == ERROR_SUCCESS) {
    TakeAway(ids, ClassIdText(CLSID_PrefManager), outcome);
    RegCloseKey(ids);
  }
  TakeAway(classes, kProgId, outcome);
  TakeAway(classes, kNumberedProgId, outcome);
  RegCloseKey(classes);
}

// All at once, so that nobody finds half of a class.
HRESULT AsOne(HKEY root, void (*work)(HKEY root, Outcome *outcome)) {
  Outcome outcome;
  HiveTransaction transaction(root);
  int32_t const begun = transaction.Begin();
  outcome.Note(begun);
  if (begun != ERROR_SUCCESS) return outcome.Result();
  work(root, &outcome);
  outcome.Note(transaction.Commit());
  return outcome.Result();
}

}  // namespace

HRESULT RegisterClass(bool machine) {
  return AsOne(RootOf(machine), [](HKEY root, Outcome *outcome) {
    Outcome ignored;
    TakeAwayAll(root, &ignored);
    EnterAll(root, outcome);
  });
}

HRESULT UnregisterClass(bool machine) {
  return AsOne(RootOf(machine), TakeAwayAll);
}

}  // namespace zolt
