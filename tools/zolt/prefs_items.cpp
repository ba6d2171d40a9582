#include <algorithm>
#include <charconv>
#include <functional>
#include <limits>
#include <optional>

#include "tools/zolt/chain_read.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/store_update.h"
#include "tools/zolt/table.h"
#include "tools/zolt/text.h"
#include "tools/zolt/text_update.h"
#include "tools/zolt/value_type.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

// What a client builds the names of items in.
constexpr size_t kLongestItemName = 255;
constexpr std::string_view kSpace = " \t\n\v\f\r";

std::string_view SkipSpace(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(kSpace), text.size()));
}

struct List {
  SectionPath path;
  std::string name;  // in the code page of the stores

  bool HasName(size_t index) const {
    return name.size() + std::to_string(index).size() <= kLongestItemName;
  }

  std::string ItemName(size_t index) const {
    std::string item = name + std::to_string(index);
    if (item.size() > kLongestItemName) Refuse(ToUtf8(item), "the name of an item is too long");
    return item;
  }

  // The index in the name of a value, as a client that trims the list reads it: white space in
  // the list's name is any there, or none.
  std::optional<int64_t> IndexIn(std::string_view value) const {
    for (char const c : name) {
      if (kSpace.find(c) != std::string_view::npos) {
        value = SkipSpace(value);
      } else if (value.starts_with(c)) {
        value.remove_prefix(1);
      } else {
        return std::nullopt;
      }
    }
    value = SkipSpace(value);
    if (value.starts_with('+') && !value.starts_with("+-")) value.remove_prefix(1);
    int64_t index = 0;
    auto const result = std::from_chars(value.data(), value.data() + value.size(), index);
    if (result.ec == std::errc::invalid_argument) return std::nullopt;
    bool const far = result.ec == std::errc::result_out_of_range;
    return far && !value.starts_with('-') ? std::numeric_limits<int64_t>::max() : index;
  }
};

// The items of the store itself, up to the first index without a value or with too long a name.
std::vector<RawValue> StoredItems(List const &list, HKEY key) {
  std::vector<RawValue> items;
  while (list.HasName(items.size())) {
    MaybeRaw raw = ReadRaw(key, list.ItemName(items.size()));
    if (!raw) break;
    items.push_back(std::move(*raw));
  }
  return items;
}

// Where else on the chain there is such a list.
std::string Elsewhere(List const &list, std::vector<SectionKey> const &keys) {
  for (SectionKey const &key : keys) {
    if (ReadRaw(key.key(), list.ItemName(0)))
      return "-L " + std::string(key.level().name) + " has one";
  }
  return "";
}

int Show(List const &list, Call const &call) {
  std::vector<SectionKey> const keys = OpenAlong(ReadLevels(call.settings), list.path);
  if (!Exists(list.path, keys)) FailWithoutSection(ReadLevels(call.settings), list.path);
  size_t const count = StoredItems(list, keys.front().key()).size();
  if (count == 0) {
    throw ToolError(kNo, "absent", Subject(list.path, list.name), "no such list",
                    Elsewhere(list, keys));
  }
  std::vector<Entry> entries;
  for (size_t i = 0; i < count; i++) {
    std::string name = list.ItemName(i);
    std::vector<Holding> const holdings = ReadHoldings(keys, name);
    if (Holding const *const answer = Answer(holdings)) {
      entries.push_back({list.path, std::move(name), answer->level, answer->value});
    }
  }
  if (call.settings.json) {
    call.out.Write(EntriesDocument(entries));
    return kDone;
  }
  Table table(call.settings, call.out, 2);
  for (size_t i = 0; i < entries.size(); i++)
    table.Add({std::to_string(i), Column(entries[i].value, call.out.terminal())});
  table.Finish();
  return kDone;
}

struct Edit {
  std::vector<size_t> remove;  // from the last to the first
  std::vector<StoredValue> add;
};

