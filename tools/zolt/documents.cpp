#include "tools/zolt/documents.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kSchema = 1;

// What is not UTF-8, such as a path that an error names, is shown with replacement characters.
std::string Line(Json const &document) {
  return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json Head(SectionPath const &path, std::string const &name) {
  Json head;
  head["schema"] = kSchema;
  head["section"] = path.Text();
  head["id"] = IdText(path.id());
  head["name"] = ToUtf8(name);
  return head;
}

// In UTC, to the millisecond.
std::string TimeText(std::chrono::system_clock::time_point time) {
  auto const rest = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch());
  std::time_t const seconds = rest.count() / 1000;
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
  char text[48];
  std::snprintf(text, sizeof text, "%s.%03dZ", date, static_cast<int>(rest.count() % 1000));
  return text;
}

void AddValue(StoredValue const &value, Json *object) {
  (*object)["kind"] = NameOf(value.kind);
  if (value.kind == Kind::absent) return;
  if (value.kind == Kind::bytes) {
    (*object)["base64"] = Base64(value.data);
  } else {
    (*object)["value"] = ToUtf8(value.data);
  }
}

Json EntryObject(Entry const &entry) {
  Json object = Head(entry.section, entry.name);
  object["level"] = entry.level == nullptr ? Json() : Json(entry.level->name);
  if (entry.isSection) {
    object["kind"] = "section";
  } else {
    AddValue(entry.value, &object);
  }
  return object;
}

// In a change a text stands as it is, and anything else as an object that says what it is.
Json Side(StoredValue const &value) {
  if (value.kind == Kind::absent) return {};
  if (value.kind == Kind::text) return ToUtf8(value.data);
  Json object;
  AddValue(value, &object);
  return object;
}

// All bytes of what is no text that a client reads, and their type.
void AddRaw(RawValue const &raw, Json *object) {
  StoredValue const value = Interpreted(raw);
  (*object)["kind"] = NameOf(value.kind);
  if (value.kind == Kind::text && RawOf(value) == raw) {
    (*object)["value"] = ToUtf8(value.data);
  } else {
    (*object)["type"] = raw.type;
    (*object)["base64"] = Base64(raw.data);
  }
}

Json RawSide(MaybeRaw const &raw) {
  Json object;
  if (!raw) return object;
  AddRaw(*raw, &object);
  return object.contains("value") ? object["value"] : object;
}

char const *Separator(bool any) {
  return any ? ",\n" : "[";
}

}  // namespace

std::string IdText(int32_t id) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<uint32_t>(id));
  return text;
}

std::string EntryDocument(Entry const &entry) {
  return Line(EntryObject(entry)) + "\n";
}

std::string EntriesDocument(std::vector<Entry> const &entries) {
  Json list = Json::array();
  for (Entry const &entry : entries) list.push_back(EntryObject(entry));
  return Line(list) + "\n";
}

std::string HoldingsDocument(SectionPath const &path, std::string const &name,
                             std::vector<Holding> const &holdings) {
  Json document = Head(path, name);
  document["stores"] = Json::array();
  for (Holding const &holding : holdings) {
    Json store;
    store["level"] = holding.level->name;
    AddValue(holding.value, &store);
    store["answers"] = holding.answers;
    store["answersBytes"] = holding.answersBytes;
    document["stores"].push_back(std::move(store));
  }
  return Line(document) + "\n";
}

std::string ChangesDocument(SectionPath const &path, Level const &level,
                            std::vector<Change> const &changes) {
  Json list = Json::array();
  for (Change const &change : changes) {
    Json object = Head(path, change.name);
    object["level"] = level.name;
    object["old"] = Side(change.before);
    object["new"] = Side(change.after);
    object["changed"] = change.changes();
    list.push_back(std::move(object));
  }
  return Line(list) + "\n";
}

void ValuesDocument::Add(TextSection const &section, Level const &level) {
  for (TextValue const &value : section.values) {
    Json object = Head(section.path, value.name);
    object["level"] = level.name;
    AddRaw(*value.value, &object);
    out_.Write(Separator(any_) + Line(object));
    any_ = true;
  }
}

void ValuesDocument::Finish() {
  out_.Write(any_ ? "]\n" : "[]\n");
}

void WriteUpdateDocument(StoreUpdate const &update, Level const &level, Output &out) {
  bool any = false;
  for (SectionUpdate const &section : update.sections) {
    if (section.made) {
      Json object = Head(section.path, "");
      object["level"] = level.name;
      object["kind"] = "section";
      object["changed"] = true;
      out.Write(Separator(any) + Line(object));
      any = true;
    }
    for (ValueUpdate const &value : section.values) {
      Json object = Head(section.path, value.name);
      object["level"] = level.name;
      object["old"] = RawSide(value.before);
      object["new"] = RawSide(value.after);
      object["changed"] = true;
      out.Write(Separator(any) + Line(object));
      any = true;
    }
  }
  out.Write(any ? "]\n" : "[]\n");
}

std::string EventDocument(News const &news, std::optional<SectionPath> const &section) {
  Json event;
  event["schema"] = kSchema;
  event["change"] = NameOf(news.kind);
  if (news.kind != NewsKind::gap) {
    Level const *const level = LevelOf(news.level);
    event["section"] = section ? Json(section->Text()) : Json();
    event["id"] = IdText(news.section);
    event["level"] = level == nullptr ? Json() : Json(level->name);
  }
  event["time"] = TimeText(news.time);
  event["changes"] = Json::array();
  for (ValueNews const &value : news.values) {
    Json change;
    change["name"] = ToUtf8(value.name);
    change["old"] = news.kind == NewsKind::created ? Json() : Json(ToUtf8(value.before));
    change["new"] = news.kind == NewsKind::removed ? Json() : Json(ToUtf8(value.after));
    if (value.cut) change["cut"] = true;
    event["changes"].push_back(std::move(change));
  }
  return Line(event) + "\n";
}

std::string InitialDocument(Entry const &entry) {
  Json event;
  event["schema"] = kSchema;
  event["change"] = "initial";
  event["section"] = entry.section.Text();
  event["id"] = IdText(entry.section.id());
  event["level"] = entry.level->name;
  event["time"] = TimeText(std::chrono::system_clock::now());
  Json change;
  change["name"] = ToUtf8(entry.name);
  change["old"] = nullptr;
  change["new"] = Side(entry.value);
  event["changes"].push_back(std::move(change));
  return Line(event) + "\n";
}

std::string ErrorDocument(ToolError const &error) {
  Json document;
  Json &inner = document["error"];
  inner["code"] = static_cast<int>(error.code);
  inner["kind"] = error.kind;
  inner["subject"] = error.subject;
  inner["message"] = error.message;
  inner["hint"] = error.hint;
  return Line(document);
}

}  // namespace zolt::tool
