#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <sstream>
#include <string>
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
    return Run(options + " prefs load -", {.input = text});
  }
  static ToolResult LoadBody(std::string const &body, std::string const &options = "") {
    return Load(kHead + body, options);
  }
  static std::string Dump(std::string const &options = "") {
    ToolResult const result = Run(options + " prefs dump");
    EXPECT_EQ(result.code, 0) << result.err;
    return result.out;
  }
  static std::string Body(std::string const &options = "") {
    std::string const dump = Dump(options);
    EXPECT_TRUE(dump.starts_with(kHead));
    return dump.substr(kHead.size());
  }
};

TEST_F(PreferenceTextTest, EveryByteOfATextAndANameComesBack) {
  std::string bytes;
  for (int byte = 1; byte < 256; byte++) bytes += static_cast<char>(byte);
  Set({"Audio", "V", "x"});
  SetForeign(HKEY_CURRENT_USER, bytes, REG_SZ, bytes + '\0');
  ToolResult const dump = Run("prefs dump Audio");
  std::string const quoted =
      R"("\x01\x02\x03\x04\x05\x06\x07\x08\t\n\x0B\x0C\r\x0E\x0F\x10\x11\x12\x13\x14\x15\x16\x17)"
      R"(\x18\x19\x1A\x1B\x1C\x1D\x1E\x1F !\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVW)"
      R"(XYZ[\\]^_`abcdefghijklmnopqrstuvwxyz{|}~\x7F€\x81‚ƒ„…†‡ˆ‰Š‹Œ\x8DŽ\x8F\x90‘’“”•–—˜™š›œ\x9D)"
      R"(žŸ ¡¢£¤¥¦§¨©ª«¬)"
      "\u00AD"
      R"(®¯°±²³´µ¶·¸¹º»¼½¾¿ÀÁÂÃÄÅÆÇÈÉÊËÌÍÎÏÐÑÒÓÔÕÖ×ØÙÚÛÜÝÞßàáâãäåæçèéêëìíîïðñòóôõö÷øùúûüýþÿ")";
  std::string const nbsp = "\u00A0";
  std::string expected = quoted;
  expected.replace(expected.find("Ÿ ¡") + 2, 1, nbsp);
  EXPECT_EQ(dump.out, kHead + "\n[Conferencing:Audio]\n" + expected + " = " + expected +
                          "\nV = \"x\"\n\nend\n");
  EXPECT_EQ(Run("prefs clear Audio").code, 0);
  EXPECT_EQ(Load(dump.out).code, 0);
  EXPECT_EQ(Run("prefs dump Audio").out, dump.out);
}

TEST_F(PreferenceTextTest, WhatIsNoPlainTextIsBytesWithItsType) {
  Set({"Audio", "V", "x"});
  struct Row {
    char const *name;
    uint32_t type;
    std::string bytes;
    std::string text;
  };
  std::string const longText(256, 'a');
  Row const rows[] = {
      {"a", REG_SZ, "no end", "base64(1) bm8gZW5k"},
      {"b", REG_SZ, std::string("a\0b\0", 4), "base64(1) YQBiAA=="},
      {"c", REG_SZ, "", "base64(1)"},
      {"d", REG_SZ, std::string(1, '\0'), "\"\""},
      {"e", REG_BINARY, "", "base64(3)"},
      {"f", REG_DWORD, "\x01\x02\x03\xFF", "base64(4) AQID/w=="},
      {"g", 0xFFFFFFFF, "~~", "base64(4294967295) fn4="},
      {"h", REG_NONE, "M", "base64(0) TQ=="},
  };
  std::string body = "\n[Conferencing:Audio]\n";
  for (Row const &row : rows) {
    SetForeign(HKEY_CURRENT_USER, row.name, row.type, row.bytes);
    body += std::string(row.name) + " = " + row.text + "\n";
  }
  EXPECT_EQ(Body(), body + "V = \"x\"\n\nend\n");
  SetForeign(HKEY_CURRENT_USER, "z", REG_SZ, longText + '\0');
  std::string const dump = Dump();
  EXPECT_EQ(Run("prefs clear Audio").code, 0);
  EXPECT_EQ(Load(dump).code, 0);
  EXPECT_EQ(Dump(), dump);
}

