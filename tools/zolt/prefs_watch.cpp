#include <algorithm>
#include <charconv>

#include "tools/zolt/chain_read.h"
#include "tools/zolt/listener.h"
#include "tools/zolt/section_names.h"
#include "tools/zolt/shell_words.h"
#include "tools/zolt/table.h"
#include "tools/zolt/text.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

std::vector<SectionPath> PathsOf(Call const &call) {
  std::vector<SectionPath> paths;
  for (std::string_view const operand : call.operands)
    paths.push_back(SectionPath::FromOperand(operand));
  return paths;
}

std::optional<uint64_t> LimitOf(Arguments const &arguments) {
  if (!arguments.Has(OptionId::eventCount)) return std::nullopt;
  std::string_view const word = arguments.Value(OptionId::eventCount);
  uint64_t count = 0;
  auto const end = std::from_chars(word.data(), word.data() + word.size(), count);
  if (end.ec != std::errc() || end.ptr != word.data() + word.size() || count == 0) {
    Refuse("--count " + std::string(word), "is no number above 0");
  }
  return count;
}

// A value as it is after a change, or was found at the beginning.
struct Shown {
  std::optional<SectionPath> section;
  int32_t id;
  Level const *level;
  char const *change;
  std::string name;
  std::optional<std::string> before;  // UTF-8, like the next
  std::string after;
  StoredValue value;  // what the store is to hold
  bool cut;

  std::string Section() const { return section ? section->Text() : IdText(id); }
};

class Watch {
 public:
  explicit Watch(Call const &call)
      : call_(call), paths_(PathsOf(call)), names_(paths_), left_(LimitOf(call.arguments)) {}

  int Run() {
    Arguments const &arguments = call_.arguments;
    bool const initial = arguments.Has(OptionId::initial);
    if (initial && paths_.empty()) Refuse("", "--initial needs a SECTION");
    commands_ = arguments.Has(OptionId::asCommands);
    if (commands_ && (call_.settings.json || call_.settings.nul)) {
      Refuse("", "--as-commands writes lines for a shell, without --json and -z");
    }
    Deadline const deadline = DeadlineFrom(arguments);
    PrepareLibrary(arguments, call_.settings);
    Listener listener;
    SayMissing();
    Say("watching " + Subjects());
    if (initial) WriteInitial();
    while (!Done()) {
      std::vector<News> const heard = listener.Next(deadline, call_.out.descriptor());
      if (heard.empty()) EndWithout(deadline);
      for (News const &news : heard) WriteNews(news);
    }
    return kDone;
  }

 private:
  bool Done() const { return left_ && *left_ == 0; }

  std::string Subjects() const {
    std::string text;
    for (SectionPath const &path : paths_) text += (text.empty() ? "" : ", ") + path.Text();
    return text.empty() ? "all sections" : text;
  }

  void Say(std::string const &text) const {
    bool const chatter = !call_.settings.quiet && !call_.settings.json;
    if (chatter) WriteError("zolt: " + Escape(text));
  }

  void SayMissing() const {
    std::vector<SectionPath const *> paths;
    for (SectionPath const &path : paths_) paths.push_back(&path);
    try {
      SayMissingSections(paths, kIsMissing, call_.settings);
    } catch (ToolError const &) {
      // It is only a hint: what cannot be read now can be heard of all the same.
    }
  }

  [[noreturn]] void EndWithout(Deadline deadline) const {
    if (!deadline || *deadline > std::chrono::steady_clock::now()) EndByBrokenPipe();
    throw ToolError(kLocked, "timeout", Subjects(), "the time to watch is over");
  }

  bool Wanted(News const &news) const {
    if (news.kind == NewsKind::gap) return true;
    bool const levelGiven = call_.arguments.Has(OptionId::level);
    if (levelGiven && news.level != call_.settings.level->level) return false;
    return paths_.empty() || std::ranges::any_of(paths_, [&news](SectionPath const &path) {
             return path.id() == news.section;
           });
  }

  void WriteInitial() {
    for (SectionPath const &path : paths_) {
      std::vector<SectionKey> const keys = OpenAlong(ReadLevels(call_.settings), path);
      for (Entry const &entry : ValuesAlong(path, keys)) {
        if (Done()) return;
        if (call_.settings.json) {
          WriteCounted(InitialDocument(entry));
        } else {
          WriteValue({path, path.id(), entry.level, "initial", entry.name, std::nullopt,
                      Column(entry.value, call_.out.terminal()), entry.value, false});
        }
      }
    }
  }

  void WriteNews(News const &news) {
    if (!Wanted(news) || Done()) return;
    if (call_.settings.json) {
      std::optional<SectionPath> section;
      if (news.kind != NewsKind::gap) section = names_.Find(news.section);
      return WriteCounted(EventDocument(news, section));
    }
    if (news.kind == NewsKind::gap) return WriteGap();
    for (ValueNews const &value : news.values) {
      if (Done()) return;
      WriteValue(ShownOf(news, value));
    }
  }

