#include "zolt41/interchange/card_text_import.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string>

#include "zolt41/cards/card_prefs.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/interchange/card_text_format.h"
#include "zolt41/interchange/card_text_load.h"
#include "zolt41/interchange/card_text_reader.h"
#include "zolt41/interchange/legacy_names.h"
#include "zolt41/interchange/preference_additions.h"
#include "zolt41/interchange/property_additions.h"
#include "zolt41/interchange/scratch_file.h"
#include "zolt41/platform/system/global_block.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/with_memory.h"
#include "zolt41/prefs/stores.h"

namespace {

// The last bytes at which the first two lines end.
constexpr int kLastOfAddress = ' ' - 1;
constexpr int kLastOfConference = '0' - 1;

enum class HeadLines { kept, droppedIfRepeated };

class CardTextImport {
 public:
  CardTextImport(PCardStorage *card, FBasicRead *reader, HeadLines headLines)
      : card_(card), reader_(reader), headLines_(headLines) {}

  bool Run() {
    ReadHead();
    bool const read = ReadSections();
    additions_.PutInto(card_);
    if (read) PutPreferences();
    return read;
  }

 private:
  void ReadHead();
  bool ReadSections();
  bool ReadProperties();
  bool ReadPreferences(std::string const &section);
  void SetPreference(std::string const &section, uint32_t id, std::string const &name,
                     std::string const &value);
  void PutPreferences();

  PCardStorage *card_;
  FBasicRead *reader_;
  HeadLines headLines_;
  zolt::PropertyAdditions additions_;
  zolt::PreferenceAdditions preferences_;
};

void CardTextImport::ReadHead() {
  std::string const address = zolt::ReadUpTo(reader_, kLastOfAddress, zolt::kLongestHeadLine);
  additions_.SetText(zolt::kAddressProperty, 0, address.c_str());
  reader_->GetByte();
  std::string const conference = zolt::ReadUpTo(reader_, kLastOfConference, zolt::kLongestHeadLine);
  additions_.SetText(zolt::kConferenceProperty, 0, conference.c_str());
  if (headLines_ == HeadLines::kept) return;
  additions_.MarkHeadLine(0, zolt::kNoAddress, kLastOfAddress);
  additions_.MarkHeadLine(1, zolt::kNoConference, kLastOfConference);
}

bool CardTextImport::ReadSections() {
  std::string name;
  while (zolt::ReadSectionName(reader_, &name)) {
    bool const ofCard = AZStrEqual(name.c_str(), zolt::kCardSection) != 0;
    if (!(ofCard ? ReadProperties() : ReadPreferences(name))) return false;
  }
  return true;
}

bool CardTextImport::ReadProperties() {
  zolt::PropertyHead head;
  std::string value;
  while (zolt::ReadPropertyHead(reader_, &head)) {
    switch (zolt::ReadPropertyValue(reader_, head.type, &value)) {
      case zolt::CardValue::text:
        additions_.SetText(head.name, head.flags, value.c_str());
        break;
      case zolt::CardValue::bytes:
        additions_.AddBytes(head.name, head.type, head.flags, value);
        break;
      case zolt::CardValue::unfit:
        break;
      case zolt::CardValue::forbidden:
        return false;
    }
  }
  return true;
}

bool CardTextImport::ReadPreferences(std::string const &section) {
  WinPrefs *const store = GetSystemPrefs();
  int32_t const id = store == nullptr ? 0 : store->SectionID(section.c_str(), 0);
  std::string name;
  for (;;) {
    if (!zolt::SkipLine(reader_)) return false;
    char const first = reader_->GetByte();
    reader_->PushBack(first);
    if (first == '[' || !zolt::ReadToken(reader_, '=', &name)) return true;
    SetPreference(section, static_cast<uint32_t>(id), name, zolt::ReadPreference(reader_));
  }
}

void CardTextImport::SetPreference(std::string const &section, uint32_t id, std::string const &name,
                                   std::string const &value) {
  auto const *const legacy = zolt::FindLegacyName(name.c_str(), section.c_str());
  if (legacy == nullptr) {
    if (GetSystemPrefs() == nullptr) return;
    preferences_.Set(id, name, value);
    return;
  }
  std::string const kept = legacy->isEncodingMethod ? zolt::CodecOfEncodingMethod(value) : value;
  preferences_.Set(legacy->newSection, legacy->newName, kept);
}

void CardTextImport::PutPreferences() {
  TYUserPrefs store(PrefLevelCard, nullptr, 0);
  preferences_.PutInto(&store);
  if (store.Count() == 0) return;
  std::unique_ptr<char, decltype(&_DisposeMem)> const blob(store.GetData(), _DisposeMem);
  if (blob == nullptr ||
      card_->AddProp(zolt::kCardPrefsProperty, PropertyData, PropertyLocal, blob.get(),
                     static_cast<int32_t>(GetMemSize(blob.get()))) == UINT32_MAX) {
    throw std::bad_alloc();
  }
  card_->Recalculate();
  if (!card_->InStep()) throw std::bad_alloc();
}

bool Import(PCardStorage *card, FBasicRead *reader, HeadLines headLines) {
  return reader->AtEnd() == 0 && CardTextImport(card, reader, headLines).Run();
}

}  // namespace

namespace zolt {

bool AddCardText(PCardStorage *card, FBasicRead *reader) {
  return Import(card, reader, HeadLines::kept);
}

int32_t LoadCardText(PCardStorage *card, uint32_t file) {
  FFileRead reader(file);
  int32_t const imported = WithMemory(kCardTextUnread, [&] {
    return int32_t{Import(card, &reader, HeadLines::droppedIfRepeated)};
  });
  return reader.failed() ? kCardTextUnread : imported;
}

}  // namespace zolt

int32_t ImportCard(PCardStorage *card, FBasicRead &reader) {
  return zolt::WithMemory(0, [&] { return int32_t{zolt::AddCardText(card, &reader)}; });
}

int32_t ImportCard(PCardStorage *card, char const *path) {
  return zolt::WithMemory(0, [&] {
    FFileRead reader(path);
    int32_t const imported = ImportCard(card, reader);
    return reader.failed() ? 0 : imported;
  });
}

int32_t ImportCard(PCardStorage *card, void const *data, int32_t size) {
  zolt::ClearFailure();
  FMemoryRead reader(data, size);
  return ImportCard(card, reader);
}

int32_t ImportCardData(PCardStorage *card, void *handle, uint32_t size) {
  return zolt::WithMemory(0, [&] {
    zolt::ScratchFile scratch(zolt::ScratchFile::Stale::refused);
    if (!scratch.good()) return 0;
    uint64_t const known = std::min<uint64_t>(size, GlobalSize(handle));
    bool const written = scratch.Write(GlobalLock(handle), static_cast<uint32_t>(known));
    GlobalUnlock(handle);
    scratch.Close();
    return written ? ImportCard(card, scratch.path()) : 0;
  });
}
