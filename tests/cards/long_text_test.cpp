// Texts that are too long to be stored.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "tests/support/mem_bytes.h"
#include "zolt41/cards/card_prefs.h"
#include "zolt41/cards/property_storage.h"

namespace zolt::testing {
namespace {

constexpr size_t kLength = size_t{1} << 30;

// A text of kLength characters that takes little memory: the same pages again and again.
class LongText {
 public:
  LongText() {
    int const file = memfd_create("text", MFD_CLOEXEC);
    std::string const part(kPart, 'x');
    if (write(file, part.data(), kPart) != static_cast<ssize_t>(kPart)) return;
    void *const place = mmap(nullptr, kSize, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (place == MAP_FAILED) return;
    text_ = static_cast<char *>(place);
    bool whole = true;
    for (size_t at = 0; at < kLength; at += kPart)
      whole &= mmap(text_ + at, kPart, PROT_READ, MAP_SHARED | MAP_FIXED, file, 0) != MAP_FAILED;
    close(file);
    EXPECT_TRUE(whole);
  }
  ~LongText() {
    if (text_ != nullptr) munmap(text_, kSize);
  }
  LongText(LongText const &) = delete;
  LongText &operator=(LongText const &) = delete;

  char const *get() const { return text_; }

 private:
  static constexpr size_t kPart = 1 << 22;
  static constexpr size_t kSize = kLength + 4096;

  char *text_ = nullptr;
};

// With its end it takes 2^31 bytes in 16-bit characters, or two more.
TEST(LongTextTest, ATextOfAGigabyteChangesNothing) {
  LongText const text;
  ASSERT_NE(text.get(), nullptr);
  PCardStorage list;
  list.SetStrProp("FN", 0, 0, "old");
  std::string const bytes = Taken(list.Get());
  TYUserPrefs store(PrefLevelCard, nullptr, 0);
  store.SetStr(1, "n", "old");
  std::string const blob = Taken(store.GetData());
  store.SetModified(0);
  for (char const *value : {text.get(), text.get() + 1}) {
    list.SetStrProp("FN", 0, 0, value);
    store.SetStr(1, "n", value);
  }
  EXPECT_EQ(Taken(list.Get()), bytes);
  EXPECT_EQ(Taken(store.GetData()), blob);
  EXPECT_EQ(store.GetModified(), 0);
}

}  // namespace
}  // namespace zolt::testing
