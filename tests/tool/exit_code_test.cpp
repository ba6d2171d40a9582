#include <unistd.h>

#include <csignal>
#include <thread>

#include "tests/support/child.h"
#include "tests/support/raw_hive.h"
#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

class ExitCodeTest : public ToolTest {
 protected:
  // The verb's code, one line that names the file, and nothing on standard output.
  static void ExpectFailure(std::string const &line, int code, std::string const &path) {
    SCOPED_TRACE(line);
    ToolResult const result = Run(line);
    EXPECT_EQ(result.code, code);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.substr(0, path.size() + 8), "zolt: " + path + ": ");
    EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
  }
};

TEST_F(ExitCodeTest, ADamagedOrNewerHiveIs4AndStays) {
  Set({"Audio", "V", "1"});
  ASSERT_EQ(RawHive(home_.UserHive()).Run("update hive set layout = layout + 1"), "");
  EXPECT_TRUE(Has(Run("prefs get Audio V").err, "newer version"));
  for (bool const newer : {true, false}) {
    if (!newer) WriteContent(home_.UserHive(), "this is no hive");
    for (std::string const line :
         {"prefs get Audio V", "prefs set Audio V 1", "prefs unset Audio V", "prefs list",
          "prefs explain Audio V", "-L shared-user prefs get Audio V"}) {
      ExpectFailure(line, 4, home_.UserHive());
    }
  }
  EXPECT_EQ(std::filesystem::file_size(home_.UserHive()), 15u);
  EXPECT_EQ(Run("-L system prefs set Audio V 1").code, 0) << "the machine's stores are whole";
}

TEST_F(ExitCodeTest, ADamagedMachineHiveConcernsWhoNeedsIt) {
  Set({"Audio", "V", "1"});
  WriteContent(home_.MachineHive(), "this is no hive");
  Expect({{"prefs get Audio V", 0, "1\n", ""}, {"-q prefs set Audio V 2", 0, "", ""}});
  ExpectFailure("prefs get Audio W", 4, home_.MachineHive());
  ExpectFailure("-L system prefs set Audio W 1", 4, home_.MachineHive());
}

TEST_F(ExitCodeTest, AHomeThatIsNoDirectoryIs3) {
  WriteContent("file", "");
  for (std::string const line : {"prefs get Audio V", "prefs set Audio V 1"})
    ExpectFailure("--home " + Path("file ") + line, 3, Path("file/user.hive"));
}

TEST_F(ExitCodeTest, AHiveThatIsAKeptLockIs5) {
  Set({"Audio", "V", "1"});
  Child holder([](Child::Pipe &pipe) {
    HiveTransaction transaction(HKEY_CURRENT_USER);
    if (transaction.Begin() == ERROR_SUCCESS) pipe.Hold();
    return 0;
  });
  ASSERT_EQ(holder.pipe().Hear(), "held");
  ExpectFailure("--wait 0.05 prefs unset Audio V", 5, home_.UserHive());
  ExpectFailure("--wait 0 prefs set New:Section V 2", 5, home_.UserHive());
  EXPECT_EQ(Run("--wait 0 prefs get Audio V").out, "1\n");
  EXPECT_EQ(Run("--wait 0 prefs set Audio V 1").code, 0) << "nothing is to be written";
  std::thread waiting([] { EXPECT_EQ(Run("prefs set Audio V 2").code, 0); });
  holder.pipe().Say("done");
  waiting.join();
  EXPECT_EQ(holder.Wait(), 0);
}

TEST_F(ExitCodeTest, AFailedOutputIs3AndAClosedPipeSilent) {
  Set({"Audio", "V", "1"});
  for (std::string const line : {"prefs get Audio V", "prefs list", "prefs explain Audio V", "help",
                                 "--version", "--json prefs set Audio V 1"}) {
    SCOPED_TRACE(line);
    ToolResult const full = Run(line, {.output = ToolOutput::fullDevice});
    EXPECT_EQ(full.code, 3);
    EXPECT_TRUE(Has(full.err, "No space left on device"));
    EXPECT_EQ(Run(line, {.output = ToolOutput::closed}).code, 3);
    ToolResult const broken = Run(line, {.output = ToolOutput::brokenPipe});
    EXPECT_EQ(broken.code, -SIGPIPE);
    EXPECT_EQ(broken.err, "");
  }
  EXPECT_EQ(Run("prefs set Audio V 2", {.output = ToolOutput::closed}).code, 0);
  for (std::string const line : {"get -o /dev/full Audio V", "get -o /nowhere/file Audio V",
                                 "set Audio --from /nowhere/file V"})
    EXPECT_EQ(Run("prefs " + line).code, 3) << line;
  // A closed output never becomes the hive's descriptor.
  EXPECT_EQ(Run("prefs get Audio V").out, "2\n");
}

TEST_F(ExitCodeTest, FourLoopsOfTenIncrementsEndAt40) {
  Set({"Audio", "N", "0"});
  auto const count = [] {
    for (int done = 0; done < 10;) {
      std::string const old = Run("prefs get Audio N").out;
      std::string const next = std::to_string(std::stoi(old) + 1);
      ToolResult const result = Run("prefs set Audio N " + next + " --if " + old);
      ASSERT_TRUE(result.code == 0 || result.code == 1) << result.err;
      if (result.code == 0) done++;
    }
  };
  {
    std::jthread const loops[] = {std::jthread(count), std::jthread(count), std::jthread(count),
                                  std::jthread(count)};
  }
  EXPECT_EQ(Run("prefs get Audio N").out, "40\n");
}

TEST_F(ExitCodeTest, UnderSudoAWriteSaysWhoseStoreItIs) {
  ToolSetting const sudo{.environment = {"SUDO_USER=someone"}};
  std::string const said = "zolt: this is the store of root, in " + home_.path() + "\n";
  Expect({{"prefs set Audio V 1", 0, "",
           (geteuid() == 0 ? said : "") + "Conferencing:Audio V: unset -> 1\n", sudo},
          {"-q prefs set Audio V 2", 0, "", "", sudo},
          {"prefs get Audio V", 0, "2\n", "", sudo}});
}

}  // namespace
}  // namespace zolt::testing
