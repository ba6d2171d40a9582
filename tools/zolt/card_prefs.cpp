#include <algorithm>
#include <optional>

#include "tools/zolt/card_preferences.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/change.h"
#include "tools/zolt/documents.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/section_names.h"
#include "tools/zolt/table.h"
#include "tools/zolt/text.h"
#include "tools/zolt/value_type.h"

namespace zolt::tool {

namespace {

// A longer name is stored cut, and not found again.
constexpr size_t kLongestName = 31;

using Operands = std::span<std::string_view const>;

TYUserPrefs *StoreOf(CallCard *card) {
  return static_cast<TYUserPrefs *>(card->Prefs());
}

class ValueReader {
 public:
  explicit ValueReader(TYUserPrefs *store) : store_(store) {
    // The blob has every value whole, so it bounds each.
    char *const blob = store->GetData();
    if (blob == nullptr) throw std::bad_alloc();
    buffer_.resize(GetMemSize(blob) + 1);
    _DisposeMem(blob);
  }

  std::optional<std::string> Of(uint32_t section, std::string const &name) {
    if (store_->GetStr(section, name.c_str(), buffer_.data()) == 0) return std::nullopt;
    return buffer_.c_str();
  }

 private:
  TYUserPrefs *store_;
  std::string buffer_;
};

std::string NewName(std::string_view operand) {
  std::string name = ValueName(operand);
  if (name.size() > kLongestName) {
    Refuse(std::string(operand), "a card keeps names of up to 31 bytes");
  }
  return name;
}

StoredValue Stored(std::optional<std::string> const &text) {
  return text ? StoredValue{Kind::text, *text} : StoredValue{};
}

class CardPrefs {
 public:
  explicit CardPrefs(Call const &call)
      : call_(call),
        operands_(call.operands.subspan(2)),
        edited_(EditedOf(call)),
        card_(edited_ ? nullptr : LoadCard(call, call.operands[0])),
        store_(StoreOf(edited_ ? edited_->card() : card_.get())),
        values_(store_) {}

  int List() {
    std::vector<CardPreference> const preferences = PreferencesOf(card_.get());
    if (call_.settings.json) {
      call_.out.Write(PreferencesDocument(preferences));
      return kDone;
    }
    Table table(call_.settings, call_.out, 3);
    for (CardPreference const &each : preferences)
      table.Add({each.section, ToUtf8(each.name), ToUtf8(each.value)});
    table.Finish();
    return kDone;
  }

  int Get() {
    Need(2, 2);
    SectionPath const path = SectionPath::FromOperand(operands_[0]);
    std::string const name = ValueName(operands_[1]);
    std::optional<std::string> const value = values_.Of(Id(path), name);
    if (!value) {
      std::vector<std::string> names;
      for (CardPreference const &each : PreferencesOf(card_.get())) names.push_back(each.name);
      throw ToolError(kNo, "absent", Subject(path, name), "the card has no such value",
                      DidYouMean(name, names));
    }
    if (call_.settings.json) {
      call_.out.Write(PreferencesDocument({{path.Text(), name, *value}}));
    } else {
      call_.out.Write(call_.settings.nul ? ToUtf8(*value) + '\0' : Escape(ToUtf8(*value)) + '\n');
    }
    return kDone;
  }

  int Set() {
    if (operands_.size() < 3 || operands_.size() % 2 == 0) Need(3, 3);
    SectionPath const path = SectionPath::FromOperand(operands_[0]);
    ValueType const type = TypeFrom(call_.arguments);
    if (type == ValueType::bytes) Refuse("-t bytes", "a card keeps texts only");
    std::vector<Change> changes;
    for (size_t i = 1; i < operands_.size(); i += 2) {
      std::string const name = NewName(operands_[i]);
      StoredValue value = ParseValue(type, operands_[i + 1]);
      changes.push_back({name, Stored(values_.Of(Id(path), name)), std::move(value)});
    }
    return Write(path, changes);
  }

  int Unset() {
    Need(2, kAnyNumber);
    SectionPath const path = SectionPath::FromOperand(operands_[0]);
    std::vector<Change> changes;
    for (std::string_view const operand : operands_.subspan(1)) {
      std::string const name = ValueName(operand);
      changes.push_back({name, Stored(values_.Of(Id(path), name)), {}});
    }
    return Write(path, changes);
  }

 private:
  static std::unique_ptr<EditedCard> EditedOf(Call const &call) {
    bool const writes = call.operands[1] == "set" || call.operands[1] == "unset";
    return writes ? std::make_unique<EditedCard>(call, call.operands[0]) : nullptr;
  }

  void Need(size_t least, size_t most) const {
    if (operands_.size() >= least && operands_.size() <= most) return;
    Refuse("", "card prefs " + std::string(call_.operands[1]) + " takes other operands",
           "see zolt help card prefs");
  }

  static uint32_t Id(SectionPath const &path) { return static_cast<uint32_t>(path.id()); }

  int Write(SectionPath const &path, std::vector<Change> const &changes) {
    bool const any = std::ranges::any_of(changes, &Change::changes);
    if (any && !call_.settings.dryRun) {
      for (Change const &change : changes) {
        if (!change.changes()) continue;
        if (change.after.kind == Kind::absent) {
          store_->Remove(Id(path), change.name.c_str());
        } else {
          store_->SetStr(Id(path), change.name.c_str(), change.after.data.c_str());
        }
      }
      edited_->Save();
    }
    return ReportChanges(path, changes, call_.settings, call_.out);
  }

  Call const &call_;
  Operands operands_;
  std::unique_ptr<EditedCard> edited_;  // if the verb writes
  std::unique_ptr<CallCard> card_;      // if it only reads
  TYUserPrefs *store_;
  ValueReader values_;  // as they stand before a change
};

int Prefs(Call const &call) {
  PrepareLibrary(call.arguments, call.settings);
  CardPrefs prefs(call);
  std::string_view const verb = call.operands[1];
  if (verb == "list") return prefs.List();
  if (verb == "get") return prefs.Get();
  if (verb == "set") return prefs.Set();
  if (verb == "unset") return prefs.Unset();
  Refuse(std::string(verb), "no such command", "it is list, get, set or unset");
}

}  // namespace

std::vector<CardPreference> PreferencesOf(CallCard *card) {
  std::vector<CardPreference> preferences;
  TYUserPrefs *const store = StoreOf(card);
  ValueReader values(store);
  SectionNames names({});
  uint32_t section = 0;
  uint32_t last = 0;
  std::string shown;
  for (int32_t i = 0; char const *name = store->GetIndexedName(i, &section); i++) {
    // Those of a section stand together, and to look for its name takes a while.
    if (i == 0 || section != last) {
      std::optional<SectionPath> const path = names.Find(static_cast<int32_t>(section));
      shown = path ? path->Text() : IdText(static_cast<int32_t>(section));
      last = section;
    }
    preferences.push_back({shown, name, values.Of(section, name).value_or("")});
  }
  return preferences;
}

Verb const kCardPrefs = {
    .group = "card",
    .name = "prefs",
    .operands = "FILE list|get SECTION NAME|set SECTION NAME VALUE...|unset SECTION NAME...",
    .summary = "the preferences that a card carries",
    .options = {OptionId::type},
    .least = 2,
    .most = kAnyNumber,
    .run = Prefs,
    .description =
        "A card can override preferences of its user. These are texts, with names of up to 31\n"
        "bytes; -t num and -t bool check as zolt prefs set does.",
    .examples =
        "  zolt card prefs anna.card list\n"
        "  zolt card prefs anna.card set Audio Volume 40\n",
};

}  // namespace zolt::tool
