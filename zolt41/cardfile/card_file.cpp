#include <array>
#include <cstring>
#include <memory>

#include "zolt41/cardfile/call_card.h"
#include "zolt41/cardfile/card_file_format.h"
#include "zolt41/cardfile/card_key.h"
#include "zolt41/cardfile/host_save.h"
#include "zolt41/foundation/afs_file.h"
#include "zolt41/foundation/afs_results.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/endian.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/interchange/card_text_export.h"
#include "zolt41/interchange/card_text_load.h"
#include "zolt41/platform/system/file_replacement.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/with_memory.h"

namespace {

using Head = std::array<char, zolt::kCardHead>;
using Block = std::unique_ptr<char, decltype(&_DisposeMem)>;

enum class Content { card, text, unread };

zolt::Failure LastFailure() {
  return static_cast<zolt::Failure>(ZOLTLastFailure(nullptr, 0));
}

// Reads the head of a file, if it is one of a card file.
Content ReadHead(uint32_t file, Head *head) {
  auto size = static_cast<uint32_t>(head->size());
  int32_t const result = AFS_Read(file, &size, head->data());
  if (result != 0) return result == zolt::kAfsEndedEarly ? Content::text : Content::unread;
  // As text of its own, which the bytes behind it do not belong to.
  std::array<char, zolt::kCardMagicSize + 1> magic{};
  std::memcpy(magic.data(), head->data(), zolt::kCardMagicSize);
  return AZStrCompare(magic.data(), zolt::kCardMagic) == 0 ? Content::card : Content::text;
}

}  // namespace

bool CallCard::SaveAsFormatSays() {
  if (unread_) return false;
  switch (format_) {
    case CardFormatBinary:
      return SaveBinary();
    case CardFormatText:
      return ExportCard(this, GetName()) != -1;
    case CardFormatHost:
      return zolt::SaveOnHost(this);
    default:
      return true;
  }
}

bool CallCard::SaveBinary() {
  uint32_t const size = GetMemSize(list_);
  if (size > zolt::kLargestCardList) {
    zolt::SetFailure(zolt::Failure::full, GetName());
    return false;
  }
  zolt::FileReplacement file(GetName());
  if (!file.good()) return false;
  char key[zolt::kCardKeySize];
  if (key_) {
    std::memcpy(key, key_->data(), sizeof key);
  } else {
    zolt::MakeCardKey(key);
  }
  Head head{};
  std::memcpy(head.data(), zolt::kCardMagic, zolt::kCardMagicSize);
  zolt::StoreLittle32(static_cast<uint32_t>(parentalControl_),
                      head.data() + zolt::kCardParentalControl);
  std::memcpy(head.data() + zolt::kCardKey, key, sizeof key);
  zolt::StoreLittle32(static_cast<uint32_t>(version_) + 1, head.data() + zolt::kCardVersion);
  file.Write({head.data(), head.size()});
  file.Write({list_, size});
  if (!file.Commit()) return false;
  SetKey(key);
  return true;
}

void CallCard::Load() {
  format_ = CardFormatText;
  unread_ = false;
  if (!name_) return;
  uint32_t file = 0;
  if (AFS_LZOpenFile(GetName(), 1, &file) != 0) {
    // There may be a file all the same.
    if (LastFailure() == zolt::Failure::full) LeaveUnread(zolt::Failure::full);
    return;
  }
  Head head{};
  Content const content = ReadHead(file, &head);
  if (content == Content::text) return LoadText(file);
  if (content == Content::card) LoadBinary(file, head.data());
  AFS_CloseFile(file);
  if (content == Content::unread) LeaveUnread(zolt::Failure::io);
}

// What cannot be read whole leaves the card as it was, and must not be saved over its file. What
// failed before that counts, if it is known.
void CallCard::LeaveUnread(zolt::Failure failure) {
  unread_ = true;
  zolt::SetFailure(LastFailure() == zolt::Failure::none ? failure : LastFailure(), GetName());
}

void CallCard::LoadBinary(uint32_t file, char const *head) {
  format_ = CardFormatNone;
  auto size = static_cast<uint32_t>(AFS_GetEOF(file)) - zolt::kCardHead;
  if (size > zolt::kLargestCardList) return LeaveUnread(zolt::Failure::io);
  Block const list(NewMem(size), _DisposeMem);
  if (list == nullptr) return LeaveUnread(zolt::Failure::full);
  if (AFS_Read(file, &size, list.get()) != 0) return LeaveUnread(zolt::Failure::io);
  if (!TakeList(list.get(), static_cast<int32_t>(size))) return;
  format_ = CardFormatBinary;
  parentalControl_ = static_cast<int32_t>(zolt::LoadLittle32(head + zolt::kCardParentalControl));
  SetKey(head + zolt::kCardKey);
  version_ = static_cast<int32_t>(zolt::LoadLittle32(head + zolt::kCardVersion));
}

bool CallCard::TakeList(char const *list, int32_t size) {
  if (TakeCopy(list, size)) return true;
  LeaveUnread(zolt::Failure::full);
  return false;
}

void CallCard::LoadText(uint32_t file) {
  bool const had = zolt::WithMemory(false, [&] {
    PCardStorage text;
    int32_t const loaded = zolt::LoadCardText(&text, file);
    if (loaded == zolt::kCardTextUnread) LeaveUnread(zolt::Failure::io);
    if (loaded == 1) TakeList(text.list_, static_cast<int32_t>(GetMemSize(text.list_)));
    return true;
  });
  if (had) return;
  // Where the text was read it is closed already, and no other file has its handle.
  AFS_CloseFile(file);
  LeaveUnread(zolt::Failure::full);
}