TEST_F(PreferenceTextTest, TheExampleOfItsPageIsWhatIsWritten) {
  Set({"Audio", "Volume", "70"});
  SetForeign(HKEY_CURRENT_USER, "Mikrofon links", REG_SZ, std::string("\xE9\x81\0", 3));
  EXPECT_EQ(Run("prefs set -t bytes Audio Mask 0x00FF").code, 0);
  std::string const dump = Run("prefs dump Audio").out;
  EXPECT_EQ(dump, ExampleOf("preference_text.md", 0));
  std::string const line = FromHex(ExampleOf("preference_text.md", 1));
  EXPECT_NE(dump.find("\n" + line), std::string::npos) << line;
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
  for (std::string line; std::string const &text : {body}) {
    std::istringstream lines(text);
    while (std::getline(lines, line))
      EXPECT_NE(dumped.find(line + "\n"), std::string::npos) << line;
  }
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
  struct Row {
    std::string text;
    int code;
    char const *error;
  };
  std::string const section = kHead + "[Audio]\nv = \"ok\"\n";
  std::string const tail = "\nend\n";
  std::string const million(1000000, 'a');
  for (Row const &row : {
           Row{"", 4, ": is empty; nothing is written"},
           Row{"zolt-preferences 2\n", 4, ":1:18: is written by a newer version of zolt"},
           Row{"zolt-preferences 1\ncode-page 1250\n", 2, ":2:11: is in code page 1250"},
           Row{"zolt-preferences 1\ncode-page 1252\nstore all\n", 4, ":3:7: is no store"},
           Row{kHead + "v = \"x\"" + tail, 4, ":4:1: stands in no section"},
           Row{section + "  V = \"x\"" + tail, 4, ":6:3: is there twice"},
           Row{section + "unset V" + tail, 4, ":6:7: is there twice"},
           Row{section + "[conferencing:AUDIO]" + tail, 4, ":6:1: is there twice"},
           Row{section + "[A" + tail, 4, ":6:3: ] expected"},
           Row{section + "[A:]" + tail, 4, ":6:4: a name expected"},
           Row{section + "[\"\"]" + tail, 4, ":6:2: a section has a name"},
           Row{section + "[" + std::string(256, 'n') + "]" + tail, 4, ":6:2: a section's name has"},
           Row{section + "[No:Way]" + tail, 2, ":6:1: lies in No, which is neither there nor"},
           Row{section + "section [Lab]\nw = \"\"" + tail, 4, ":7:1: stands behind a section of"},
           Row{section + "w = x" + tail, 4, ":6:5: a text in quotes, or base64(TYPE) expected"},
           Row{section + "w = \"x" + tail, 4, ":6:7: a quote expected"},
           Row{section + "é = \"\\q\"" + tail, 4, ":6:6: no such escape"},
           Row{section + "w = \"\\x0g\"" + tail, 4, ":6:6: no such escape"},
           Row{section + "w = \"\\x00\"" + tail, 4, ":6:6: a text holds no NUL"},
           Row{section + "w = \"Ж\"" + tail, 2, ":6:6: the stores' code page has no Ж"},
           Row{section + "w = \"x\" y" + tail, 4, ":6:9: the end of the line expected"},
           Row{section + "w = \"" + million + "\"" + tail, 2, ":6:5: a text of 1000000 bytes"},
           Row{section + million + tail, 4, ":6:1: a name of a value is too long"},
           Row{section + "w = base64(x) AA==" + tail, 4, ":6:12: the number of a type expected"},
           Row{section + "w = base64(4294967296) AA==" + tail, 4, ":6:12: the number of a type"},
           Row{section + "w = base64(3) AA=" + tail, 4, ":6:15: is no base64"},
           Row{section + "w = base64(3) AB==" + tail, 4, ":6:15: is no base64"},
           Row{section + "w = base64(3) A A=" + tail, 4, ":6:15: is no base64"},
           Row{section + "w = \"\xC3\"" + tail, 4, ":6:6: is no valid UTF-8"},
           Row{section + std::string("w = \"\0\"", 7) + tail, 4,
               ":6:6: a character that is not shown"},
           Row{section + "# \x01" + tail, 4, ":6:3: a character that is not shown"},
           Row{section + "# \u202E" + tail, 4, ":6:3: a character that is not shown"},
           Row{section + "w = \"\u2069\"" + tail, 4, ":6:6: a character that is not shown"},
           Row{section + "end\nw = \"x\"\n", 4, ":7:1: stands behind the end"},
       }) {
    ToolResult const result = Load(row.text);
    EXPECT_EQ(result.code, row.code) << result.err;
    EXPECT_TRUE(result.err.starts_with(std::string("zolt: standard input") + row.error))
        << result.err << "expected " << row.error;
    EXPECT_LT(result.err.size(), 300U);
  }
  EXPECT_EQ(Body(), "\nend\n");
}