  Shown ShownOf(News const &news, ValueNews const &value) {
    Shown shown = {names_.Find(news.section), news.section, LevelOf(news.level),
                   NameOf(news.kind),         value.name,   ToUtf8(value.before),
                   ToUtf8(value.after),       {},           value.cut};
    if (news.kind == NewsKind::removed) return shown;
    shown.value = {Kind::text, value.after};
    // Who made the change says nothing of what is no text.
    bool const stored = commands_ && value.after.empty() && shown.section && shown.level != nullptr;
    if (stored) {
      SectionKey const key(*shown.level, *shown.section, SectionKey::Role::first);
      StoredValue held = ReadValue(key.key(), value.name);
      if (held.kind == Kind::bytes) shown.value = std::move(held);
    }
    return shown;
  }

  void WriteGap() {
    Say("some changes were lost");
    WriteRow({"gap", "", "", "", ""});
  }

  void WriteValue(Shown const &shown) {
    if (commands_) return WriteCounted(CommandFor(shown));
    if (shown.cut) Say(shown.Section() + " " + ToUtf8(shown.name) + ": cut, the end is not shown");
    WriteRow({shown.Section(), shown.change, ToUtf8(shown.name), shown.before.value_or(""),
              shown.after});
  }

  // A gap in a list of commands is a comment.
  void WriteRow(std::vector<std::string> row) {
    if (commands_) return WriteCounted("# gap: some changes were lost\n");
    Table table(call_.settings, call_.out, 5);
    table.Add(std::move(row));
    table.Finish();
    WriteCounted("");
  }

  std::string CommandFor(Shown const &shown) const {
    bool const tooLong = shown.cut || shown.value.data.size() > kLongestText;
    bool const text = shown.value.kind == Kind::text || shown.value.kind == Kind::unreadable;
    if (!shown.section || shown.level == nullptr || (text && tooLong)) {
      return "# " + Escape(shown.Section() + " " + ToUtf8(shown.name)) + ": cannot be repeated\n";
    }
    std::vector<std::string> words = {"zolt", "prefs",
                                      shown.value.kind == Kind::absent ? "unset" : "set"};
    if (shown.level->level != PrefLevelUser) {
      words.emplace_back("-L");
      words.emplace_back(shown.level->name);
    }
    if (shown.value.kind == Kind::bytes) words.insert(words.end(), {"-t", "bytes"});
    std::vector<std::string> operands = {shown.Section(), ToUtf8(shown.name)};
    if (shown.value.kind != Kind::absent) operands.push_back(Column(shown.value, false));
    if (std::ranges::any_of(operands, [](auto const &each) { return each.starts_with('-'); })) {
      words.emplace_back("--");
    }
    std::ranges::move(operands, std::back_inserter(words));
    return ShellLine(words, call_.out.terminal());
  }

  void WriteCounted(std::string const &text) {
    call_.out.Write(text);
    call_.out.Flush();
    if (left_) --*left_;
  }

  Call const &call_;
  std::vector<SectionPath> paths_;
  SectionNames names_;
  std::optional<uint64_t> left_;
  bool commands_ = false;
};

int RunWatch(Call const &call) {
  return Watch(call).Run();
}

}  // namespace

Verb const kPrefsWatch = {
    .group = "prefs",
    .name = "watch",
    .operands = "[SECTION]...",
    .summary = "each change as it comes, from any program",
    .options = {OptionId::initial, OptionId::eventCount, OptionId::timeout, OptionId::asCommands},
    .least = 0,
    .most = kAnyNumber,
    .run = RunWatch,
    .description =
        "Prints a line for each value that a program changes in the sections, or in any: section,\n"
        "modified, removed or created, name, old and new text, which are empty for a value that\n"
        "is no text. It says that it is watching when it hears; with -L it hears of that store\n"
        "alone. A line `gap` stands where changes were lost: look at everything again. With\n"
        "--json an event is one object a line.\n"
        "\n"
        "In a pipe a tab parts the fields; a shell's read takes two tabs for one, so read what -z\n"
        "writes, five fields for each change and for a gap, each ended by a NUL:\n"
        "  zolt -z prefs watch Audio | while IFS= read -rd '' section && IFS= read -rd '' change "
        "&&\n"
        "    IFS= read -rd '' name && IFS= read -rd '' old && IFS= read -rd '' new; do ...; done\n"
        "\n"
        "--initial prints the values that a program would read now, once it hears. --as-commands\n"
        "prints what makes the same changes again, and a comment for what no command can make.\n"
        "\n"
        "Heard is what programs announce; a write of a program that announces nothing is not.",
    .examples =
        "  zolt prefs watch Audio\n"
        "  zolt prefs watch Audio Chat --count 1 --timeout 10\n"
        "  zolt prefs watch --as-commands > changes.sh\n"
        "  zolt prefs watch --json --initial Audio\n",
};

}  // namespace zolt::tool
