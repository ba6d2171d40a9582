#include "zolt41/interchange/scratch_file.h"

#include "zolt41/platform/system/file.h"
#include "zolt41/platform/system/file_calls.h"
#include "zolt41/platform/system/system_path.h"
#include "zolt41/platform/system/temp_path.h"

namespace zolt {
namespace {

constexpr char kScratchName[] = "qwe.ini";
constexpr uint32_t kDirectorySize = 255;

}  // namespace

ScratchFile::ScratchFile(Stale stale) {
  char directory[kDirectorySize];
  if (GetTempPathA(sizeof directory, directory) == 0) return;
  path_ = SystemPath((std::string(directory) + kScratchName).c_str());
  if (stale == Stale::removed) DeleteFileA(path_.c_str());
  uint32_t const file = CreateFileA(path_.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, 0);
  if (file == INVALID_HANDLE_VALUE) return;
  file_ = file;
  made_ = true;
}

ScratchFile::~ScratchFile() {
  Close();
  // Without memory, too, and without a word of it: why something failed is told, not this.
  if (made_) TheFileCalls().unlink(path_.c_str());
}

bool ScratchFile::Write(void const *bytes, uint32_t size) {
  uint32_t done = 0;
  return WriteFile(file_, bytes, size, &done, nullptr) != 0 && done == size;
}

bool ScratchFile::Read(void *bytes, uint32_t size) {
  uint32_t done = 0;
  return SetFilePointer(file_, 0, nullptr, FILE_BEGIN) == 0 &&
         ReadFile(file_, bytes, size, &done, nullptr) != 0 && done == size;
}

void ScratchFile::Close() {
  if (file_ != 0) CloseHandle(file_);
  file_ = 0;
}

}  // namespace zolt
