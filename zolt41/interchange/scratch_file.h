#ifndef ZOLT41_INTERCHANGE_SCRATCH_FILE_H_
#define ZOLT41_INTERCHANGE_SCRATCH_FILE_H_

#include <cstdint>
#include <string>

namespace zolt {

// The file "qwe.ini" in the user's directory for files that live shortly. There is one such name,
// so that two at a time get into each other's way. It is made anew, never opened through a link,
// and removed at the end.
class ScratchFile {
 public:
  enum class Stale { removed, refused };

  // `stale` says what becomes of a file of that name that is there already.
  explicit ScratchFile(Stale stale);
  ~ScratchFile();
  ScratchFile(ScratchFile const &) = delete;
  ScratchFile &operator=(ScratchFile const &) = delete;

  bool good() const { return made_; }
  char const *path() const { return path_.c_str(); }

  // Both give false where not all bytes go through. Reading begins at the start of the file.
  bool Write(void const *bytes, uint32_t size);
  bool Read(void *bytes, uint32_t size);
  // Nobody else can open the file before.
  void Close();

 private:
  std::string path_;
  uint32_t file_ = 0;
  bool made_ = false;
};

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_SCRATCH_FILE_H_
