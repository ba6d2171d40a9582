#include "tools/zolt/card_documents.h"

#include <nlohmann/json.hpp>

#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kSchema = 1;

std::string Line(Json const &document) {
  return document.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json PropertyObject(CardProperty const &property) {
  Json object;
  object["name"] = ToUtf8(property.name);
  object["type"] = TypeText(property.type);
  object["flags"] = FlagNames(property.flags);
  if (std::optional<std::string> const text = TextOfProperty(property)) {
    object["value"] = *text;
  } else {
    object["base64"] = Base64(property.value);
  }
  return object;
}

// 24 bytes of any kind; 32 of 0 are none.
std::string KeyText(CallCard *card) {
  constexpr size_t kWhole = 32;
  constexpr size_t kShown = 24;
  std::string_view const key(card->GetKey(), kWhole);
  bool const none = key.find_first_not_of('\0') == key.npos;
  return none ? "" : Hex(key.substr(0, kShown)).substr(2);
}

Json PreferencesArray(std::vector<CardPreference> const &preferences) {
  Json list = Json::array();
  for (CardPreference const &preference : preferences) {
    list.push_back({{"section", preference.section},
                    {"name", ToUtf8(preference.name)},
                    {"value", ToUtf8(preference.value)}});
  }
  return list;
}

Json Side(std::optional<CardProperty> const &property) {
  return property ? PropertyObject(*property) : Json();
}

}  // namespace

std::string CardDocument(CallCard *card, std::vector<CardPreference> const &preferences) {
  Json document;
  document["schema"] = kSchema;
  document["file"] = card->GetName();
  document["format"] = card->Format() == CardFormatBinary ? "card" : "text";
  document["key"] = KeyText(card);
  document["version"] = card->GetVersion();
  document["properties"] = Json::array();
  for (CardProperty const &property : PropertiesOf(card)) {
    if (property.name != kCardPrefsProperty)
      document["properties"].push_back(PropertyObject(property));
  }
  document["preferences"] = PreferencesArray(preferences);
  return Line(document);
}

std::string PropertiesDocument(std::vector<CardProperty> const &properties) {
  Json list = Json::array();
  for (CardProperty const &property : properties) {
    if (property.name != kCardPrefsProperty) list.push_back(PropertyObject(property));
  }
  return list.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string JsonText(std::string const &utf8) {
  return Json(utf8).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string PropertyDocument(CardProperty const &property) {
  Json document;
  document["schema"] = kSchema;
  document.update(PropertyObject(property));
  return Line(document);
}

std::string CardChangesDocument(std::vector<CardChange> const &changes) {
  Json list = Json::array();
  for (CardChange const &change : changes) {
    list.push_back({{"schema", kSchema},
                    {"old", Side(change.before)},
                    {"new", Side(change.after)},
                    {"changed", change.changes()}});
  }
  return Line(list);
}

std::string PreferencesDocument(std::vector<CardPreference> const &preferences) {
  return Line(PreferencesArray(preferences));
}

std::string DamageDocument(std::string const &path, std::vector<CardDamage> const &damage) {
  Json document;
  document["schema"] = kSchema;
  document["file"] = path;
  document["damage"] = Json::array();
  for (CardDamage const &each : damage) {
    document["damage"].push_back({{"place", each.place}, {"what", each.what}, {"lost", each.lost}});
  }
  return Line(document);
}

}  // namespace zolt::tool
