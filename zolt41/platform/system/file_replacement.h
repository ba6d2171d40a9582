#ifndef ZOLT41_PLATFORM_SYSTEM_FILE_REPLACEMENT_H_
#define ZOLT41_PLATFORM_SYSTEM_FILE_REPLACEMENT_H_

#include <cstdint>
#include <string>
#include <string_view>

struct stat;

namespace zolt {

// New content for a file, which is there whole or not at all: whatever ends the process, the file
// holds its old content or the new one.
//
// The content is written beside the file, brought to the disk, and takes its name; links are
// followed to the file they lead to, and mode and owner stay. Where the owner, access lists, or
// other names of the file cannot be kept so, it is written in place by Commit, after room for all
// of it was had: a full disk leaves it as it was, but a crash or a failing disk amid the writing
// leaves a part of each, and so can a disk that is full on a file system that never writes over a
// block. A file that is open through CreateFileA is not replaced, and none that the user may not
// write, also where the directory would allow it. New files are for their user alone (mode 0600).
// What dead writers left beside the file is removed.
//
// After a failure the functions do nothing; ZOLTLastFailure has the reason.
class FileReplacement {
 public:
  // A name as SystemPath takes it; null fails.
  explicit FileReplacement(char const *name);
  ~FileReplacement();
  FileReplacement(FileReplacement const &) = delete;
  FileReplacement &operator=(FileReplacement const &) = delete;

  bool good() const { return good_; }
  void Write(std::string_view bytes);
  // Puts the content in its place; false if that, or anything before it, failed.
  bool Commit();

 private:
  void Open(char const *name);
  void OpenTarget();
  void OpenBeside();
  bool OpenBesideLike(struct stat const &old);
  void DropBeside();
  void MakeRoom();
  void WriteOut(std::string_view bytes);
  bool Rename();
  void Fail(int error);

  std::string path_;
  std::string beside_;   // the new file, or ""
  uint32_t target_ = 0;  // a handle that keeps others out; 0 if there is no file yet
  int descriptor_ = -1;  // what is written to
  bool good_ = true;
  std::string waiting_;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_FILE_REPLACEMENT_H_