TEST_F(PreferenceTextTest, ReplaceRemovesWhatTheFileDoesNotNameAndUndoBringsItBack) {
  Set({"Audio", "Volume", "70", "Mute", "No", "Other", "1"});
  Set({"Lab", "kept", "x"});
  std::string const before = Dump();
  std::string const text =
      "[Audio]\nVolume = \"40\"\nMute = \"No\"\nNew = \"n\"\nsection [Lab]\nend\n";
  EXPECT_EQ(LoadBody(text, "-n --exit-code").code, 1);
  EXPECT_EQ(RunTool({"prefs", "load", "--replace", "-"}, {.input = kHead + text}).err,
            "zolt: would remove 1 value that standard input does not name, which needs a yes; use "
            "-y, or -n to "
            "see it\n");
  EXPECT_EQ(Dump(), before);
  std::string const undo = Path("undo");
  ToolResult const done =
      RunTool({"-y", "prefs", "load", "--replace", "--undo", undo, "-"}, {.input = kHead + text});
  EXPECT_EQ(done.code, 0);
  EXPECT_EQ(done.err, "zolt: user store: 2 values written, 1 removed\n");
  EXPECT_EQ(Body(),
            "\n[Conferencing:Audio]\nMute = \"No\"\nNew = \"n\"\nVolume = \"40\"\n\n[Lab]\n"
            "kept = \"x\"\n\nend\n");
  EXPECT_EQ(ContentOf(undo), kHead +
                                 "\n[Conferencing:Audio]\nVolume = \"70\"\nunset New\n"
                                 "Other = \"1\"\n\nend\n");
  EXPECT_EQ(RunTool({"-y", "prefs", "load", "--undo", undo, undo}).code, 2);
  std::string const bare = kHead + "[Audio]\nVolume = \"40\"\nend\n";
  EXPECT_EQ(RunTool({"prefs", "load", "--undo", undo, "-"}, {.input = bare}).code, 0);
  EXPECT_EQ(RunTool({"prefs", "load", undo}).code, 0) << "what changes nothing leaves the way back";
  EXPECT_EQ(Dump(), before);
  EXPECT_EQ(RunTool({"prefs", "load", "--undo", undo, "-"}, {.input = bare}).code, 2);
}

