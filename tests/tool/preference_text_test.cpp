#include <algorithm>
#include <atomic>
#include <random>
#include <sstream>
#include <thread>
#include <tuple>

#include "tests/support/format_page.h"
#include "tests/support/full_disk.h"
#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

std::string const kHead = "zolt-preferences 1\ncode-page 1252\nstore user\n";

class PreferenceTextTest : public ToolTest {
 protected:
  static ToolResult Load(std::string const &text, std::string const &options = "") {
    return Run("prefs load - " + options, {.input = text});
  }
  static ToolResult LoadBody(std::string const &body, std::string const &options = "") {
    return Load(kHead + body, options);
  }
  static std::string Dump(std::string const &options = "") {
    ToolResult const result = Run("prefs dump " + options);
    EXPECT_EQ(result.code, 0) << result.err;
    return result.out;
  }
  static std::string Body() {
    std::string const dump = Dump();
    EXPECT_TRUE(dump.starts_with(kHead));
    return dump.substr(kHead.size());
  }
};

TEST_F(PreferenceTextTest, EveryByteOfATextAndANameComesBack) {
  std::string bytes;
  for (int byte = 1; byte < 256; byte++) bytes += static_cast<char>(byte);
  Set({"Audio", "V", "x"});
  SetForeign(bytes, REG_SZ, bytes + '\0');
  std::string const quoted =
      R"("\x01\x02\x03\x04\x05\x06\x07\x08\t\n\x0B\x0C\r\x0E\x0F\x10\x11\x12\x13\x14\x15\x16\x17)"
      R"(\x18\x19\x1A\x1B\x1C\x1D\x1E\x1F !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVW)"
      R"(XYZ[\\]^_`abcdefghijklmnopqrstuvwxyz{|}~\x7F€\x81‚ƒ„…†‡ˆ‰Š‹Œ\x8DŽ\x8F\x90‘’“”•–—˜™š›œ\x9D)"
      "žŸ\u00A0¡¢£¤¥¦§¨©ª«¬\u00AD"
      R"(®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞßàáâãäåæçèéêëìíîïðñòóôõö÷øùúûüýþÿ")";
  std::string const dump = Dump();
  EXPECT_EQ(dump,
            kHead + "\n[Conferencing:Audio]\n" + quoted + " = " + quoted + "\nV = \"x\"\n\nend\n");
  EXPECT_EQ(Run("prefs clear Audio").code, 0);
  EXPECT_EQ(Load(dump).code, 0);
  EXPECT_EQ(Dump(), dump);
}

TEST_F(PreferenceTextTest, WhatIsNoPlainTextIsBytesWithItsType) {
  Set({"Audio", "V", "x"});
  std::tuple<char const *, uint32_t, std::string, std::string> const rows[] = {
      {"a", REG_SZ, "no end", "base64(1) bm8gZW5k"},
      {"b", REG_SZ, std::string("a\0b\0", 4), "base64(1) YQBiAA=="},
      {"c", REG_SZ, "", "base64(1)"},
      {"d", REG_SZ, std::string(1, '\0'), "\"\""},
      {"e", REG_BINARY, "", "base64(3)"},
      {"f", REG_DWORD, "\x01\x02\x03\xFF", "base64(4) AQID/w=="},
      {"g", 0xFFFFFFFF, "~~", "base64(4294967295) fn4="},
      {"h", REG_NONE, "M", "base64(0) TQ=="}};
  std::string body = "\n[Conferencing:Audio]\n";
  for (auto const &[name, type, bytes, text] : rows) {
    SetForeign(name, type, bytes);
    body += std::string(name) + " = " + text + "\n";
  }
  EXPECT_EQ(Body(), body + "V = \"x\"\n\nend\n");
}

TEST_F(PreferenceTextTest, TheExampleOfItsPageIsWhatIsWritten) {
  Set({"Audio", "Volume", "70"});
  SetForeign("Mikrofon links", REG_SZ, std::string("\xE9\x81\0", 3));
  Set({"-t", "bytes", "Audio", "Mask", "0x00FF"});
  EXPECT_EQ(Dump(), ExampleOf("preference_text.md"));
  EXPECT_TRUE(Has(Dump(), "\n" + FromHex(ExampleOf("preference_text.md", 1))));
}