Edit EditFrom(Arguments const &arguments) {
  Edit edit;
  ValueType const type = TypeFrom(arguments);
  for (std::string_view const value : arguments.Values(OptionId::add))
    edit.add.push_back(ParseValue(type, value));
  for (std::string_view const word : arguments.Values(OptionId::remove)) {
    size_t index = 0;
    auto const result = std::from_chars(word.data(), word.data() + word.size(), index);
    if (result.ec != std::errc() || result.ptr != word.data() + word.size()) {
      Refuse("--remove " + std::string(word), "is no number of an item", "they count from 0");
    }
    edit.remove.push_back(index);
  }
  std::ranges::sort(edit.remove, std::greater());
  edit.remove.erase(std::unique(edit.remove.begin(), edit.remove.end()), edit.remove.end());
  return edit;
}

std::vector<RawValue> Edited(std::vector<RawValue> items, Edit const &edit, List const &list) {
  for (size_t const index : edit.remove) {
    if (index >= items.size()) {
      throw ToolError(kNo, "absent", Subject(list.path, list.name),
                      "has no item " + std::to_string(index),
                      "it has " + std::to_string(items.size()));
    }
    items.erase(items.begin() + static_cast<ptrdiff_t>(index));
  }
  for (StoredValue const &value : edit.add) items.push_back(*RawOf(value));
  return items;
}

StoreUpdate Look(Level const &level, List const &list, Edit const &edit) {
  SectionKey const key(level, list.path, SectionKey::Role::first);
  std::vector<RawValue> const before = StoredItems(list, key.key());
  std::vector<RawValue> const after = Edited(before, edit, list);
  SectionUpdate section{list.path, {}};
  for (size_t i = 0; i < std::max(before.size(), after.size()); i++) {
    ValueUpdate item{list.ItemName(i), {}, {}};
    if (i < before.size()) item.before = before[i];
    if (i < after.size()) item.after = after[i];
    if (item.changes()) section.values.push_back(std::move(item));
  }
  // What lies behind a gap would join a list that grows.
  auto const count = static_cast<int64_t>(std::max(before.size(), after.size()));
  for (std::string const &name : key.ValueNames()) {
    if (list.IndexIn(name).value_or(-1) < count) continue;
    MaybeRaw const raw = ReadRaw(key.key(), name);
    if (raw && raw->type == REG_SZ) section.values.push_back({name, raw, {}});
  }
  StoreUpdate update;
  if (!section.values.empty()) update.sections.push_back(std::move(section));
  return update;
}

int Items(Call const &call) {
  List const list{SectionPath::FromOperand(call.operands[0]), ValueName(call.operands[1])};
  Edit const edit = EditFrom(call.arguments);
  PrepareLibrary(call.arguments, call.settings);
  if (edit.remove.empty() && edit.add.empty()) return Show(list, call);
  Level const &level = *call.settings.level;
  auto const look = [&] { return Look(level, list, edit); };
  StoreUpdate update = look();
  if (!call.settings.dryRun && !update.sections.empty()) {
    SayWhoseStore(call.settings, level);
    SectionPath const *const paths[] = {&list.path};
    SayMissingSections(paths, kIsNew, call.settings);
    update = WriteUpdate(level, paths, look);
  }
  return ReportUpdate(update, level, call);
}

}  // namespace

Verb const kPrefsItems = {
    .group = "prefs",
    .name = "items",
    .operands = "SECTION LIST",
    .summary = "the items of an indexed list",
    .options = {OptionId::add, OptionId::remove, OptionId::type},
    .least = 2,
    .most = 2,
    .run = Items,
    .description =
        "A list is the values LIST0, LIST1, LIST2 and so on of a section, up to the first that is\n"
        "missing. Prints number and value of each. --add puts a value at the end, --remove takes\n"
        "one out and moves those behind it up. Both may be given several times; numbers are those\n"
        "before the call. All is one transaction, and takes away what lies behind a gap, as\n"
        "programs do that write the list.",
    .examples =
        "  zolt prefs items Conferencing Recent\n"
        "  zolt prefs items Conferencing Recent --add anna@example.org\n"
        "  zolt prefs items Conferencing Recent --remove 0\n",
};

}  // namespace zolt::tool
