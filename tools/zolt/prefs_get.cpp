#include <fcntl.h>

#include <cerrno>
#include <optional>

#include "tools/zolt/chain_read.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/text.h"
#include "tools/zolt/value_type.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

struct Wanted {
  SectionPath path;
  std::string name;
  ValueType type;
  std::optional<StoredValue> otherwise;
  std::vector<Level const *> levels;
};

// Asks one store after the other, so that one behind the answer is not even opened.
class Search {
 public:
  explicit Search(Wanted const &wanted) : wanted_(wanted) {}

  // The value that answers the read, or null.
  Entry *Run() {
    for (Level const *const level : wanted_.levels) {
      keys_.emplace_back(*level, wanted_.path,
                         keys_.empty() ? SectionKey::Role::first : SectionKey::Role::fallback);
      Entry entry{wanted_.path, wanted_.name, level, ReadIn(keys_.back().key())};
      if (entry.value.kind == Kind::absent) continue;
      bool const answers = wanted_.type == ValueType::bytes || entry.value.kind == Kind::text;
      if (answers) return &answer_.emplace(std::move(entry));
      if (!other_) other_ = std::move(entry);
    }
    return nullptr;
  }

  // The first value that is there and does not answer.
  Entry const *other() const { return other_ ? &*other_ : nullptr; }
  std::vector<SectionKey> const &keys() const { return keys_; }

 private:
  StoredValue ReadIn(HKEY key) const {
    if (wanted_.type != ValueType::bytes) return ReadValue(key, wanted_.name);
    MaybeRaw raw = ReadRaw(key, wanted_.name);
    return raw ? StoredValue{Kind::bytes, std::move(raw->data)} : StoredValue{};
  }

  Wanted const &wanted_;
  std::vector<SectionKey> keys_;
  std::optional<Entry> answer_;
  std::optional<Entry> other_;
};

// A number or a boolean as a client reads it.
void Interpret(Wanted const &wanted, Entry *entry) {
  StoredValue *value = &entry->value;
  if (wanted.type == ValueType::boolean) value->data = BooleanText(ClientBoolean(value->data));
  if (wanted.type != ValueType::number) return;
  if (std::optional<int32_t> const number = ClientNumber(value->data)) {
    value->data = std::to_string(*number);
  } else if (wanted.otherwise) {
    *value = *wanted.otherwise;
    entry->level = nullptr;
  } else {
    throw ToolError(kNo, "type", Subject(wanted.path, wanted.name),
                    Describe(*value) + " is no number of 32 bits");
  }
}

[[noreturn]] void FailUnreadable(Wanted const &wanted, StoredValue const &held) {
  throw ToolError(kNo, "type", Subject(wanted.path, wanted.name),
                  held.kind == Kind::bytes ? "holds bytes and no text" : "holds " + Describe(held),
                  "use -t bytes");
}

Entry Read(Wanted const &wanted, bool json) {
  Search search(wanted);
  if (Entry *const entry = search.Run()) {
    Interpret(wanted, entry);
    return *entry;
  }
  if (wanted.otherwise) return {wanted.path, wanted.name, nullptr, *wanted.otherwise};
  if (Entry const *const other = search.other()) {
    // A document says of what kind a value is.
    if (json && wanted.type == ValueType::text) return *other;
    FailUnreadable(wanted, other->value);
  }
  if (!Exists(wanted.path, search.keys())) FailWithoutSection(wanted.levels, wanted.path);
  FailWithoutValue(wanted.path, wanted.name, search.keys());
}

void Write(Entry const &entry, Call const &call, Output &out) {
  if (call.settings.json) {
    out.Write(EntryDocument(entry));
  } else if (entry.value.kind == Kind::bytes) {
    out.Write(entry.value.data);
  } else if (call.settings.nul) {
    out.Write(ToUtf8(entry.value.data) + '\0');
  } else {
    out.Write(Escape(ToUtf8(entry.value.data)) + '\n');
  }
}

void WriteToFile(Entry const &entry, Call const &call, std::string const &path) {
  int const file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  if (file < 0) throw SystemFailure(path, errno);
  Output out(file, path);
  Write(entry, call, out);
  out.Finish();
}

int Get(Call const &call) {
  Arguments const &arguments = call.arguments;
  Wanted wanted = {.path = SectionPath::FromOperand(call.operands[0]),
                   .name = ValueName(call.operands[1]),
                   .type = TypeFrom(arguments),
                   .otherwise = {},
                   .levels = {}};
  if (arguments.Has(OptionId::defaultValue)) {
    wanted.otherwise = ParseValue(wanted.type, arguments.Value(OptionId::defaultValue));
  }
  std::string const file(arguments.Value(OptionId::output));
  if (arguments.Has(OptionId::output) && file.empty()) Refuse("-o", "names no file");
  bool const toOut = file.empty() || file == "-";
  bool const shown = wanted.type == ValueType::bytes && !call.settings.json && file.empty();
  if (shown && call.out.terminal()) {
    Refuse(Subject(wanted.path, wanted.name), "bytes are not written to a terminal",
           "use -o FILE, or -o - to do it all the same");
  }
  PrepareLibrary(arguments, call.settings);
  wanted.levels = ReadLevels(call.settings, arguments.Has(OptionId::parentFirst));
  Entry const entry = Read(wanted, call.settings.json);
  if (toOut) {
    Write(entry, call, call.out);
  } else {
    WriteToFile(entry, call, file);
  }
  return kDone;
}

}  // namespace

Verb const kPrefsGet = {
    .group = "prefs",
    .name = "get",
    .operands = "SECTION NAME",
    .summary = "the value that a program would read",
    .options = {OptionId::type, OptionId::defaultValue, OptionId::parentFirst, OptionId::output},
    .least = 2,
    .most = 2,
    .run = Get,
    .description =
        "Prints the value that a program would read: that of the store of -L, or else that of the\n"
        "stores behind it. Ends with 1, and prints nothing, if there is none. A text has one line\n"
        "end behind it, and \\t, \\n, \\\\ and \\xNN in it stand for what would break the line; "
        "-z\n"
        "gives it as it is with a NUL behind it.\n"
        "\n"
        "With -t num a text that is no number is a 1 as well, or gives the default; with -t bool "
        "it\n"
        "prints Yes or No; with -t bytes it writes the bytes of a value of any type, a text's\n"
        "with its NUL.",
    .examples =
        "  zolt prefs get Audio Volume\n"
        "  zolt prefs get -t num --default 50 Audio Volume\n"
        "  zolt prefs get -L system --only Audio Volume\n"
        "  zolt prefs get -t bytes -o ring.wav Audio Ring\n",
};

}  // namespace zolt::tool
