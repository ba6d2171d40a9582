#include "zolt41/platform/system/system_path.h"

#include "zolt41/platform/system/codepage.h"

namespace zolt {

std::string SystemPath(char const *name) {
  return IsUtf8(name) ? name : Utf8FromLocal(name);
}

}  // namespace zolt