TEST_F(PreferenceTextTest, NamesAreQuotedWhereTheyMustBe) {
  std::string const body =
      "\n[:]\n\"\" = \"unnamed\"\n\"#\" = \"\"\n\"[a]\" = \"\"\n\"a b\" = \"\"\n"
      "\"end\" = \"\"\nGröße = \"\"\n\"section\" = \"\"\n\"unset\" = \"\"\n"
      "\n[:Audio]\nv = \"at the top\"\n"
      "\n[\"a:b\"]\n\n[\"a:b\":\"x\\\\y\"]\nunsettled = \"\"\n\n[Conferencing:Audio]\nv = \"\"\n"
      "\n[end]\n\nend\n";
  EXPECT_EQ(LoadBody(body).code, 0);
  std::string const dumped = Body();
  EXPECT_EQ(dumped.size(), body.size());
  std::istringstream lines(body);
  for (std::string line; std::getline(lines, line);) EXPECT_TRUE(Has(dumped, line + "\n"));
  EXPECT_EQ(LoadBody(dumped).err, "zolt: user store: unchanged\n");
  EXPECT_EQ(Run("prefs get :Audio v").out, "at the top\n");
}

TEST_F(PreferenceTextTest, CutAnywhereItIsRefusedAndNothingIsWritten) {
  std::string const whole = kHead +
                            "\n# a comment\n[Audio]\nVolume = \"70\"\nIcon = base64(3) AAEC\n"
                            "unset Old\n\nsection [Lab]\n[Lab:Deep]\n\"n\\x01\" = \"v\"\n\nend\n";
  for (size_t size = 0; size < whole.size(); size++) {
    ToolResult const result = Load(whole.substr(0, size));
    ASSERT_EQ(result.code, 4) << size << ": " << result.err;
    ASSERT_TRUE(result.err.starts_with("zolt: standard input:")) << result.err;
  }
  EXPECT_NE(Run("prefs list Lab").code, 0);
  EXPECT_EQ(Load(whole).code, 0);
  EXPECT_EQ(Body(),
            "\n[Conferencing:Audio]\nIcon = base64(3) AAEC\nVolume = \"70\"\n"
            "\n[Lab]\n\n[Lab:Deep]\n\"n\\x01\" = \"v\"\n\nend\n");
}

TEST_F(PreferenceTextTest, WrongTextIsRefusedAtItsPlace) {
  std::string const section = kHead + "[Audio]\nv = \"ok\"\n";
  std::string const tail = "\nend\n";
  std::string const million(1000000, 'a');
  std::tuple<std::string, int, std::string> const rows[] = {
      {"", 4, ": is empty; nothing is written"},
      {"zolt-preferences 2\n", 4, ":1:18: is written by a newer version of zolt"},
      {"zolt-preferences 1\ncode-page 1250\n", 2, ":2:11: is in code page 1250"},
      {"zolt-preferences 1\ncode-page 1252\nstore all\n", 4, ":3:7: is no store"},
      {kHead + "v = \"x\"" + tail, 4, ":4:1: stands in no section"},
      {section + "  V = \"x\"" + tail, 4, ":6:3: is there twice"},
      {section + "unset V" + tail, 4, ":6:7: is there twice"},
      {section + "[conferencing:AUDIO]" + tail, 4, ":6:1: is there twice"},
      {section + "[A" + tail, 4, ":6:3: ] expected"},
      {section + "[A:]" + tail, 4, ":6:4: a name expected"},
      {section + "[\"\"]" + tail, 4, ":6:2: a section has a name"},
      {section + "[" + std::string(256, 'n') + "]" + tail, 4, ":6:2: a section's name has"},
      {section + "[No:Way]" + tail, 2, ":6:1: lies in No, which is neither there nor"},
      {section + "section [Lab]\nw = \"\"" + tail, 4, ":7:1: stands behind a section of"},
      {section + "w = x" + tail, 4, ":6:5: a text in quotes, or base64(TYPE) expected"},
      {section + "w = \"x" + tail, 4, ":6:7: a quote expected"},
      {section + "é = \"\\q\"" + tail, 4, ":6:6: no such escape"},
      {section + "w = \"\\x0g\"" + tail, 4, ":6:6: no such escape"},
      {section + "w = \"\\x00\"" + tail, 4, ":6:6: a text holds no NUL"},
      {section + "w = \"Ж\"" + tail, 2, ":6:6: the stores' code page has no Ж"},
      {section + "w = \"x\" y" + tail, 4, ":6:9: the end of the line expected"},
      {section + "w = \"" + million + "\"" + tail, 2, ":6:5: a text of 1000000 bytes"},
      {section + million + tail, 4, ":6:1: a name of a value is too long"},
      {section + "w = base64(x) AA==" + tail, 4, ":6:12: the number of a type expected"},
      {section + "w = base64(4294967296) AA==" + tail, 4, ":6:12: the number of a type"},
      {section + "w = base64(3) AA=" + tail, 4, ":6:15: is no base64"},
      {section + "w = base64(3) AB==" + tail, 4, ":6:15: is no base64"},
      {section + "w = base64(3) A A=" + tail, 4, ":6:15: is no base64"},
      {section + "w = \"\xC3\"" + tail, 4, ":6:6: is no valid UTF-8"},
      {section + std::string("w = \"\0\"", 7) + tail, 4, ":6:6: a character that is not shown"},
      {section + "# \x01" + tail, 4, ":6:3: a character that is not shown"},
      {section + "# \u202E" + tail, 4, ":6:3: a character that is not shown"},
      {section + "w = \"\u2069\"" + tail, 4, ":6:6: a character that is not shown"},
      {section + "end\nw = \"x\"\n", 4, ":7:1: stands behind the end"}};
  for (auto const &[text, code, error] : rows) {
    ToolResult const result = Load(text);
    EXPECT_EQ(result.code, code) << result.err;
    EXPECT_TRUE(result.err.starts_with("zolt: standard input" + error)) << result.err << error;
    EXPECT_LT(result.err.size(), 300U);
  }
  EXPECT_EQ(Body(), "\nend\n");
}

