#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/support/raw_hive.h"
#include "tests/tool/background_tool.h"
#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

using nlohmann::json;

class WatchTest : public ToolTest {
 protected:
  static void ExpectLines(BackgroundTool *tool, std::vector<std::string> const &lines) {
    for (std::string const &line : lines) EXPECT_EQ(tool->Out(), line);
  }
};

TEST_F(WatchTest, EachChangeOfAnotherProcessIsALine) {
  BackgroundTool watcher("prefs watch Audio Outer:Inner --count 7");
  ASSERT_EQ(watcher.Err(), "zolt: watching Conferencing:Audio, Outer:Inner");
  Set({"Audio", "Volume", "70", "M\u00fcte", "a\tb"});
  Set({"Chat", "Volume", "1"});
  Set({"Audio", "Volume", "40"});
  EXPECT_EQ(Run("-q prefs unset Audio Volume None").code, 0);
  Set({"-L", "system", "Outer:Inner", "V", "1"});
  Set({"-t", "bytes", "outer:inner", "V", "0x00"});
  ExpectLines(&watcher, {"Conferencing:Audio\tcreated\tVolume\t\t70",
                         "Conferencing:Audio\tcreated\tM\u00fcte\t\ta\\tb",
                         "Conferencing:Audio\tmodified\tVolume\t70\t40",
                         "Conferencing:Audio\tremoved\tVolume\t40", "Outer:Inner\tcreated\tV\t\t1",
                         "Outer:Inner\tcreated\tV"});
  Set({"Audio", "A", "1", "B", "2"});
  EXPECT_EQ(watcher.Out(), "Conferencing:Audio\tcreated\tA\t\t1");
  EXPECT_EQ(watcher.Wait(), 0) << "the count holds within one transaction";
  EXPECT_EQ(watcher.Out(), "");
}

TEST_F(WatchTest, EventsAreObjectsAndALevelChooses) {
  Set({"Audio", "V", "1"});
  BackgroundTool watcher("--json -L user prefs watch Audio --initial --count 3");
  json const initial = json::parse(watcher.Out());
  EXPECT_EQ(initial["change"], "initial");
  EXPECT_EQ(initial["changes"], json::parse(R"([{"name":"V","old":null,"new":"1"}])"));
  Set({"-L", "system", "Audio", "V", "9"});
  EXPECT_EQ(Run("-q prefs unset Audio V").code, 0);
  SetForeign(HKEY_CURRENT_USER, "Long", REG_SZ, std::string(1023, 'x') + '\0');
  Set({"Audio", "Long", "2", "W", "3"});
  json removed = json::parse(watcher.Out());
  std::string time = removed["time"];
  std::ranges::replace_if(
      time, [](char c) { return c >= '0' && c <= '9'; }, 'd');
  EXPECT_EQ(time, "dddd-dd-ddTdd:dd:dd.dddZ");
  removed.erase("time");
  EXPECT_EQ(removed, json::parse(R"({"schema":1,"change":"removed","section":"Conferencing:Audio",
    "id":"0x41554449","level":"user","changes":[{"name":"V","old":"1","new":null}]})"));
  json const modified = json::parse(watcher.Out());
  EXPECT_EQ(modified["changes"][0]["cut"], true);
  EXPECT_EQ(modified["changes"][0]["new"], "2");
  EXPECT_EQ(watcher.Wait(), 0);
  EXPECT_EQ(watcher.Err(), "");
}

TEST_F(WatchTest, CommandsMakeTheSameChangesAgain) {
  BackgroundTool watcher("prefs watch --as-commands --count 6");
  ASSERT_EQ(watcher.Err(), "zolt: watching all sections");
  Set({"Outer:In ner", "--", "it's", "$(x) `y` \"z\"\\", "-n", "-q"});
  Set({"-L", "system", "Audio", "E", ""});
  Set({"-t", "bytes", "Audio", "B", "0x00ff", "Gone", "0x"});
  EXPECT_EQ(Run("-q prefs unset Audio Gone").code, 0);
  std::string const script = home_.path() + "/script";
  {
    std::ofstream file(script);
    for (int i = 0; i < 6; i++) file << watcher.Out() << "\n";
  }
  EXPECT_EQ(watcher.Wait(), 0);
  std::string const list = Run("prefs list -r").out;
  std::string const tool = ZOLT_TOOL;
  TempHome other;
  std::string const command = "PATH=" + tool.substr(0, tool.rfind('/')) + ":$PATH sh " + script;
  EXPECT_EQ(std::system((command + " 2>/dev/null").c_str()), 0);
  EXPECT_EQ(Run("prefs list -r").out, list);
  EXPECT_NE(list.find("it's\t$(x) `y` \"z\"\\\\"), std::string::npos);
  EXPECT_NE(list.find("B\t0x00ff\tbytes"), std::string::npos);
}