TEST_F(PreferenceTextTest, DiffSaysWhatLoadWouldChangeAndPatchMakesIt) {
  Set({"Audio", "Volume", "70", "Old", "1", "Same", "s"});
  std::string const text =
      kHead + "[Audio]\nVolume = \"40\"\nunset Old\nSame = \"s\"\nNew = base64(3) AA==\nend\n";
  ToolSetting const setting{.input = text};
  ToolResult const diff = Run("prefs diff -", setting);
  EXPECT_EQ(diff.code, 1);
  EXPECT_EQ(diff.out,
            "Conferencing:Audio\tmodified\tVolume\t70\t40\n"
            "Conferencing:Audio\tremoved\tOld\t1\n"
            "Conferencing:Audio\tcreated\tNew\t\t0x00\n");
  std::string const patch = Run("prefs diff --patch -", setting).out;
  EXPECT_EQ(patch, kHead +
                       "\n[Conferencing:Audio]\nVolume = \"40\"\nunset Old\n"
                       "New = base64(3) AA==\n\nend\n");
  EXPECT_EQ(Load(patch).code, 0);
  ToolResult const none = Run("prefs diff -", setting);
  EXPECT_EQ(none.code, 0);
  EXPECT_EQ(none.out, "");
}

TEST_F(PreferenceTextTest, DumpLeavesOutAndStandsAlone) {
  Set({"Audio", "Volume", "70", "Recent1", "a", "Recent2", "b"});
  Set({"Lab:Deep:Er", "v", "x"});
  Set({"Lab:Deep", "Recent", "x"});
  EXPECT_EQ(Body(),
            "\n[Conferencing:Audio]\nRecent1 = \"a\"\nRecent2 = \"b\"\nVolume = \"70\"\n\n[Lab]\n"
            "\n[Lab:Deep]\nRecent = \"x\"\n\n[Lab:Deep:Er]\nv = \"x\"\n\nend\n");
  EXPECT_EQ(Run("prefs dump Lab:Deep --exclude *:recent*").out,
            kHead + "\nsection [Lab]\n\nsection [Lab:Deep]\n\n[Lab:Deep:Er]\nv = \"x\"\n\nend\n");
  EXPECT_EQ(Run("prefs dump --exclude lab --exclude *Recent?").out,
            kHead + "\n[Conferencing:Audio]\nVolume = \"70\"\n\nend\n");
  EXPECT_EQ(Run("prefs dump Lab --exclude audio:x --exclude lab:*").err,
            "zolt: --exclude audio:x matches nothing\n");
  EXPECT_EQ(Run("prefs dump --exclude audio:rec* --exclude lab").out,
            kHead + "\n[Conferencing:Audio]\nVolume = \"70\"\n\nend\n");
  EXPECT_EQ(Run("prefs dump Nowhere").code, 1);
  EXPECT_EQ(Run("prefs dump", {.output = ToolOutput::fullDevice}).code, 3);
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
  std::string const text = kHead + "section [Only]\nend\n";
  EXPECT_EQ(Run("prefs diff -", {.input = text}).out, "Only\tcreated\n");
  EXPECT_EQ(Run("--json prefs diff -", {.input = text}).out,
            "[{\"schema\":1,\"section\":\"Only\",\"id\":\"0x94C4E4F5\",\"name\":\"\","
            "\"level\":\"user\",\"kind\":\"section\",\"changed\":true}]\n");
  EXPECT_EQ(Load(text, "-n").err,
            "Only: made (not written)\nzolt: user store: 1 section would be made\n");
  EXPECT_EQ(Load(text).err, "zolt: user store: 1 section made\n");
  EXPECT_EQ(Load(text).err, "zolt: user store: unchanged\n");
}

