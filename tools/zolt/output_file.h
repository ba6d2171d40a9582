#ifndef ZOLT41_TOOLS_ZOLT_OUTPUT_FILE_H_
#define ZOLT41_TOOLS_ZOLT_OUTPUT_FILE_H_

#include <string>

#include "tools/zolt/output.h"

namespace zolt::tool {

// A file that is there whole or as it was before: what is written stands in a file beside it, which
// takes its name at the end. A target that is no plain file, such as a pipe, is written as it is.
// Made files are for their owner alone; a file that was there keeps its mode.
class OutputFile {
 public:
  explicit OutputFile(std::string const &path);
  ~OutputFile();
  OutputFile(OutputFile const &) = delete;
  OutputFile &operator=(OutputFile const &) = delete;

  Output &out() { return out_; }
  // All that was written is on the disk, though not yet in its place; nothing is written any more.
  // Throws if that fails.
  void Secure();
  // Puts the file in its place, on the disk. Throws if that fails.
  void Finish();

 private:
  std::string path_;
  bool special_;
  std::string written_ = {};  // what is renamed, or ""
  Output out_;
};

bool IsThere(std::string const &path);
// Both lead to one file.
bool IsSameFile(std::string const &a, std::string const &b);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_OUTPUT_FILE_H_