TEST_F(WatchTest, ItEndsAsItIsAskedTo) {
  Expect(
      {{"prefs watch Audio --timeout 0.01", 5, "",
        "zolt: watching Conferencing:Audio\n"
        "zolt: Conferencing:Audio: the time to watch is over\n"},
       {"prefs watch Audio Audoi Nowhere --timeout 0.01", 5, "",
        "zolt: Audoi does not exist yet; did you mean Conferencing:Audio?\n"
        "zolt: watching Conferencing:Audio, Audoi, Nowhere\n"
        "zolt: Conferencing:Audio, Audoi, Nowhere: the time to watch is over\n"},
       {"prefs wait Audoi V 1 --timeout 0.01", 5, "",
        "zolt: Audoi does not exist yet; did you mean Conferencing:Audio?\n"
        "zolt: Audoi V: is not 1 in time\n"},
       {"-q prefs watch Audoi --timeout 0.01", 5, "", "zolt: Audoi: the time to watch is over\n"},
       {"prefs watch --initial", 2, "", "zolt: --initial needs a SECTION\n"},
       {"prefs watch --count 0", 2, "", "zolt: --count 0: is no number above 0\n"},
       {"prefs watch --as-commands --json", 2, "", ""}});
  Set({"Audio", "V", "1"});
  std::string const initial = "-q prefs watch Audio --initial";
  EXPECT_EQ(Run(initial, {.output = ToolOutput::fullDevice}).code, 3);
  EXPECT_EQ(Run(initial, {.output = ToolOutput::brokenPipe}).code, -SIGPIPE);
  BackgroundTool idle("prefs watch Audio");
  BackgroundTool ended("prefs watch Audio");
  for (BackgroundTool *const each : {&idle, &ended}) each->Err();
  idle.CloseOutput();
  EXPECT_EQ(idle.Wait(), -SIGPIPE) << "also where nothing is to be written";
  ended.Signal(SIGTERM);
  EXPECT_EQ(ended.Wait(), -SIGTERM);
}

TEST_F(WatchTest, WaitEndsWhenAReaderWouldReadIt) {
  Set({"-L", "system", "Audio", "V", "0x10"});
  Expect({{"prefs wait Audio V 0x10", 0, "", ""},
          {"prefs wait -t num Audio V 16", 0, "", ""},
          {"prefs wait Audio V 16 --timeout 0.01", 5, "",
           "zolt: Conferencing:Audio V: is not 16 in time\n"}});
  BackgroundTool waiter("prefs wait -t bool Audio V on");
  Set({"Audio", "V", "no"});
  Set({"Audio", "V", "true"});
  EXPECT_EQ(waiter.Wait(), 0);
}

TEST_F(WatchTest, ADoctorNamesWhatIsWrong) {
  std::filesystem::permissions(home_.path(), std::filesystem::perms::owner_all);
  EXPECT_EQ(Run("doctor").code, 0) << Run("doctor").out;
  EXPECT_TRUE(std::filesystem::is_empty(home_.path()));
  BackgroundTool watcher("prefs watch");
  watcher.Err();
  ToolResult const sound = Run("doctor");
  EXPECT_EQ(sound.code, 0) << sound.out;
  EXPECT_NE(sound.out.find("\tzolt\tlistening\n"), std::string::npos) << sound.out;
  std::filesystem::permissions(home_.path(), std::filesystem::perms::others_read,
                               std::filesystem::perm_options::add);
  std::ofstream(home_.UserHive()) << "this is no hive";
  // The log would still answer for the first pages.
  for (char const *suffix : {"-wal", "-shm"}) std::filesystem::remove(home_.UserHive() + suffix);
  ToolResult const wrong = Run("--json doctor");
  EXPECT_EQ(wrong.code, 1);
  json const problems = json::parse(wrong.out)["problems"];
  ASSERT_EQ(problems.size(), 2u) << wrong.out;
  EXPECT_EQ(problems[0]["subject"], home_.path());
  EXPECT_EQ(problems[1]["subject"], home_.UserHive());
}

TEST_F(WatchTest, ADoctorReadsAllOfAHive) {
  Line values = {"Audio"};
  for (int i = 0; i < 300; i++) {
    values.push_back("V" + std::to_string(i));
    values.emplace_back(100, 'v');
  }
  Set(values);
  EXPECT_EQ(RawHive(home_.UserHive()).Run("PRAGMA wal_checkpoint(TRUNCATE)"), "0");
  std::string const sound = ContentOf(home_.UserHive());
  EXPECT_EQ(Run("doctor").code, 0);
  // The first pages, which opening looks at, stay.
  for (std::string const table : {"value", "sqlite_autoindex_key_1"}) {
    SCOPED_TRACE(table);
    WriteContent(home_.UserHive(), sound);
    std::string const root =
        RawHive(home_.UserHive())
            .Run("SELECT rootpage FROM sqlite_master WHERE name = '" + table + "'");
    std::string damaged = sound;
    damaged.replace((std::stoul(root) - 1) * 4096, 64, 64, 'x');
    WriteContent(home_.UserHive(), damaged);
    ToolResult const wrong = Run("doctor");
    EXPECT_EQ(wrong.code, 1);
    EXPECT_NE(wrong.out.find("problem\t" + home_.UserHive() + "\tdamaged"), std::string::npos)
        << wrong.out;
  }
}

}  // namespace
}  // namespace zolt::testing