TEST_F(PreferenceTextTest, ALoadThatFailsLeavesNoSectionAndTheOldWayBack) {
  Set({"Audio", "Volume", "70"});
  std::string const text = kHead + "[Audio]\nVolume = \"40\"\n[Lab]\nX = \"1\"\n[Lab:In]\n";
  std::string const undo = Path("undo");
  WriteContent(undo, "from before");
  ToolSetting const good = {.input = text + "Y = \"2\"\nend\n"};
  WriteContent(Path("large"), text + "Y = base64(3) " + std::string(2'000'000, 'A') + "\nend\n");
  EXPECT_EQ(RunTool({"prefs", "load", "--undo", Path("none/undo"), "-"}, good).code, 3);
  {
    FullDisk const limit(1'000'000);
    EXPECT_EQ(RunTool({"-y", "prefs", "load", "--undo", undo, Path("large")}).code, 3);
  }
  EXPECT_EQ(RunTool({"prefs", "set", "Lab", "X", "1", "--if", "other"}).code, 1);
  auto const made = [](char const *level) {
    return RunTool({"-L", level, "prefs", "dump"}).out.find("Lab") != std::string::npos;
  };
  for (char const *const level : {"user", "system", "shared-user"})
    EXPECT_FALSE(made(level)) << level;
  EXPECT_EQ(ContentOf(undo), "from before");
  EXPECT_EQ(RunTool({"-y", "prefs", "load", "--undo", undo, "-"}, good).code, 0);
  for (char const *const level : {"user", "system", "shared-user"})
    EXPECT_TRUE(made(level)) << level;
}

TEST_F(PreferenceTextTest, UndoHasTheSpellingThatWasStored) {
  Set({"Audio", "Volume", "70"});
  std::string const before = Dump();
  std::string const undo = Path("undo");
  EXPECT_EQ(RunTool({"prefs", "load", "--undo", undo, "-"},
                    {.input = kHead + "[audio]\nunset VOLUME\nend\n"})
                .code,
            0);
  EXPECT_EQ(RunTool({"prefs", "load", undo}).code, 0);
  EXPECT_EQ(Dump(), before);
}

TEST_F(PreferenceTextTest, LoadGoesToTheStoreOfTheFileOrTheOneAskedFor) {
  std::string const text =
      "zolt-preferences 1\ncode-page 1252\nstore shared-system\n[Audio]\nv = \"x\"\nend\n";
  EXPECT_EQ(Load(text).err, "zolt: shared-system store: 1 value written\n");
  EXPECT_EQ(Load(text, "-L user").err, "zolt: user store: 1 value written\n");
  EXPECT_EQ(Load(text, "-L user").err, "zolt: user store: unchanged\n");
}

TEST_F(PreferenceTextTest, SectionsWhoseNamesRunIntoTheSameIdStayApart) {
  std::string const body = "\n[A]\n\n[A:BC]\nv = \"1\"\n\n[AB]\n\n[AB:C]\nv = \"2\"\n\nend\n";
  EXPECT_EQ(LoadBody(body).code, 0);
  EXPECT_EQ(Body(), body);
}

TEST_F(PreferenceTextTest, ClearRemovesValuesAndWithRThoseBelow) {
  Set({"Lab", "v", "1", "w", "2"});
  Set({"Lab:Deep", "v", "1"});
  EXPECT_EQ(Run("prefs clear Lab").err, "zolt: user store: 2 values removed\n");
  EXPECT_EQ(Body(), "\n[Lab]\n\n[Lab:Deep]\nv = \"1\"\n\nend\n");
  EXPECT_EQ(Run("prefs clear Lab -r --json").out,
            "[{\"schema\":1,\"section\":\"Lab:Deep\",\"id\":\"0x146151C4\",\"name\":\"v\","
            "\"level\":\"user\",\"old\":\"1\",\"new\":null,\"changed\":true}]\n");
  EXPECT_EQ(Run("prefs clear Lab -r").err, "zolt: user store: unchanged\n");
  EXPECT_EQ(Run("prefs clear Nowhere").code, 1);
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
    ASSERT_EQ(
        RegSetValueExA(key, name.c_str(), 0, type, reinterpret_cast<uint8_t const *>(data.data()),
                       static_cast<uint32_t>(data.size())),
        0);
  }
  for (size_t i = depth == 0 ? 0 : upTo(3); i-- > 0;) {
    std::string const name = RandomBytes(random, 1 + (upTo(3) == 0 ? upTo(254) : upTo(8)), 1);
    HKEY below = 0;
    ASSERT_EQ(RegCreateKeyA(key, name.c_str(), &below), 0);
    FillAtRandom(below, random, depth - 1);
    RegCloseKey(below);
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
