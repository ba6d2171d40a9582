#include "tools/zolt/documents.h"

#include <cstdio>
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
  char id[16];
  std::snprintf(id, sizeof id, "0x%08X", static_cast<uint32_t>(path.id()));
  Json head;
  head["schema"] = kSchema;
  head["section"] = path.Text();
  head["id"] = id;
  head["name"] = ToUtf8(name);
  return head;
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

}  // namespace

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
