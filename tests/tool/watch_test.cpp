#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "tests/support/raw_hive.h"
#include "tests/tool/background_tool.h"
#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

using nlohmann::json;

using WatchTest = ToolTest;

TEST_F(WatchTest, EachChangeOfAnotherProcessIsALine) {
  BackgroundTool watcher("prefs watch Audio Outer:Inner --count 10");
  ASSERT_EQ(watcher.Err(), "zolt: watching Conferencing:Audio, Outer:Inner");
  Set({"Audio", "Volume", "70", "M\u00fcte", "a\tb"});
  Set({"Chat", "Volume", "1"});
  Set({"Audio", "Volume", "40"});
  Set({"-L", "system", "Outer:Inner", "V", "1"});
  Set({"-t", "bytes", "outer:inner", "V", "0x00"});
  Expect(
      {{"-q prefs unset Audio Volume None"},
       {"-q prefs load -",
        0,
        "",
        "",
        {"zolt-preferences 1\ncode-page 1252\nstore user\n[Audio]\nNew = \"n\"\nunset M\u00fcte\n"
         "[Outer:Inner]\nx = \"y\"\nend\n"}}});
  for (char const *line :
       {"Conferencing:Audio\tcreated\tVolume\t\t70",
        "Conferencing:Audio\tcreated\tM\u00fcte\t\ta\\tb",
        "Conferencing:Audio\tmodified\tVolume\t70\t40", "Outer:Inner\tcreated\tV\t\t1",
        "Outer:Inner\tcreated\tV", "Conferencing:Audio\tremoved\tVolume\t40",
        "Conferencing:Audio\tremoved\tM\u00fcte\ta\\tb", "Conferencing:Audio\tcreated\tNew\t\tn",
        "Outer:Inner\tcreated\tx\t\ty"}) {
    EXPECT_EQ(watcher.Out(), line);
  }
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
  SetForeign("Long", REG_SZ, std::string(1023, 'x') + '\0');
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
  std::string script;
  for (int i = 0; i < 6; i++) script += watcher.Out() + "\n";
  WriteContent("script", script);
  EXPECT_EQ(watcher.Wait(), 0);
  std::string const list = Run("prefs list -r").out;
  std::string const tool = ZOLT_TOOL;
  TempHome other;
  std::string const command =
      "PATH=" + tool.substr(0, tool.rfind('/')) + ":$PATH sh script 2>/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(Run("prefs list -r").out, list);
  EXPECT_TRUE(Has(list, "it's\t$(x) `y` \"z\"\\\\"));
  EXPECT_TRUE(Has(list, "B\t0x00ff\tbytes"));
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
       {"prefs watch --as-commands --json", 2},
       {"-q prefs set Audio V 1"},
       {"-q prefs watch Audio --initial", 3, "", "", {.output = ToolOutput::fullDevice}},
       {"-q prefs watch Audio --initial", -SIGPIPE, "", "", {.output = ToolOutput::brokenPipe}}});
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
  Expect({{"prefs wait Audio V 0x10", 0},
          {"prefs wait -t num Audio V 16", 0},
          {"prefs wait Audio V 16 --timeout 0.01", 5, "",
           "zolt: Conferencing:Audio V: is not 16 in time\n"}});
  BackgroundTool waiter("prefs wait -t bool Audio V on");
  Set({"Audio", "V", "no"});
  Set({"Audio", "V", "true"});
  EXPECT_EQ(waiter.Wait(), 0);
}

TEST_F(WatchTest, ADoctorNamesWhatIsWrong) {
  namespace fs = std::filesystem;
  fs::permissions(home_.path(), fs::perms::owner_all);
  EXPECT_EQ(Run("doctor").code, 0) << Run("doctor").out;
  EXPECT_TRUE(fs::is_empty(home_.path()));
  BackgroundTool watcher("prefs watch");
  watcher.Err();
  ToolResult const sound = Run("doctor");
  EXPECT_EQ(sound.code, 0);
  EXPECT_TRUE(Has(sound.out, "\tzolt\tlistening\n"));
  fs::permissions(home_.path(), fs::perms::others_read, fs::perm_options::add);
  WriteContent(home_.UserHive(), "this is no hive");
  // The log would still answer for the first pages.
  for (char const *suffix : {"-wal", "-shm"}) fs::remove(home_.UserHive() + suffix);
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
    EXPECT_TRUE(Has(wrong.out, "problem\t" + home_.UserHive() + "\tdamaged"));
  }
}

}  // namespace
}  // namespace zolt::testing
