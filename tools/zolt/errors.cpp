#include "tools/zolt/errors.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "tools/zolt/documents.h"
#include "tools/zolt/output.h"
#include "tools/zolt/text.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

constexpr size_t kLongestSubject = 300;

constexpr FailureWords kFailures[] = {
    {kFailed, "io", "cannot be used", ""},
    {kFailed, "denied", "permission denied", ""},
    {kLocked, "locked", "locked by another process", "try again, or wait longer with --wait S"},
    {kFailed, "full", "no space left on the device", ""},
    {kDamaged, "damaged", "damaged, or no hive at all",
     "put a saved copy in its place, or move it away to begin anew"},
    {kDamaged, "newer", "written by a newer version of zolt", "use that version"},
    {kFailed, "io", "input/output error", ""},
    {kLocked, "timeout", "timed out", "try again, or wait longer with --wait S"},
};

std::string Line(ToolError const &error) {
  std::string line;
  if (!error.subject.empty()) line += Clip(error.subject, kLongestSubject) + ": ";
  line += error.message;
  if (!error.hint.empty()) line += "; " + error.hint;
  return Escape(line);
}

}  // namespace

void Refuse(std::string subject, std::string message, std::string hint) {
  throw ToolError(kUsage, "usage", std::move(subject), std::move(message), std::move(hint));
}

FailureWords const &WordsOf(int failure) {
  auto const row = static_cast<size_t>(failure);
  return kFailures[row < std::size(kFailures) ? row : 0];
}

ToolError StoreFailure(std::string subject) {
  char concerned[4096] = "";
  FailureWords const &row = WordsOf(ZOLTLastFailure(concerned, sizeof concerned));
  if (concerned[0] != '\0') subject = concerned;
  return {row.code, row.kind, subject, row.message, row.hint};
}

ToolError SystemFailure(std::string subject, int error) {
  return {kFailed, "io", std::move(subject), std::strerror(error)};
}

void Report(ToolError const &error, bool json, bool colour) {
  if (json) {
    WriteError(ErrorDocument(error));
  } else {
    WriteError((colour ? "\033[1;31mzolt:\033[0m " : "zolt: ") + Line(error));
  }
}

}  // namespace zolt::tool
