#ifndef ZOLT41_PLATFORM_SYSTEM_FILE_STATUS_H_
#define ZOLT41_PLATFORM_SYSTEM_FILE_STATUS_H_

#include <cstdint>
#include <string>

namespace zolt {

struct FileStatus {
  bool present;
  uint32_t owner;
  uint32_t mode;  // the lower nine bits
};
FileStatus StatusOf(std::string const &path);

// The name of the program that a process runs, up to 15 bytes; empty if there is no such process.
std::string ProgramOf(uint32_t process);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_FILE_STATUS_H_
