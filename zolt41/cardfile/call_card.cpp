#include "zolt41/cardfile/call_card.h"

#include <cstring>
#include <new>
#include <string_view>

#include "zolt41/cardfile/host_save.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/platform/system/with_memory.h"

namespace {

using SaveProc = int32_t (*)(CallCard *);
constinit SaveProc saveOnHost = nullptr;

}  // namespace

CallCard::CallCard(int32_t format)
    : format_(format), prefs_(std::make_unique<TYUserPrefs>(PrefLevelCard, nullptr, 0)) {}

CallCard::CallCard(void const *data, int32_t size, int32_t format) : CallCard(format) {
  if (!TakeCopy(static_cast<char const *>(data), size)) throw std::bad_alloc();
}

CallCard::CallCard(char const *name) : CallCard(CardFormatText) {
  SetName(name);
  Load();
}

CallCard::~CallCard() = default;

CallCard *CallCard::Copy() {
  auto const size = static_cast<int32_t>(GetMemSize(list_));
  CallCard *const copy =
      zolt::WithMemory<CallCard *>(nullptr, [&] { return new CallCard(list_, size, format_); });
  if (copy == nullptr) return nullptr;
  copy->name_ = name_;
  copy->key_ = key_;
  copy->version_ = version_;
  copy->unread_ = unread_;
  return copy;
}

int32_t CallCard::Modified() {
  return PCardStorage::Modified() != 0 || prefs_->GetModified() != 0;
}

void CallCard::Recalculate() {
  PCardStorage::Recalculate();
  if (prefs_ == nullptr) return;
  uint32_t length = 0;
  uint32_t const index = FindProp(zolt::kCardPrefsProperty, 0, 0, 0, nullptr);
  char const *const blob = GetPropA(index, &length, nullptr, nullptr, nullptr);
  inStep_ = prefs_->TakeData(blob, blob == nullptr ? 0 : length);
}

void CallCard::SavePrefs() {
  // A store that could not be built anew is not of this list.
  if (prefs_->GetModified() == 0 || !inStep_) return;
  char *const blob = prefs_->GetData();
  if (blob == nullptr) return;
  auto const size = static_cast<int32_t>(GetMemSize(blob));
  uint32_t const index = FindProp(zolt::kCardPrefsProperty, 0, 0, 0, nullptr);
  bool const put =
      index < PropCount()
          ? SetPropA(index, zolt::kCardPrefsProperty, PropertyData, PropertyLocal, blob, size) != 0
          : AddProp(zolt::kCardPrefsProperty, PropertyData, PropertyLocal, blob, size) !=
                UINT32_MAX;
  _DisposeMem(blob);
  if (put) prefs_->SetModified(0);
}

int32_t CallCard::SaveCard() {
  SavePrefs();
  // What the store holds and the list could not take would be lost.
  if (prefs_->GetModified() != 0) return 0;
  if (!zolt::WithMemory(false, [this] { return SaveAsFormatSays(); })) return 0;
  SetModified(0);
  return 1;
}

int32_t CallCard::SaveCardAs(int32_t format, char const *name) {
  char keptName[kNameSize] = {};
  std::string_view(GetName()).copy(keptName, kNameSize - 1);
  bool const named = name_.has_value();
  int32_t const keptFormat = format_;
  bool const keptUnread = unread_;
  SetName(name);
  format_ = format;
  if (SaveCard() != 0) return 1;
  format_ = keptFormat;
  if (named) {
    SetName(keptName);
  } else {
    name_.reset();
  }
  unread_ = keptUnread;
  return 0;
}

void CallCard::SetParentalControl(int32_t value) {
  parentalControl_ = value;
  SetModified(1);
}

char const *CallCard::GetName() const {
  return name_ ? name_->data() : "";
}

void CallCard::SetName(char const *name) {
  // The name given may be a part of the present one.
  std::array<char, kNameSize> kept{};
  std::string_view(name == nullptr ? "" : name).copy(kept.data(), kNameSize - 1);
  unread_ = false;
  name_ = kept;
}

char const *CallCard::GetKey() const {
  static constexpr char kNoKey[kKeySize + 1] = {};
  return key_ ? key_->data() : kNoKey;
}

void CallCard::SetKey(char const *key) {
  if (key == nullptr) return;
  if (!key_) key_.emplace();
  std::memmove(key_->data(), key, kKeySize);
}

void SetSaveCallCardProc(int32_t (*proc)(CallCard *)) {
  saveOnHost = proc;
}

namespace zolt {

bool SaveOnHost(CallCard *card) {
  return saveOnHost != nullptr && saveOnHost(card) != 0;
}

}  // namespace zolt
