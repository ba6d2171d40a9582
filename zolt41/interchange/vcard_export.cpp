#include "zolt41/interchange/vcard_export.h"

#include <string>

#include "zolt41/interchange/vcard_classic.h"
#include "zolt41/interchange/vcard_profile.h"
#include "zolt41/platform/system/file_replacement.h"
#include "zolt41/platform/system/with_memory.h"

namespace {

int32_t WriteWhole(char const *path, std::string const &text) {
  zolt::FileReplacement file(path);
  file.Write(text);
  return file.Commit();
}

}  // namespace

int32_t ExportVCard(PCardStorage *card, char const *path) {
  return zolt::WithMemory(0, [&] { return WriteWhole(path, zolt::ClassicVCard(card)); });
}

int32_t ExportVCardAs(PCardStorage *card, char const *path, VCardProfile profile, char const *key) {
  switch (profile) {
    case VCardClassic:
      return ExportVCard(card, path);
    case VCard3:
    case VCard4:
      return zolt::WithMemory(
          0, [&] { return WriteWhole(path, zolt::ModernVCard(card, profile, key)); });
  }
  return 0;
}
