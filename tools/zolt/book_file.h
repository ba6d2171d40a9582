#ifndef ZOLT41_TOOLS_ZOLT_BOOK_FILE_H_
#define ZOLT41_TOOLS_ZOLT_BOOK_FILE_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/zolt/errors.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

// The database that a call is about: -f, else ZOLT_ROLODEX, else contacts.rolodex in the home.
std::string BookPath(Call const &call);

// Tries again for so long as another program has the file open. 0, or the result of the last try.
int32_t TryWithin(uint32_t milliseconds, std::function<int32_t()> const &attempt);

// Why the last operation on the database failed.
ToolError BookFailure(std::string const &path);

// Keeps everybody from writing to a file for as long as it lives. Throws if a program does.
class WriteBar {
 public:
  WriteBar(std::string const &path, uint32_t wait);
  ~WriteBar();
  WriteBar(WriteBar const &) = delete;
  WriteBar &operator=(WriteBar const &) = delete;

 private:
  uint32_t file_ = 0;
};

// The file itself, where links lead to it.
std::string RealPath(std::string const &path);

// What the opening of a damaged book for writing put aside: files NAME.lost-N beside it.
std::vector<std::string> PiecesOf(std::string const &path);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_BOOK_FILE_H_
