#include <sched.h>
#include <sys/stat.h>

#include <chrono>
#include <csignal>

#include "tests/prefs/prefs_fixture.h"
#include "tests/support/child.h"
#include "tests/support/files.h"
#include "tests/support/key.h"
#include "tests/support/raw_hive.h"
#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/zolt41.h"

namespace zolt::testing {
namespace {

namespace fs = std::filesystem;

// What is refused to a user without rights. Root is refused nothing, so it cannot see this.
class DeniedTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(geteuid(), 0u); }
  ~DeniedTest() override { Allow(true); }

  // The whole home, or the machine's part of it alone, may be written or not.
  void Allow(bool write) const { Change(home_.path(), write); }
  void AllowMachine(bool write) const { Change(home_.path() + "/machine", write); }
  static void Change(std::string const &directory, bool write) {
    fs::permissions(directory, fs::perms(0700));
    for (auto const &entry : fs::directory_iterator(directory)) {
      if (entry.is_directory()) {
        Change(entry.path(), write);
      } else {
        fs::permissions(entry.path(), fs::perms(write ? 0600 : 0400));
      }
    }
    fs::permissions(directory, fs::perms(write ? 0700 : 0500));
  }
  static void Prepare(std::string const &text) {
    for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) Key(root).Set("v", text);
    LeaveHives();
  }

  TempHome home_;
};

TEST_F(DeniedTest, AHomeThatMayNotBeWrittenIsRead) {
  Prepare("kept");
  ASSERT_GT(fs::file_size(home_.UserHive() + "-wal"), 0u) << "the value is in the log alone";
  Allow(false);
  for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    Key const key(root);
    EXPECT_EQ(key.opened, ERROR_SUCCESS);
    EXPECT_EQ(key.Get("v"), "kept");
    EXPECT_EQ(key.Get("none"), "!2");
    EXPECT_EQ(key.ValueNames().size(), 1u);
    EXPECT_EQ(key.Set("v", "changed"), ERROR_ACCESS_DENIED);
    std::string subject;
    EXPECT_EQ(LastFailure(&subject), 1);
    EXPECT_NE(subject.find(".hive"), std::string::npos) << subject;
    HKEY made = 0;
    EXPECT_EQ(
        RegCreateKeyExA(root, "New", 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &made, nullptr),
        ERROR_ACCESS_DENIED);
    EXPECT_EQ(HiveTransaction(root).Begin(), ERROR_ACCESS_DENIED);
  }
}

TEST_F(DeniedTest, AReadOnlyHomeFollowsItsWriter) {
  Prepare("first");
  Allow(false);
  Key const key(HKEY_CURRENT_USER);
  EXPECT_EQ(key.Get("v"), "first");
  ASSERT_TRUE(HoldsInChild([this] {
    Allow(true);
    Prepare("second");
    Allow(false);
    return true;
  }));
  EXPECT_EQ(key.Get("v"), "second");
}

TEST_F(DeniedTest, WithoutAMachineHiveEverythingWorksButSystemWrites) {
  fs::create_directory(home_.path() + "/machine");
  fs::permissions(home_.path() + "/machine", fs::perms(0500));
  InitZOLT();
  InitPrefs(nullptr);
  uint32_t const audio = 0x41554449;
  EXPECT_EQ(SystemPrefs()->IsReadable(audio), 0x10);
  EXPECT_EQ(SystemPrefs()->IsWritable(audio), 0);
  EXPECT_EQ(UserPrefs()->IsWritable(audio), 0x02);
  EXPECT_EQ(UserPrefs()->WriteStr(audio, "v", "mine", PrefLevelUser), 1);
  EXPECT_EQ(UserPrefs()->WriteStr(audio, "v", "system", PrefLevelSystem), 1);
  EXPECT_EQ(LastFailure(), 1) << "quiet, but it tells why";
  EXPECT_EQ(Read(UserPrefs(), "v", 0, audio), "mine");
  EXPECT_EQ(Read(SystemPrefs(), "v", 0, audio), "-");
  CEnumPrefs *system = GetSystemPrefs()->GetEnum(0, static_cast<int32_t>(audio), "Audio");
  EXPECT_EQ(system->CreateKey("New"), 0) << "nothing is made where nothing may be";
  EXPECT_EQ(LastFailure(), 1);
  system->Release();
  for (int i = 0; i < 3; i++) {
    CEnumPrefs *walk = GetUserPrefs()->GetEnum(0, 12345, "Elsewhere");
    ASSERT_NE(walk, nullptr);
    EXPECT_EQ(walk->Next(), i == 0 ? -1 : 1);
    EXPECT_EQ(walk->WriteStr("n", "v"), 1);
    walk->Release();
    EXPECT_EQ(GetUserPrefs()->GetSectionFromID(12345), nullptr) << "it takes its section away";
  }
  DisposeZOLT();
}