TEST_F(PreferenceTextTest, ReplaceRemovesWhatTheFileDoesNotNameAndUndoBringsItBack) {
  Set({"Audio", "Volume", "70", "Mute", "No", "Other", "1"});
  Set({"Lab", "kept", "x"});
  std::string const before = Dump();
  ToolSetting const text = {kHead +
                            "[Audio]\nVolume = \"40\"\nMute = \"No\"\nNew = \"n\"\n"
                            "section [Lab]\nend\n"};
  ToolSetting const bare = {kHead + "[audio]\nVOLUME = \"40\"\nend\n"};
  Expect(
      {{"-n --exit-code prefs load -", 1, "", "", text},
       {"prefs load --replace -", 2, "",
        "zolt: would remove 1 value that standard input does not name, which needs a yes; use -y, "
        "or "
        "-n to see it\n",
        text},
       {"prefs dump", 0, before},
       {"-y prefs load --replace --undo undo -", 0, "",
        "zolt: user store: 2 values written, 1 removed\n", text},
       {"prefs dump", 0,
        kHead + "\n[Conferencing:Audio]\nMute = \"No\"\nNew = \"n\"\nVolume = \"40\"\n\n[Lab]\n"
                "kept = \"x\"\n\nend\n"}});
  EXPECT_EQ(ContentOf("undo"),
            kHead + "\n[Conferencing:Audio]\nVolume = \"70\"\nunset New\nOther = \"1\"\n\nend\n");
  Expect({{"-y prefs load --undo undo undo", 2},
          // What changes nothing leaves the way back.
          {"-q prefs load --undo undo -", 0, "", "", bare},
          {"-q prefs load undo"},
          {"prefs dump", 0, before},
          {"prefs load --undo undo -", 2, "", "", bare},
          // It has the spelling that was stored.
          {"-q -y prefs load --undo undo -", 0, "", "", {kHead + "[audio]\nunset VOLUME\nend\n"}},
          {"-q prefs load undo"},
          {"prefs dump", 0, before}});
}

TEST_F(PreferenceTextTest, DiffSaysWhatLoadWouldChangeAndPatchMakesIt) {
  Set({"Audio", "Volume", "70", "Old", "1", "Same", "s"});
  ToolSetting const text = {kHead +
                            "[Audio]\nVolume = \"40\"\nunset Old\nSame = \"s\"\n"
                            "New = base64(3) AA==\nend\n"};
  std::string const patch = kHead +
                            "\n[Conferencing:Audio]\nVolume = \"40\"\nunset Old\n"
                            "New = base64(3) AA==\n\nend\n";
  Expect({{"prefs diff -", 1,
           "Conferencing:Audio\tmodified\tVolume\t70\t40\nConferencing:Audio\tremoved\tOld\t1\n"
           "Conferencing:Audio\tcreated\tNew\t\t0x00\n",
           "", text},
          {"prefs diff --patch -", 1, patch, "", text},
          {"-q prefs load -", 0, "", "", {patch}},
          {"prefs diff -", 0, "", "", text}});
}

