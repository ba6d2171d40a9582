#include "zolt41/comserver/class_entries.h"

#include <algorithm>

#include "zolt41/comserver/pref_manager_interface.h"
#include "zolt41/platform/com/class_lookup.h"
#include "zolt41/platform/registry/registry.h"

namespace zolt {
namespace {

constexpr char kName[] = "Preference Manager";
constexpr char const *kServerKeys[] = {"\\InprocServer32", "\\LocalServer32"};

std::string ClassKey() {
  return "CLSID\\" + ClassIdText(CLSID_PrefManager);
}

bool IsProgram(std::string const &path) {
  return path.find(".exe") != std::string::npos || path.find(".EXE") != std::string::npos;
}

void AddModule(std::string const &module, std::vector<ClassEntry> *entries) {
  if (module.empty()) return;
  std::string const key = ClassKey() + kServerKeys[IsProgram(module) ? 1 : 0];
  entries->push_back({key, nullptr, module});
  if (!IsProgram(module)) entries->push_back({key, "ThreadingModel", "Apartment"});
}

// Those of the user or the machine, while it lives.
class OpenClasses {
 public:
  explicit OpenClasses(bool machine)
      : result_(RegOpenKeyExA(machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER, "Software\\Classes",
                              0, KEY_READ, &key_)) {}
  ~OpenClasses() {
    if (key_ != 0) RegCloseKey(key_);
  }
  OpenClasses(OpenClasses const &) = delete;
  OpenClasses &operator=(OpenClasses const &) = delete;

  int32_t result() const { return result_; }

  bool Has(std::string const &path) const {
    HKEY key = 0;
    if (RegOpenKeyExA(key_, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
  }

  // Empty if there is none.
  std::string Text(std::string const &path, char const *name) const {
    HKEY key = 0;
    if (RegOpenKeyExA(key_, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return {};
    char text[512];
    uint32_t size = sizeof text;
    bool const read = ZOLTQueryText(key, name, text, &size) == ERROR_SUCCESS;
    RegCloseKey(key);
    return read ? text : "";
  }

 private:
  HKEY key_ = 0;
  int32_t result_;
};

}  // namespace

std::vector<ClassEntry> ClassEntries(std::string const &module) {
  std::string const key = ClassKey();
  std::string const id = ClassIdText(CLSID_PrefManager);
  std::string const numbered = kNumberedProgId;
  std::string const plain = kProgId;
  std::vector<ClassEntry> entries = {{key, nullptr, kName}};
  AddModule(module, &entries);
  entries.push_back({key + "\\ProgID", nullptr, plain});
  entries.push_back({key + "\\VersionIndependentProgID", nullptr, numbered});
  entries.push_back({numbered, nullptr, kName});
  entries.push_back({numbered + "\\CLSID", nullptr, id});
  entries.push_back({numbered + "\\CurVer", nullptr, plain});
  entries.push_back({plain, nullptr, kName});
  entries.push_back({plain + "\\CLSID", nullptr, id});
  return entries;
}

HRESULT ReadRegistration(bool machine, std::string *module) {
  module->clear();
  OpenClasses const classes(machine);
  if (classes.result() == ERROR_FILE_NOT_FOUND) return REGDB_E_CLASSNOTREG;
  if (classes.result() != ERROR_SUCCESS) return RegistrationResult(classes.result());
  for (char const *key : kServerKeys) {
    if (module->empty()) *module = classes.Text(ClassKey() + key, nullptr);
  }
  bool const any = classes.Has(ClassKey()) || classes.Has(kProgId) || classes.Has(kNumberedProgId);
  if (!any) return REGDB_E_CLASSNOTREG;
  bool const all = std::ranges::all_of(ClassEntries(*module), [&](ClassEntry const &entry) {
    return classes.Text(entry.path, entry.name) == entry.text;
  });
  return all && !module->empty() ? S_OK : S_FALSE;
}

HRESULT RegistrationResult(int32_t failure) {
  if (failure == ERROR_SUCCESS) return S_OK;
  return failure == ERROR_ACCESS_DENIED ? E_ACCESSDENIED : E_FAIL;
}

}  // namespace zolt