// Where there is no hive, and where there is one without the key.
TEST_F(DeniedTest, AMachineKeyThatAppearsLaterIsSeenThroughAnOldHandle) {
  fs::create_directory(home_.path() + "/machine");
  AllowMachine(false);
  for (char const *name : {"First", "Second"}) {
    Key const early(HKEY_LOCAL_MACHINE, name);
    EXPECT_EQ(early.opened, ERROR_SUCCESS);
    EXPECT_EQ(early.Get("v"), "!2");
    ASSERT_TRUE(HoldsInChild([&] {
      AllowMachine(true);
      bool const good = Key(HKEY_LOCAL_MACHINE, name).Set("v", "now") == ERROR_SUCCESS;
      LeaveHives();
      AllowMachine(false);
      return good;
    }));
    auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (early.Get("v") != "now" && std::chrono::steady_clock::now() < deadline) sched_yield();
    EXPECT_EQ(early.Get("v"), "now");
  }
}

TEST_F(DeniedTest, AJournalThatADeadAdministratorLeftIsRolledBackInACopy) {
  Prepare("before");
  Child dying([this](Child::Pipe &pipe) {
    RawHive raw(home_.MachineHive());
    // So small a cache that pages are written before the commit.
    raw.Run(
        "PRAGMA cache_size=1; BEGIN; UPDATE value SET data=x'313233'; "
        "CREATE TABLE much(x); "
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<500) "
        "INSERT INTO much SELECT zeroblob(1000) FROM n; "
        "UPDATE value SET data=x'343536'");
    pipe.Say("half");
    pipe.Hear();
    return 0;
  });
  ASSERT_EQ(dying.pipe().Hear(), "half");
  dying.Signal(SIGKILL);
  EXPECT_EQ(dying.Wait(), -SIGKILL);
  ASSERT_TRUE(fs::exists(home_.MachineHive() + "-journal"));
  AllowMachine(false);
  EXPECT_EQ(Key(HKEY_LOCAL_MACHINE).Get("v"), "before");
  EXPECT_TRUE(fs::exists(home_.MachineHive() + "-journal")) << "left for who may write";
  LeaveHives();
  AllowMachine(true);
  EXPECT_EQ(Key(HKEY_LOCAL_MACHINE).Get("v"), "before");
  EXPECT_FALSE(fs::exists(home_.MachineHive() + "-journal"));
}

TEST_F(DeniedTest, AHiveThatMayNotBeReadIsDenied) {
  Prepare("v");
  fs::permissions(home_.UserHive(), fs::perms(0));
  EXPECT_EQ(Key(HKEY_CURRENT_USER).opened, ERROR_ACCESS_DENIED);
  EXPECT_EQ(LastFailure(), 1);
  fs::permissions(home_.UserHive(), fs::perms(0600));
}

TEST_F(DeniedTest, AHomeThatCannotBeMadeReadsAsEmpty) {
  fs::permissions(home_.path(), fs::perms(0500));
  setenv("ZOLT_HOME", (home_.path() + "/below").c_str(), 1);
  Key const key(HKEY_CURRENT_USER);
  EXPECT_EQ(key.opened, ERROR_SUCCESS);
  EXPECT_EQ(key.Get("v"), "!2");
  EXPECT_EQ(key.Set("v", "1"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(LastFailure(), 1);
}

TEST_F(DeniedTest, ACardThatMayNotBeReadOrWrittenStaysAsItIs) {
  std::string const path = home_.path() + "/c";
  ASSERT_EQ(CallCard(CardFormatBinary).SaveCardAs(CardFormatBinary, path.c_str()), 1);
  std::string const bytes = ContentOf(path);
  for (mode_t const mode : {0000U, 0400U}) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    CallCard card(path.c_str());
    EXPECT_EQ(LastFailure(), mode == 0 ? 1 : 0);
    EXPECT_EQ(card.Format(), mode == 0 ? CardFormatText : CardFormatBinary);
    EXPECT_EQ(card.SaveCard(), 0) << "also where the directory would allow it";
    EXPECT_EQ(LastFailure(), 1);
  }
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(ContentOf(path), bytes);
}

}  // namespace
}  // namespace zolt::testing