TEST_F(PreferenceTextTest, DumpLeavesOutAndStandsAlone) {
  Set({"Audio", "Volume", "70", "Recent1", "a", "Recent2", "b"});
  Set({"Lab:Deep:Er", "v", "x"});
  Set({"Lab:Deep", "Recent", "x"});
  EXPECT_EQ(Body(),
            "\n[Conferencing:Audio]\nRecent1 = \"a\"\nRecent2 = \"b\"\nVolume = \"70\"\n\n[Lab]\n"
            "\n[Lab:Deep]\nRecent = \"x\"\n\n[Lab:Deep:Er]\nv = \"x\"\n\nend\n");
  std::string const audio = kHead + "\n[Conferencing:Audio]\nVolume = \"70\"\n\nend\n";
  Expect({{"prefs dump Lab:Deep --exclude *:recent*", 0,
           kHead + "\nsection [Lab]\n\nsection [Lab:Deep]\n\n[Lab:Deep:Er]\nv = \"x\"\n\nend\n"},
          {"prefs dump --exclude lab --exclude *Recent?", 0, audio},
          {"prefs dump --exclude audio:rec* --exclude lab", 0, audio},
          {"prefs dump Nowhere", 1},
          {"prefs dump", 3, "", "", {.output = ToolOutput::fullDevice}}});
  EXPECT_EQ(Run("prefs dump Lab --exclude audio:x --exclude lab:*").err,
            "zolt: --exclude audio:x matches nothing\n");
}

TEST_F(PreferenceTextTest, ADumpIsOfOneMoment) {
  auto const text = [](char const *value) {
    std::string all = kHead + "[Bulk]\n";
    for (int i = 0; i < 100; i++) all += "v" + std::to_string(i) + " = \"" + value + "\"\n";
    return all + "end\n";
  };
  Load(text("a"));
  std::atomic<bool> stop = false;
  std::thread writer([&] {
    for (int i = 0; !stop; i++) Load(text(i % 2 == 0 ? "b" : "a"));
  });
  for (int i = 0; i < 20; i++) {
    std::string const dump = Body();
    EXPECT_NE(dump.find("\"a\"") == std::string::npos, dump.find("\"b\"") == std::string::npos);
  }
  stop = true;
  writer.join();
}

TEST_F(PreferenceTextTest, ASectionThatIsMadeIsAChange) {
  ToolSetting const text = {kHead + "section [Only]\nend\n"};
  Expect({{"prefs diff -", 1, "Only\tcreated\n", "", text},
          {"--json prefs diff -", 1,
           "[{\"schema\":1,\"section\":\"Only\",\"id\":\"0x94C4E4F5\",\"name\":\"\","
           "\"level\":\"user\",\"kind\":\"section\",\"changed\":true}]\n",
           "", text},
          {"-n prefs load -", 0, "",
           "Only: made (not written)\nzolt: user store: 1 section would be made\n", text},
          {"prefs load -", 0, "", "zolt: user store: 1 section made\n", text},
          {"prefs load -", 0, "", "zolt: user store: unchanged\n", text}});
}

TEST_F(PreferenceTextTest, ALoadThatFailsLeavesNoSectionAndTheOldWayBack) {
  Set({"Audio", "Volume", "70"});
  std::string const text = kHead + "[Audio]\nVolume = \"40\"\n[Lab]\nX = \"1\"\n[Lab:In]\n";
  WriteContent("undo", "from before");
  ToolSetting const good = {text + "Y = \"2\"\nend\n"};
  WriteContent("large", text + "Y = base64(3) " + std::string(2'000'000, 'A') + "\nend\n");
  Expect({{"prefs load --undo none/undo -", 3, "", "", good}});
  {
    FullDisk const limit(1'000'000);
    Expect({{"-y prefs load --undo undo large", 3}});
  }
  Expect({{"prefs set Lab X 1 --if other", 1}});
  auto const levels = [] {
    std::string made;
    for (char const *const level : {"user", "system", "shared-user"})
      if (Dump(std::string("-L ") + level).find("Lab") != std::string::npos) made += level;
    return made;
  };
  EXPECT_EQ(levels(), "");
  EXPECT_EQ(ContentOf("undo"), "from before");
  Expect({{"-q -y prefs load --undo undo -", 0, "", "", good}});
  EXPECT_EQ(levels(), "usersystemshared-user");
}

TEST_F(PreferenceTextTest, LoadGoesToTheStoreOfTheFileOrTheOneAskedFor) {
  ToolSetting const text = {
      "zolt-preferences 1\ncode-page 1252\nstore shared-system\n[Audio]\nv = \"x\"\nend\n"};
  Expect({{"prefs load -", 0, "", "zolt: shared-system store: 1 value written\n", text},
          {"-L user prefs load -", 0, "", "zolt: user store: 1 value written\n", text},
          {"-L user prefs load -", 0, "", "zolt: user store: unchanged\n", text}});
}

