#include "tools/zolt/card_source.h"

#include <optional>

#include "tools/zolt/book.h"
#include "tools/zolt/card_blob.h"
#include "tools/zolt/card_damage.h"
#include "tools/zolt/card_property.h"
#include "tools/zolt/card_text_loss.h"
#include "tools/zolt/confirm.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/library_session.h"

namespace zolt::tool {

namespace {

constexpr size_t kLongestPath = 255;

void CheckPath(std::string const &path) {
  if (path.empty()) Refuse("", "names no file");
  if (path.size() > kLongestPath) Refuse(path, "a card's path has at most 255 bytes");
}

// For the name "-", which stands for standard input elsewhere.
std::string PathOf(std::string_view operand) {
  return operand == "-" ? "./-" : std::string(operand);
}

enum class Need { anything, readable, sound };

// The first damage that is in the way; none if there is no such.
std::optional<ToolError> ErrorOf(std::string const &bytes, std::string const &path, Need need) {
  for (CardDamage const &damage : DamageOf(bytes)) {
    if (need != Need::sound && !damage.lost) continue;
    bool const any = !damage.place.empty();
    return ToolError(kDamaged, "damaged", any ? path + ":" + damage.place : path, damage.what,
                     any ? "zolt card check tells all" : "");
  }
  return std::nullopt;
}

void DropDamagedPreferences(CallCard *card) {
  uint32_t const index = card->FindProp(kCardPrefsProperty, 0, 0, 0, nullptr);
  std::vector<CardProperty> const properties = PropertiesOf(card);
  if (index >= properties.size()) return;
  CardBlob rest("");
  CardBlob(properties[index].value).CopyTo(&rest);
  char *const blob = rest.Count() == 0 ? nullptr : rest.GetData();
  if (blob == nullptr) {
    card->DeleteProp(index);
  } else {
    card->SetPropA(index, kCardPrefsProperty, PropertyData, PropertyLocal, blob,
                   static_cast<int32_t>(GetMemSize(blob)));
    _DisposeMem(blob);
  }
  card->Recalculate();
}

std::unique_ptr<CallCard> Load(Call const &call, std::string const &path, Need need) {
  CheckPath(path);
  std::string const bytes = ReadPlainFile(path);
  if (!IsCardFile(bytes)) NeedSectionNames(call);
  std::optional<ToolError> const damage = ErrorOf(bytes, path, need);
  if (damage && (need != Need::anything || !IsCard(bytes))) throw *damage;
  auto card = std::make_unique<CallCard>(CardFormatNone);
  card->SetName(path.c_str());
  int32_t const failure = TryWithin(call.settings.wait, [&card] {
    card->Load();
    return ZOLTLastFailure(nullptr, 0);
  });
  if (failure != 0) throw FileFailure(path);
  if (!damage) return card;
  DropDamagedPreferences(card.get());
  if (card->PropCount() == 0) throw *damage;
  Confirm("keep only what can be read of " + path + ", which is damaged", call.settings);
  return card;
}

}  // namespace

ToolError FileFailure(std::string const &path) {
  ToolError failure = StoreFailure(path);
  if (failure.code == kLocked) failure.hint = "it is open in another program";
  return failure;
}

void NeedSectionNames(Call const &call) {
  // Until the process ends, whose end the library notices by itself.
  static LibrarySession const *session = nullptr;
  if (session != nullptr) return;
  PrepareLibrary(call.arguments, call.settings);
  session = new LibrarySession;
}

std::unique_ptr<CallCard> LoadCard(Call const &call, std::string_view operand) {
  return Load(call, PathOf(operand), Need::readable);
}

std::unique_ptr<CallCard> LoadRestOfCard(Call const &call, std::string_view operand) {
  return Load(call, PathOf(operand), Need::anything);
}

EditedCard::EditedCard(Call const &call, std::string_view operand)
    : call_(call),
      lock_(PathOf(operand), call.settings.wait),
      card_(Load(call, PathOf(operand), Need::sound)) {}

void EditedCard::Save() {
  if (card_->Format() == CardFormatText) ConfirmLossInText(card_.get(), call_.settings);
  int32_t const failed =
      TryWithin(call_.settings.wait, [this] { return card_->SaveCard() == 0 ? -1 : 0; });
  if (failed != 0) throw FileFailure(card_->GetName());
}

void SaveCardAs(CallCard *card, int32_t format, std::string const &path, uint32_t wait) {
  CheckPath(path);
  int32_t const failed =
      TryWithin(wait, [&] { return card->SaveCardAs(format, path.c_str()) == 0 ? -1 : 0; });
  if (failed != 0) throw FileFailure(path);
}

VCardProfile ProfileOption(Arguments const &arguments) {
  if (!arguments.Has(OptionId::profile)) return VCard3;
  std::string_view const word = arguments.Value(OptionId::profile);
  if (word == "classic") return VCardClassic;
  if (word == "3.0") return VCard3;
  if (word == "4.0") return VCard4;
  Refuse("--profile " + std::string(word), "no such profile", "it is classic, 3.0 or 4.0");
}

void SaveVCard(CallCard *card, VCardProfile profile, std::string const &path, uint32_t wait) {
  int32_t const failed = TryWithin(wait, [&] {
    return ExportVCardAs(card, path.c_str(), profile, card->GetKey()) == 0 ? -1 : 0;
  });
  if (failed != 0) throw FileFailure(path);
}

}  // namespace zolt::tool
