#ifndef ZOLT41_PLATFORM_SYSTEM_FILE_BESIDE_H_
#define ZOLT41_PLATFORM_SYSTEM_FILE_BESIDE_H_

#include <cstdint>
#include <string>

namespace zolt {

// Files that lie beside one that is open for writing through CreateFileA. Links were followed when
// that was opened, and it is locked, so that nobody else works beside it.

// A new, empty file NAME.ending, for its user alone, open for reading and writing. Gives its
// handle, or INVALID_HANDLE_VALUE; a file that exists is a failure, and `*exists` says whether it
// is that.
uint32_t CreateFileBeside(uint32_t file, std::string const &ending, bool *exists);
void RemoveFileBeside(uint32_t file, std::string const &ending);

// New content for the open file, which takes its place and its handle: whatever ends the process,
// the name leads to the old content or to the new one. Not possible, and `good` false, where the
// directory does not allow it, or the file's owner, access list or other names would be lost.
class FileBeside {
 public:
  explicit FileBeside(uint32_t file);
  // Removes the new file if it did not take the old one's place.
  ~FileBeside();
  FileBeside(FileBeside const &) = delete;
  FileBeside &operator=(FileBeside const &) = delete;

  bool good() const { return handle_ != 0; }
  // To be written to.
  uint32_t handle() const { return handle_; }
  // Brings the content to the disk and puts it in its place. The old file's handle is then that of
  // the new one; false, with all as before, if it cannot be done.
  bool Commit();

  // Removes what a process that died left beside the open file.
  static void RemoveRemains(uint32_t file);

 private:
  uint32_t file_;
  uint32_t handle_ = 0;
  std::string path_;
  std::string beside_;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_FILE_BESIDE_H_
