// A card made of any bytes, as a list and property by property: what is written of it is text by
// the rules of its form.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "zolt41/foundation/mem_block.h"
#include "zolt41/interchange/card_text_export.h"
#include "zolt41/interchange/vcard_classic.h"
#include "zolt41/interchange/vcard_profile.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/platform/system/global_block.h"

namespace {

constexpr char const *kNames[] = {"FN",
                                  "N",
                                  "TEL",
                                  "FAX",
                                  "EMAIL",
                                  "URL",
                                  "TITLE",
                                  "ORG",
                                  "ADR",
                                  "LABEL",
                                  "X-BRNDL-IP",
                                  "X-BRNDL-CONFID",
                                  "X-BRNDL-TYNAME",
                                  "PHOTO",
                                  "SOUND",
                                  "LOGO",
                                  "Other",
                                  "L-Local",
                                  "L-BRNDL-TYPREFS"};

void Require(bool held) {
  if (!held) abort();
}

class Bytes {
 public:
  Bytes(uint8_t const *data, size_t size) : rest_(reinterpret_cast<char const *>(data), size) {}
  bool AtEnd() const { return rest_.empty(); }
  std::string_view Take(size_t count) {
    std::string_view const taken = rest_.substr(0, count);
    rest_.remove_prefix(taken.size());
    return taken;
  }
  uint8_t Byte() { return AtEnd() ? 0 : static_cast<uint8_t>(Take(1)[0]); }

 private:
  std::string_view rest_;
};

// Name, type, two bytes of flags, length, value.
void Build(PCardStorage *card, Bytes bytes) {
  while (!bytes.AtEnd()) {
    char const *const name = kNames[bytes.Byte() % std::size(kNames)];
    uint8_t const type = bytes.Byte();
    uint32_t const flags = bytes.Byte() | static_cast<uint32_t>(bytes.Byte()) << 8;
    std::string_view const value = bytes.Take(bytes.Byte());
    card->AddProp(name, type < 16 ? type : 0x80000000, (flags & 0x8000) != 0 ? ~0U : flags,
                  value.data(), static_cast<int32_t>(value.size()));
  }
}

void CheckLine(std::string_view line) {
  Require(line.size() <= 75 && zolt::IsUtf8(line));
  for (char const byte : line) {
    Require(byte == '\t' || (static_cast<unsigned char>(byte) >= ' ' && byte != '\x7F'));
  }
}

void CheckModern(std::string_view text) {
  Require(text.starts_with("BEGIN:VCARD\r\nVERSION:") && text.ends_with("\r\nEND:VCARD\r\n"));
  Require(text.find("\r\nFN:") != text.npos && text.find("\r\nN:") != text.npos);
  while (!text.empty()) {
    size_t const end = text.find("\r\n");
    Require(end != text.npos);
    CheckLine(text.substr(0, end));
    text.remove_prefix(end + 2);
  }
}

void Write(PCardStorage *card) {
  uint32_t size = 0;
  void *const block = ExportCard(card, &size);
  Require(block != nullptr);
  GlobalFree(block);
  Require(zolt::ClassicVCard(card).ends_with("END:VCARD\r\n"));
  for (VCardProfile const profile : {VCard3, VCard4}) {
    CheckModern(zolt::ModernVCard(card, profile, nullptr));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size) {
  PCardStorage list;
  list.Set(reinterpret_cast<char const *>(data), static_cast<int32_t>(size));
  Write(&list);
  PCardStorage built;
  Build(&built, {data, size});
  Write(&built);
  return 0;
}
