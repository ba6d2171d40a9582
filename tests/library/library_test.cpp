#include "zolt41/library/library.h"

#include <fstream>
#include <sstream>

#include "tests/prefs/prefs_fixture.h"
#include "tests/support/full_disk.h"
#include "tests/support/raw_hive.h"
#include "zolt41/notify/channel_objects.h"
#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt::testing {
namespace {

void StartLibrary(char const *path = nullptr) {
  InitZOLT();
  InitPrefs(path);
}

TEST_F(PrefsTest, TheStandardSectionsLieWhereTheyAlwaysDid) {
  uint32_t const ids[] = {0x494E5354, 0xA948F3A4, 0x474E524C, 0x49444E54, 0x4E544643, 0x434F5052,
                          0x47544B50, 0x44495245, 0x5055424C, 0xB9DBE944, 0x4641564F, 0x5048424B,
                          0x4D414E44, 0x57454250, 0x5A9EEF18, 0x674F4E47, 0x42554459, 0x674F4E46,
                          0x50325021, 0x434F4C4C, 0x41554449, 0x5649444F, 0x44148435, 0x4C595453};
  std::stringstream paths(
      "Installer:Components:General:Identity:Notification Agent:Connection Preferences:Gatekeeper:"
      "Directory:Publisher:Companion:Favorites:PhoneBook:Manual Dial:WebPlaces:Communities:"
      "Conferencing:Contact list:Conferencing\\Conference:Conferencing\\Point2Point:"
      "Conferencing\\Collaboration:Conferencing\\Audio:Conferencing\\Video:Conferencing\\Chat:"
      "Conferencing\\Layouts");
  for (uint32_t const id : ids) {
    std::string path;
    std::getline(paths, path, ':');
    UserPrefs()->SetStr(id, "path", path.c_str());
    EXPECT_EQ(InUserTree(path, "path"), path);
  }
}

TEST(Library, StopsAtExactlyZeroAndStartsAgain) {
  TempHome home;
  DisposeZOLT();          // -1
  StartLibrary("First");  // 0, which was not counted down to
  StartLibrary("Second");
  UserPrefs()->SetStr(kSection, "n", "v");
  InitZOLT();
  DisposeZOLT();
  EXPECT_EQ(Read(UserPrefs(), "n"), "v");
  for (char const *path : {"Second", "First"}) {
    DisposeZOLT();
    StartLibrary(path);
    EXPECT_EQ(Raw(HKEY_CURRENT_USER, "First\\General", "n"), "v");
    EXPECT_EQ(Read(UserPrefs(), "n"), path[0] == 'F' ? "v" : "-");
  }
  DisposeZOLT();
}

TEST(Library, AFullDiskAtTheFirstStartLeavesNoBadKeys) {
  TempHome home;
  EXPECT_TRUE(HoldsInChild([&home] {
    for (rlim_t size = 0; size <= 262144; size += 4096) {
      {
        FullDisk const limit(size);
        StartLibrary();
      }
      // With room again, whoever says that it can write does.
      for (TYPrefs *store : {UserPrefs(), SystemPrefs(), SharedUserPrefs(), SharedSystemPrefs()}) {
        store->SetStr(kSection, "n", "v");
        if (store->IsWritable(kSection) != 0 && store->Exists(kSection, "n") == 0) return false;
      }
      DisposeZOLT();
      std::filesystem::remove_all(home.path());
    }
    return true;
  }));
}

TEST(Library, ADamagedTreeIsToldThroughEveryCall) {
  TempHome home;
  StartLibrary();
  SystemPrefs()->SetStr(kSection, "n", "system");
  DisposeZOLT();
  LeaveHives();
  std::ofstream(home.UserHive(), std::ios::trunc) << std::string(5000, 'G');
  std::filesystem::remove(home.UserHive() + "-wal");
  StartLibrary();
  EXPECT_EQ(Read(UserPrefs(), "n"), "system");
  EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 4);
  ClearPrefSection(kSection, 0);
  EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 4);
  EXPECT_EQ(Read(SystemPrefs(), "n"), "-");
  EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 0);
  DisposeZOLT();
  LeaveHives();
}

TEST(Library, KeysThatOnlyAnotherProgramMakesAreSurvived) {
  TempHome home;
  StartLibrary();
  UserPrefs()->SetStr(kSection, "n", "v");
  RawHive(home.UserHive())
      .Run(
          "INSERT INTO key(parent,name) SELECT id,'' FROM key WHERE name='General';"
          "INSERT INTO key(id,parent,name) SELECT 100000,id,'deep' FROM key WHERE name='General';"
          "WITH RECURSIVE n(i) AS (SELECT 100001 UNION ALL SELECT i+1 FROM n WHERE i<150000)"
          "INSERT INTO key(id,parent,name) SELECT i,i-1,'deep' FROM n");
  UserPrefs()->SetStr(kSection, "miss", "makes it notice");
  UserPrefs()->ClearSection(kSection, 0);
  EXPECT_EQ(Read(UserPrefs(), "n"), "-");
  DisposeZOLT();
}

TEST(Library, AStoppedHolderOfTheChannelKeepsNobodyFromStarting) {
  TempHome home;
  Child holder([](Child::Pipe &pipe) {
    pipe.Say(std::to_string(WaitForSingleObject(ChannelMutex(), 0)));
    pipe.Hear();
    return 0;
  });
  ASSERT_EQ(holder.pipe().Hear(), std::to_string(WAIT_OBJECT_0));
  StartLibrary();
  UserPrefs()->SetStr(kSection, "n", "v");
  EXPECT_EQ(Read(UserPrefs(), "n"), "v");
  DisposeZOLT();
  holder.Signal(SIGKILL);
  EXPECT_EQ(holder.Wait(), -SIGKILL);
  EXPECT_EQ(WaitForSingleObject(ChannelMutex(), 0), WAIT_ABANDONED);
  EXPECT_EQ(ReleaseMutex(ChannelMutex()), 1);
}

}  // namespace
}  // namespace zolt::testing
