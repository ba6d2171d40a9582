#ifndef ZOLT41_PLATFORM_REGISTRY_HIVE_TEXT_H_
#define ZOLT41_PLATFORM_REGISTRY_HIVE_TEXT_H_

#include <string>
#include <string_view>

namespace zolt {

// A name as a hive stores it, in UTF-8. A name of ASCII bytes alone is used as it stands.
class StoredName {
 public:
  explicit StoredName(std::string_view local);
  std::string_view text() const { return text_; }

 private:
  std::string converted_;
  std::string_view text_;
};

// The way back. A character that the local code page lacks, which only a foreign program can have
// written, becomes '?'.
std::string LocalNameOf(std::string_view stored);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_HIVE_TEXT_H_
