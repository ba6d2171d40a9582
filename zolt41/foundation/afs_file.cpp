#include "zolt41/foundation/afs_file.h"

#include "zolt41/foundation/afs_results.h"
#include "zolt41/platform/system/file.h"

namespace {

constexpr uint32_t kNoFile = INVALID_HANDLE_VALUE;
constexpr uint32_t kNoPosition = 0xFFFFFFFF;

constexpr int32_t kRefused = -1;
constexpr int32_t kNotCreated = -8990;
constexpr int32_t kNotOpened = -8991;
constexpr int32_t kNothingToClose = -8993;
constexpr int32_t kNotTold = -8996;
constexpr int32_t kBadOrigin = -8997;
constexpr int32_t kNotAFile = -8999;

int32_t Seek(uint32_t file, int32_t offset, uint32_t method) {
  return SetFilePointer(file, offset, nullptr, method) == kNoPosition ? kRefused : 0;
}

}  // namespace

int32_t AFS_LZOpenFile(char const *name, int32_t mode, uint32_t *file) {
  uint32_t access = GENERIC_READ | GENERIC_WRITE;
  if (mode == 1) access = GENERIC_READ;
  if (mode == 2) access = GENERIC_WRITE;
  uint32_t const share = mode == 1 ? FILE_SHARE_READ : 0;
  uint32_t const opened =
      CreateFileA(name, access, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, 0);
  if (opened == kNoFile) return kNotOpened;
  *file = opened;
  return 0;
}

int32_t AFS_LZCreateFile(char const *name, int32_t, int32_t) {
  uint32_t const made = CreateFileA(name, GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_RANDOM_ACCESS, 0);
  if (made == kNoFile) return kNotCreated;
  CloseHandle(made);
  return 0;
}

int32_t AFS_CloseFile(uint32_t file) {
  if (file == kNoFile) return kNothingToClose;
  CloseHandle(file);
  return 0;
}

void AFS_FlushFile(uint32_t file) {
  if (file != kNoFile) FlushFileBuffers(file);
}

int32_t AFS_Read(uint32_t file, uint32_t *count, void *buffer) {
  if (file == kNoFile) return kNotAFile;
  uint32_t const wanted = *count;
  if (ReadFile(file, buffer, wanted, count, nullptr) == 0) return kRefused;
  return *count < wanted ? zolt::kAfsEndedEarly : 0;
}

int32_t AFS_Write(uint32_t file, uint32_t *count, void const *buffer) {
  if (file == kNoFile) return kNotAFile;
  return WriteFile(file, buffer, *count, count, nullptr) == 0 ? kRefused : 0;
}

int32_t AFS_GetFPos(uint32_t file) {
  if (file == kNoFile) return kNotAFile;
  uint32_t const position = SetFilePointer(file, 0, nullptr, FILE_CURRENT);
  return position == kNoPosition ? kNotTold : static_cast<int32_t>(position);
}

int32_t AFS_SetFPos(uint32_t file, int32_t offset, int32_t origin) {
  constexpr uint32_t kMethods[] = {FILE_BEGIN, FILE_END, FILE_CURRENT};
  if (file == kNoFile) return kNotAFile;
  auto const number = static_cast<int8_t>(origin);
  if (number < 1 || number > 3) return kBadOrigin;
  return Seek(file, offset, kMethods[number - 1]);
}

int32_t AFS_GetEOF(uint32_t file) {
  int32_t const position = AFS_GetFPos(file);
  if (position < 0) return position;
  uint32_t const end = SetFilePointer(file, 0, nullptr, FILE_END);
  Seek(file, position, FILE_BEGIN);
  return end == kNoPosition ? kNotTold : static_cast<int32_t>(end);
}

int32_t AFS_SetEOF(uint32_t file, int32_t size) {
  if (file == kNoFile) return kNotAFile;
  int32_t const position = AFS_GetFPos(file);
  if (position < 0 || Seek(file, size, FILE_BEGIN) != 0) return kRefused;
  if (SetEndOfFile(file) == 0) {
    Seek(file, position, FILE_BEGIN);
    return kRefused;
  }
  return position < size ? Seek(file, position, FILE_BEGIN) : 0;
}
