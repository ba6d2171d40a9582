// A preference text made of any bytes: it is refused at a place, or what it says is written again
// in a form that says the same.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tools/zolt/errors.h"
#include "tools/zolt/preference_text.h"

namespace {

constexpr char kHead[] = "zolt-preferences 1\ncode-page 1252\nstore user\n";

void ReadAndWrite(std::string const &text) {
  using namespace zolt::tool;
  try {
    std::string const once = TextOf(ReadPreferenceText(text, "text"));
    std::string const again = TextOf(ReadPreferenceText(once, "text"));
    if (once != again) abort();
  } catch (ToolError const &error) {
    if (error.subject.empty()) abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size) {
  std::string const bytes(reinterpret_cast<char const *>(data), size);
  ReadAndWrite(bytes);
  ReadAndWrite(kHead + bytes + "\nend\n");
  return 0;
}
