#include "tools/zolt/text_update.h"

#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "tools/zolt/documents.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/section_key.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

void CheckParents(PreferenceText const &text) {
  std::unordered_set<std::string> named;
  for (TextSection const &section : text.sections) named.insert(section.path.Key());
  for (TextSection const &section : text.sections) {
    SectionPath const &path = section.path;
    if (path.standard()) continue;
    SectionPath const parent = path.Above(path.names().size() - 1);
    if (parent.standard() || named.contains(parent.Key())) continue;
    if (SectionKey(*text.level, parent, SectionKey::Role::first).key() != 0) continue;
    Refuse(section.place, "lies in " + parent.Text() + ", which is neither there nor in the file",
           "a line \"section [" + parent.Text() + "]\" before it makes that");
  }
}

void AddUnnamed(TextSection const &section, SectionKey const &key, SectionUpdate *update) {
  std::unordered_set<std::string> named;
  for (TextValue const &value : section.values) named.insert(Folded(value.name));
  for (std::string const &name : key.ValueNames()) {
    if (named.contains(Folded(name))) continue;
    if (MaybeRaw before = ReadRaw(key.key(), name)) {
      update->values.push_back({name, std::move(before), {}, true});
    }
  }
}

void WriteSide(Level const &level, StoreUpdate const &update, MaybeRaw ValueUpdate::*side,
               Output &out) {
  out.Write(TextHead(level));
  for (SectionUpdate const &section : update.sections) {
    TextSection changed{.path = section.path, .onlyThere = section.values.empty()};
    for (ValueUpdate const &value : section.values)
      changed.values.push_back({value.name, value.*side});
    out.Write(TextOf(changed));
  }
  out.Write(TextEnd());
}

// The names of a section as they are stored, by those without case; read when first asked for.
class StoredSpelling {
 public:
  explicit StoredSpelling(SectionKey const &key) : key_(key) {}

  std::string const &Of(std::string const &name) {
    if (!read_) {
      for (std::string &stored : key_.ValueNames()) {
        std::string folded = Folded(stored);
        names_.emplace(std::move(folded), std::move(stored));
      }
      read_ = true;
    }
    auto const found = names_.find(Folded(name));
    return found == names_.end() ? name : found->second;
  }

 private:
  SectionKey const &key_;
  std::unordered_map<std::string, std::string> names_;
  bool read_ = false;
};

std::string Values(size_t count) {
  return std::to_string(count) + (count == 1 ? " value" : " values");
}

std::string Summary(StoreUpdate const &update, Level const &level, bool dryRun) {
  std::string text = std::string(level.name) + " store: ";
  if (!update.any()) return text + "unchanged";
  size_t const made = update.sectionsMade();
  if (update.changes() == 0) {
    return text + std::to_string(made) + (made == 1 ? " section" : " sections") +
           (dryRun ? " would be made" : " made");
  }
  size_t const removed = update.removals();
  size_t const written = update.changes() - removed;
  char const *const would = dryRun ? " would be" : "";
  if (written > 0 || removed == 0) text += Values(written) + would + " written";
  if (removed == 0) return text;
  return text + (written > 0 ? ", " + std::to_string(removed) : Values(removed) + would) +
         " removed";
}

void SayEach(StoreUpdate const &update) {
  for (SectionUpdate const &section : update.sections) {
    if (section.made) WriteError(Escape(section.path.Text() + ": made (not written)"));
    for (ValueUpdate const &value : section.values) {
      WriteError(Escape(Subject(section.path, value.name) + ": " +
                        Describe(Interpreted(value.before)) + " -> " +
                        Describe(Interpreted(value.after)) + " (not written)"));
    }
  }
}

}  // namespace

PreferenceText TextFrom(Call const &call, std::string_view file) {
  std::string const name = file == "-" ? "standard input" : std::string(file);
  PreferenceText text = ReadPreferenceText(ReadInput(file), name);
  if (call.arguments.Has(OptionId::level)) text.level = call.settings.level;
  return text;
}

StoreUpdate UpdateOf(PreferenceText const &text, bool replace, Progress *progress) {
  CheckParents(text);
  StoreUpdate update;
  for (TextSection const &section : text.sections) {
    SectionKey const key(*text.level, section.path, SectionKey::Role::first);
    StoredSpelling spelling(key);
    SectionUpdate changed{.path = section.path, .values = {}};
    for (TextValue const &value : section.values) {
      if (progress != nullptr) progress->Step();
      MaybeRaw before = ReadRaw(key.key(), value.name);
      if (before == value.value) continue;
      std::string const &name = value.value ? value.name : spelling.Of(value.name);
      changed.values.push_back({name, std::move(before), value.value});
    }
    if (replace && !section.onlyThere) AddUnnamed(section, key, &changed);
    changed.made = key.key() == 0 && !section.path.standard();
    if (changed.made || !changed.values.empty()) update.sections.push_back(std::move(changed));
  }
  return update;
}

void WritePatch(Level const &level, StoreUpdate const &update, Output &out) {
  WriteSide(level, update, &ValueUpdate::after, out);
}

void WriteUndo(Level const &level, StoreUpdate const &update, Output &out) {
  WriteSide(level, update, &ValueUpdate::before, out);
}

int ReportUpdate(StoreUpdate const &update, Level const &level, Call const &call) {
  Settings const &settings = call.settings;
  if (settings.json) {
    WriteUpdateDocument(update, level, call.out);
  } else if (!settings.quiet) {
    if (settings.dryRun) SayEach(update);
    WriteError("zolt: " + Summary(update, level, settings.dryRun));
  }
  return settings.dryRun && settings.exitCode && update.any() ? kNo : kDone;
}

}  // namespace zolt::tool
