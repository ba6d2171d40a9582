#include "zolt41/comserver/self_register.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "zolt41/comserver/class_entries.h"
#include "zolt41/comserver/pref_manager_interface.h"
#include "zolt41/platform/com/class_lookup.h"
#include "zolt41/platform/com/module_path.h"
#include "zolt41/platform/registry/classes_root.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/string_table.h"

namespace zolt {
namespace {

// The file that this library was loaded from; empty if it cannot be told or is too long.
std::string ModulePath() {
  char path[512];
  uint32_t const length = GetModuleFileNameA(LibraryInstance(), path, sizeof path);
  return {path, length};
}

// The first failure, for the result.
class Outcome {
 public:
  void Note(int32_t result) {
    failure_.Note();
    if (result_ == ERROR_SUCCESS) result_ = result;
  }
  HRESULT Result() const { return RegistrationResult(result_); }

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

// What is not there need not be taken away.
int32_t UnlessMissing(int32_t result) {
  return result == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : result;
}

void TakeAway(HKEY parent, std::string const &name, Outcome *outcome) {
  outcome->Note(UnlessMissing(DeleteTree(parent, name.c_str())));
}

// 0 if it is not there, or for another reason, which counts.
HKEY OpenToTakeAway(HKEY parent, char const *name, Outcome *outcome) {
  HKEY key = 0;
  outcome->Note(UnlessMissing(RegOpenKeyExA(parent, name, 0, KEY_ALL_ACCESS, &key)));
  return key;
}

HKEY RootOf(bool machine) {
  return machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

void EnterAll(HKEY root, Outcome *outcome) {
  HKEY classes = 0;
  outcome->Note(MakeClasses(root, &classes));
  if (classes == 0) return;
  std::string const module = ModulePath();
  if (module.empty()) outcome->Note(ERROR_INVALID_PARAMETER);
  for (ClassEntry const &entry : ClassEntries(module)) {
    outcome->Note(Enter(classes, entry.path, entry.name, entry.text));
  }
  RegCloseKey(classes);
}

void TakeAwayAll(HKEY root, Outcome *outcome) {
  HKEY const classes = OpenToTakeAway(root, "Software\\Classes", outcome);
  if (classes == 0) return;
  if (HKEY const ids = OpenToTakeAway(classes, "CLSID", outcome); ids != 0) {
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

// What is not there is left alone: to take it away would make a hive.
HRESULT UnregisterClass(bool machine) {
  std::string module;
  if (ReadRegistration(machine, &module) == REGDB_E_CLASSNOTREG) return S_OK;
  return AsOne(RootOf(machine), TakeAwayAll);
}

}  // namespace zolt