TEST_F(PreferenceTextTest, SectionsWhoseNamesRunIntoTheSameIdStayApart) {
  std::string const body = "\n[A]\n\n[A:BC]\nv = \"1\"\n\n[AB]\n\n[AB:C]\nv = \"2\"\n\nend\n";
  EXPECT_EQ(LoadBody(body).code, 0);
  EXPECT_EQ(Body(), body);
}

TEST_F(PreferenceTextTest, ClearRemovesValuesAndWithRThoseBelow) {
  Set({"Lab", "v", "1", "w", "2"});
  Set({"Lab:Deep", "v", "1"});
  Expect({{"prefs clear Lab", 0, "", "zolt: user store: 2 values removed\n"},
          {"prefs dump", 0, kHead + "\n[Lab]\n\n[Lab:Deep]\nv = \"1\"\n\nend\n"},
          {"prefs clear Lab -r --json", 0,
           "[{\"schema\":1,\"section\":\"Lab:Deep\",\"id\":\"0x146151C4\",\"name\":\"v\","
           "\"level\":\"user\",\"old\":\"1\",\"new\":null,\"changed\":true}]\n"},
          {"prefs clear Lab -r", 0, "", "zolt: user store: unchanged\n"},
          {"prefs clear Nowhere", 1}});
}

// Texts of all sizes and bytes, other types, names of all lengths, sections within each other.
std::string RandomBytes(std::mt19937 *random, size_t size, int least) {
  std::uniform_int_distribution<int> byte(least, 255);
  std::string bytes;
  while (bytes.size() < size) bytes += static_cast<char>(byte(*random));
  return bytes;
}

void FillAtRandom(HKEY key, std::mt19937 *random, int depth) {
  auto const upTo = [random](size_t most) {
    return std::uniform_int_distribution<size_t>(0, most)(*random);
  };
  for (size_t i = upTo(6); i-- > 0;) {
    std::string const name = RandomBytes(random, upTo(3) == 0 ? upTo(700) : upTo(12), 1);
    uint32_t const type = upTo(2) == 0 ? static_cast<uint32_t>(upTo(12)) : REG_SZ;
    std::string data = RandomBytes(random, upTo(3) == 0 ? upTo(5000) : upTo(40), upTo(1) == 0);
    if (upTo(4) != 0) data += '\0';
    auto const *const bytes = reinterpret_cast<uint8_t const *>(data.data());
    auto const size = static_cast<uint32_t>(data.size());
    ASSERT_EQ(RegSetValueExA(key, name.c_str(), 0, type, bytes, size), 0);
  }
  for (size_t i = depth == 0 ? 0 : upTo(3); i-- > 0;) {
    std::string const name = RandomBytes(random, 1 + (upTo(3) == 0 ? upTo(254) : upTo(8)), 1);
    Key const below(key, name);
    ASSERT_EQ(below.opened, 0);
    FillAtRandom(below.handle, random, depth - 1);
  }
}

TEST_F(PreferenceTextTest, ADumpOfAnyStoreLoadedIntoAnEmptyHomeDumpsToTheSameBytes) {
  unsigned const seed = std::random_device()();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  int homes = 0;
  for (int round = 0; round < 3; round++) {
    for (auto const &[name, level, root] :
         {std::tuple{"user", PrefLevelUser, HKEY_CURRENT_USER},
          std::tuple{"system", PrefLevelSystem, HKEY_LOCAL_MACHINE},
          std::tuple{"shared-user", PrefLevelSharedUser, HKEY_CURRENT_USER},
          std::tuple{"shared-system", PrefLevelSharedSystem, HKEY_LOCAL_MACHINE}}) {
      std::string const store = std::string("-L ") + name;
      char path[260] = "";
      ZOLTDefaultTree(level, path, sizeof path);
      std::ranges::replace(path, ':', '\\');
      Set({"-L", name, "Audio", "v", "x"});
      HKEY key = 0;
      ASSERT_EQ(RegOpenKeyA(root, path, &key), 0) << path;
      FillAtRandom(key, &random, 3);
      RegCloseKey(key);
      std::string const dump = Dump(store);
      std::string const other = "--home " + Path("other" + std::to_string(homes++)) + " ";
      ToolResult const loaded = Load(dump, other);
      ASSERT_EQ(loaded.code, 0) << loaded.err;
      EXPECT_EQ(Dump(other + store), dump);
    }
  }
}

}  // namespace
}  // namespace zolt::testing
