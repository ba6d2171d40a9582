// Any bytes as names and texts: what converts comes back as it was, and nothing reads beyond an
// end.

#include <cstdint>
#include <cstdlib>
#include <string>

#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/u_convert.h"
#include "zolt41/platform/registry/hive_text.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/prefs/number_text.h"

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size) {
  std::string const bytes(reinterpret_cast<char const *>(data), size);
  std::string back;
  if (!zolt::LocalFromUtf8(zolt::Utf8FromLocal(bytes), &back) || back != bytes) abort();
  if (zolt::LocalFromUtf8(bytes, &back) && zolt::Utf8FromLocal(back) != bytes) abort();
  zolt::LocalNameOf(bytes);

  std::u16string wide(size, u'\0');
  ConvertLocalToUnicode(bytes.data(), wide.data(), static_cast<int32_t>(size));
  std::string narrow(size, '\0');
  ConvertUnicodeToLocal(wide.data(), narrow.data(), static_cast<int32_t>(size), '?');
  if (size != 0 && narrow != bytes) abort();

  int32_t number = 0;
  zolt::ScanNumber(bytes.c_str(), &number);
  size_t const half = size / 2;
  AZStrContains(bytes.c_str(), bytes.c_str() + half);
  AZStrCompare(bytes.c_str(), bytes.c_str() + half);
  return 0;
}
