// A hive's file made of any bytes: opened, read and written it must give its documented failures.

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/registry/registry.h"

namespace {

std::string MakeHome() {
  std::string home = std::filesystem::temp_directory_path() / "zolt41-fuzz-XXXXXX";
  if (mkdtemp(home.data()) == nullptr) abort();
  setenv("ZOLT_HOME", home.c_str(), 1);
  return home;
}

std::string const &Home() {
  static std::string const home = MakeHome();
  return home;
}

void Use(HKEY root) {
  HKEY key = 0;
  if (RegCreateKeyA(root, "Test", &key) != ERROR_SUCCESS) return;
  for (uint32_t index = 0; index < 20; index++) {
    char name[260];
    uint32_t length = sizeof name;
    uint8_t data[64];
    uint32_t size = sizeof data;
    uint32_t type = 0;
    if (RegEnumValueA(key, index, name, &length, nullptr, &type, data, &size) ==
        ERROR_NO_MORE_ITEMS) {
      break;
    }
  }
  char text[256];
  uint32_t size = sizeof text;
  ZOLTQueryText(key, "v", text, &size);
  RegSetValueExA(key, "v", 0, REG_SZ, reinterpret_cast<uint8_t const *>("1"), 2);
  RegDeleteValueA(key, "w");
  RegCloseKey(key);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size) {
  for (auto const &entry : std::filesystem::directory_iterator(Home())) {
    std::filesystem::remove_all(entry.path());
  }
  std::filesystem::create_directory(Home() + "/machine");
  for (char const *name : {"/user.hive", "/machine/machine.hive"}) {
    std::ofstream(Home() + name, std::ios::binary)
        .write(reinterpret_cast<char const *>(data), static_cast<std::streamsize>(size));
  }
  Use(HKEY_CURRENT_USER);
  Use(HKEY_LOCAL_MACHINE);
  zolt::LeaveHives();
  return 0;
}
