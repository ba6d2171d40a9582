#include "zolt41/platform/system/file_status.h"

#include <sys/stat.h>

#include <fstream>

namespace zolt {

FileStatus StatusOf(std::string const &path) {
  struct stat found {};
  if (stat(path.c_str(), &found) != 0) return {};
  return {true, found.st_uid, found.st_mode & 0777};
}

std::string ProgramOf(uint32_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
}

}  // namespace zolt
