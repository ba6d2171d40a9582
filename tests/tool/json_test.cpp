#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

using nlohmann::json;

class JsonTest : public ToolTest {
 protected:
  static json Document(std::string const &line) {
    ToolResult const result = Run("--json " + line);
    EXPECT_EQ(result.code, 0) << line;
    EXPECT_EQ(result.err, "") << line;
    return json::parse(result.out);
  }
};

TEST_F(JsonTest, AValueIsOneObject) {
  Set({"Audio", "Volume", "70"});
  EXPECT_EQ(Run("--json prefs get Audio Volume").out,
            R"({"schema":1,"section":"Conferencing:Audio","id":"0x41554449","name":"Volume",)"
            R"("level":"user","kind":"text","value":"70"})"
            "\n");
  EXPECT_EQ(Document("prefs get Audio None --default \u00e9"), json::parse(R"({"schema":1,
    "section":"Conferencing:Audio","id":"0x41554449","name":"None","level":null,"kind":"text",
    "value":"é"})"));
}

TEST_F(JsonTest, BytesAreBase64AndTextsUtf8) {
  Set({"Audio", "A", "\x01\t\"\u20ac", "B", "\xC2\x81"});
  for (std::string const bytes : {"0x", "0x00", "0x00ff", "0x00ff80", "0x00ff8010"})
    Set({"-t", "bytes", "Audio", bytes, bytes});
  SetForeign(HKEY_CURRENT_USER, "Long", REG_SZ, std::string(300, 'x'));
  json const expected = json::parse(R"([["A","text","\u0001\t\"\u20ac"],["B","text","\u0081"],
    ["0x","bytes",""],["0x00","bytes","AA=="],["0x00ff","bytes","AP8="],
    ["0x00ff80","bytes","AP+A"],["0x00ff8010","bytes","AP+AEA=="]])");
  json const list = Document("prefs list Audio");
  ASSERT_EQ(list.size(), 8u);
  for (size_t i = 0; i < expected.size(); i++) {
    EXPECT_EQ(list[i]["name"], expected[i][0]);
    EXPECT_EQ(list[i]["kind"], expected[i][1]);
    EXPECT_EQ(list[i][expected[i][1] == "text" ? "value" : "base64"], expected[i][2]);
  }
  EXPECT_EQ(list[7]["kind"], "unreadable");
  EXPECT_EQ(Document("prefs get Audio 0x00ff")["base64"], "AP8=");
}

TEST_F(JsonTest, ChangesAndStores) {
  Set({"-L", "system", "Audio", "V", "1"});
  Set({"-t", "bytes", "Audio", "V", "0x00"});
  EXPECT_EQ(Document("prefs explain Audio V")["stores"], json::parse(R"([
    {"level":"user","kind":"bytes","base64":"AA==","answers":false,"answersBytes":true},
    {"level":"system","kind":"text","value":"1","answers":true,"answersBytes":false}])"));
  json const changes = Document("prefs set Audio V 2 W 3");
  ASSERT_EQ(changes.size(), 2u);
  EXPECT_EQ(changes[0]["old"], json::parse(R"({"kind":"bytes","base64":"AA=="})"));
  EXPECT_EQ(changes[1], json::parse(R"({"schema":1,"section":"Conferencing:Audio",
    "id":"0x41554449","name":"W","level":"user","old":null,"new":"3","changed":true})"));
  EXPECT_EQ(Document("prefs set Audio W 3")[0]["changed"], false);
  EXPECT_EQ(Document("prefs unset Audio W")[0]["new"], nullptr);
}

TEST_F(JsonTest, AnErrorIsOneObject) {
  Set({"Audio", "Volume", "70"});
  ToolResult result = Run("--json prefs get Audio Volum");
  EXPECT_EQ(result.code, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(json::parse(result.err), json::parse(R"({"error":{"code":1,"kind":"absent",
    "subject":"Conferencing:Audio Volum","message":"no such value",
    "hint":"did you mean Volume?"}})"));
  result = Run("prefs get --jsn --json");
  EXPECT_EQ(result.code, 2);
  EXPECT_EQ(json::parse(result.err)["error"]["kind"], "usage");
}

// A section that is only read is not registered, and still has the id that registering gives it.
TEST_F(JsonTest, TheIdIsTheLibrarys) {
  std::string const outer(70, 'o');
  Set({outer + ":Inner:Most", "V", "1"});
  Set({"Audio:Inner", "V", "1"});
  Set({"Conferencing:Inner", "V", "1"});
  InitZOLT();
  InitPrefs(nullptr);
  WinPrefs *const prefs = GetUserPrefs();
  auto const idOf = [prefs](std::vector<std::string> const &names) {
    int32_t id = 0;
    for (std::string const &name : names) {
      int32_t const parent = id;
      id = name == "Conferencing" ? 0x674F4E47 : prefs->GetIDFromString(name.c_str(), parent);
      if (id != 0x674F4E47) prefs->RegisterSection(id, name.c_str());
      if (parent != 0) prefs->RegisterSection(id, parent, name.c_str(), 0);
    }
    char text[16];
    snprintf(text, sizeof text, "0x%08X", static_cast<uint32_t>(id));
    return std::string(text);
  };
  EXPECT_EQ(Document("prefs get " + outer + ":Inner:Most V")["id"], idOf({outer, "Inner", "Most"}));
  EXPECT_EQ(Document("prefs get Audio:Inner V")["id"], idOf({"Audio", "Inner"}));
  EXPECT_EQ(Document("prefs get Conferencing:Inner V")["id"], idOf({"Conferencing", "Inner"}));
  DisposeZOLT();
}

}  // namespace
}  // namespace zolt::testing
