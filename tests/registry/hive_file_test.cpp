#include <sys/stat.h>

#include <tuple>

#include "tests/support/files.h"
#include "tests/support/full_disk.h"
#include "tests/support/key.h"
#include "tests/support/raw_hive.h"
#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/registry/name_walk.h"

namespace zolt::testing {
namespace {

namespace fs = std::filesystem;

// What a hive's file, and what lies around it, can do to us.
class HiveFileTest : public FileTest {
 protected:
  std::string HiveOf(HKEY root) const {
    return root == HKEY_CURRENT_USER ? home_.UserHive() : home_.MachineHive();
  }
  // Makes a home with one value in each tree and leaves it.
  void Prepare() {
    for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
      ASSERT_EQ(Key(root).Set("v", "old"), ERROR_SUCCESS);
    Leave(home_.UserHive());
  }
  // The log goes into the file, so that what is damaged or moved is the file.
  static void Leave(std::string const &path) {
    LeaveHives();
    RawHive(path).Run("PRAGMA wal_checkpoint(TRUNCATE)");
  }
};

TEST_F(HiveFileTest, IsMadeForItsUserAlone) {
  umask(0);
  Prepare();
  for (std::string const &path : {home_.UserHive(), home_.UserSync(), home_.MachineHive()})
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600)) << path;
  EXPECT_EQ(fs::status(Path("machine")).permissions(), fs::perms(0700));
}

TEST_F(HiveFileTest, StoresNamesAsUtf8) {
  Key(HKEY_CURRENT_USER, "Ma\xDF").Set("Preis \x80", "5");
  LeaveHives();
  RawHive raw(home_.UserHive());
  EXPECT_EQ(raw.Run("SELECT name FROM key"), "Ma\xC3\x9F");
  EXPECT_EQ(raw.Run("SELECT name FROM value"), "Preis \xE2\x82\xAC");
}

TEST_F(HiveFileTest, DamageIsToldAndTheFileIsLeftAsItIs) {
  Prepare();
  for (HKEY const root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    std::string const path = HiveOf(root);
    std::string const whole = ContentOf(path);
    std::pair<char const *, std::string> const cases[] = {
        {"garbage", std::string(9000, 'Z')},
        {"a text", "Volume=70\n"},
        {"cut inside a page", whole.substr(0, 5000)},
        {"no head", std::string(100, '\0') + whole.substr(100)},
        {"no schema", whole.substr(0, 100) + std::string(3996, '\xFF') + whole.substr(4096)}};
    for (auto const &[what, bytes] : cases) {
      WriteContent(path, bytes);
      EXPECT_EQ(Key(root).opened, ERROR_REGISTRY_CORRUPT) << what;
      std::string subject;
      EXPECT_EQ(LastFailure(&subject), 4) << what;
      EXPECT_EQ(subject, fs::canonical(path));
      ReportHiveFailure(root);
      EXPECT_EQ(LastFailure(), 4) << "it can be told again";
      LeaveHives();
      EXPECT_EQ(ContentOf(path), bytes) << what;
    }
    WriteContent(path, whole);
    EXPECT_EQ(Key(root).Get("v"), "old");
    LeaveHives();
  }
}

TEST_F(HiveFileTest, ForeignAndNewerDatabasesAreRefused) {
  std::tuple<char const *, int32_t, int32_t> const cases[] = {
      {"UPDATE hive SET layout=2", ERROR_REVISION_MISMATCH, 5},
      {"DROP TABLE hive", ERROR_REGISTRY_CORRUPT, 4},
      {"DELETE FROM hive", ERROR_REGISTRY_CORRUPT, 4}};
  for (auto const &[sql, result, failure] : cases) {
    Prepare();
    EXPECT_EQ(RawHive(home_.UserHive()).Run(sql), "");
    EXPECT_EQ(Key(HKEY_CURRENT_USER).opened, result) << sql;
    EXPECT_EQ(LastFailure(), failure) << sql;
    LeaveHives();
    fs::remove(home_.UserHive());
  }
}

TEST_F(HiveFileTest, DamagedPagesNeverGiveAWrongValue) {
  Prepare();
  for (int i = 0; i < 300; i++)
    Key(HKEY_CURRENT_USER).Set("n" + std::to_string(i), "value " + std::to_string(i));
  Leave(home_.UserHive());
  std::string const whole = ContentOf(home_.UserHive());
  for (size_t page = 1; page < whole.size() / 4096; page++) {
    std::string bytes = whole;
    // The head of the page: kind, first free block, number of cells, start of the cells.
    for (size_t i = 0; i < 8; i++) bytes[page * 4096 + i] ^= static_cast<char>(0x55);
    WriteContent(home_.UserHive(), bytes);
    Key const key(HKEY_CURRENT_USER);
    for (int i = 0; i < 300 && key.opened == 0; i++) {
      std::string const got = key.Get("n" + std::to_string(i));
      EXPECT_TRUE(got == "value " + std::to_string(i) || got == "!1015" || got == "!2") << got;
    }
    LeaveHives();
  }
}

TEST_F(HiveFileTest, AnotherFileInItsPlaceIsNoticed) {
  Prepare();
  fs::copy_file(home_.UserHive(), Path("backup"));
  Key const key(HKEY_CURRENT_USER);
  key.Set("v", "new");
  key.Set("only in the log", "x");
  EXPECT_EQ(key.Get("v"), "new");
  NameWalk walk(NameLists::Kind::values);
  Key const walked(HKEY_CURRENT_USER);
  auto const second = [&walk, &walked] {
    char name[32];
    uint32_t size = sizeof name;
    int32_t const result = walk.At(walked.handle, 1, name, &size);
    return result == ERROR_SUCCESS ? std::string(name, size) : "none";
  };
  EXPECT_EQ(second(), "only in the log");
  fs::rename(Path("backup"), home_.UserHive());
  // A miss looks; the log of the old file must not be applied to the new one.
  EXPECT_EQ(key.GetAll({"another", "v", "only in the log"}), "!2 old !2");
  EXPECT_EQ(second(), "none");
  EXPECT_EQ(key.Set("v", "newer"), ERROR_SUCCESS);
  EXPECT_EQ(key.Get("v"), "newer");
  LeaveHives();
  EXPECT_EQ(RawHive(home_.UserHive()).Run("PRAGMA integrity_check"), "ok");
}

TEST_F(HiveFileTest, AHandleFollowsItsPathIntoAnotherFile) {
  // In the other file the number of our key belongs to another key.
  setenv("ZOLT_HOME", Path("other").c_str(), 1);
  for (char const *name : {"Decoy", "Test"}) Key(HKEY_CURRENT_USER, name).Set("v", name);
  Leave(Path("other/user.hive"));
  setenv("ZOLT_HOME", home_.path().c_str(), 1);
  Prepare();
  Key const key(HKEY_CURRENT_USER);
  Key const gone(HKEY_CURRENT_USER, "Only here");
  EXPECT_EQ(gone.Set("v", "1"), ERROR_SUCCESS);
  fs::rename(Path("other/user.hive"), home_.UserHive());
  EXPECT_EQ(RegDeleteValueA(key.handle, "v"), ERROR_SUCCESS);
  EXPECT_EQ(Key(HKEY_CURRENT_USER, "Decoy").Get("v"), "Decoy") << "not of another key";
  EXPECT_EQ(key.Set("w", "written"), ERROR_SUCCESS);
  EXPECT_EQ(key.Get("v") + gone.Get("v"), "!2!2");
  EXPECT_EQ(gone.Set("v", "2"), ERROR_KEY_DELETED);
  EXPECT_EQ(LastFailure(), 6) << "the write is lost, and says so";
  EXPECT_EQ(Key(HKEY_CURRENT_USER, "Decoy").Get("w"), "!2");
  EXPECT_EQ(Key(HKEY_CURRENT_USER, "Only here").Set("v", "2"), ERROR_SUCCESS);
  EXPECT_EQ(gone.Get("v"), "2") << "made anew, and found again by its path";
}

TEST_F(HiveFileTest, AnotherFileIsNoticedBetweenTwoRuns) {
  Prepare();
  fs::copy_file(home_.UserHive(), Path("backup"));
  Key(HKEY_CURRENT_USER).Set("v", "new");
  LeaveHives();
  ASSERT_GT(fs::file_size(home_.UserHive() + "-wal"), 0u) << "the change is still in the log";
  fs::rename(Path("backup"), home_.UserHive());
  EXPECT_EQ(Key(HKEY_CURRENT_USER).Get("v"), "old");
}

TEST_F(HiveFileTest, WordsThatWereRemovedAreMadeAnewBeforeAWrite) {
  Prepare();
  Key const key(HKEY_CURRENT_USER);
  EXPECT_EQ(key.Get("v"), "old");
  fs::remove(home_.UserSync());
  EXPECT_EQ(key.Set("v", "1"), ERROR_SUCCESS);
  EXPECT_TRUE(fs::exists(home_.UserSync()));
  EXPECT_EQ(key.Get("v"), "1");
}

TEST_F(HiveFileTest, AForeignEditIsNoticedAtTheNextMiss) {
  Prepare();
  for (HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    Key const key(root);
    EXPECT_EQ(key.Get("v"), "old");
    EXPECT_TRUE(HoldsInChild([&] {
      return RawHive(HiveOf(root)).Run("UPDATE value SET data='edited' WHERE name='v'").empty();
    }));
    key.Get("a name that nobody asked for before");
    EXPECT_EQ(key.Get("v"), "edited") << "stored without its NUL, read with it";
  }
}

TEST_F(HiveFileTest, AHiveWhoseLogAForeignProgramSwitchedOffGetsItBack) {
  Prepare();
  EXPECT_EQ(RawHive(home_.UserHive()).Run("PRAGMA journal_mode=DELETE"), "delete");
  Key const key(HKEY_CURRENT_USER);
  EXPECT_EQ(key.Get("v"), "old");
  EXPECT_EQ(key.Set("v", "new"), ERROR_SUCCESS);
  EXPECT_EQ(key.Get("v"), "new");
  EXPECT_EQ(RawHive(home_.UserHive()).Run("PRAGMA journal_mode"), "wal");
}

TEST_F(HiveFileTest, ALinkedHiveIsOneHiveWithItsTarget) {
  fs::create_directory(Path("store"));
  WriteContent(Path("store/real.hive"), "");
  fs::permissions(Path("store/real.hive"), fs::perms(0600));
  fs::create_symlink("store/real.hive", home_.UserHive());
  Key const key(HKEY_CURRENT_USER);
  EXPECT_EQ(key.Set("v", "1"), ERROR_SUCCESS);
  EXPECT_TRUE(fs::exists(Path("store/user.sync"))) << "beside what everybody shares";
  EXPECT_TRUE(fs::is_symlink(home_.UserHive()));
  LeaveHives();
  fs::remove(home_.UserHive());
  fs::create_symlink("nowhere/real.hive", home_.UserHive());
  EXPECT_EQ(Key(HKEY_CURRENT_USER).opened, ERROR_ACCESS_DENIED);
  EXPECT_EQ(LastFailure(), 1);
}

TEST_F(HiveFileTest, AFullDiskLosesNothingThatWasKept) {
  Prepare();
  Child writer([&](Child::Pipe &pipe) {
    FullDisk const limit(200 * 1024);
    Key const key(HKEY_CURRENT_USER);
    int kept = 0;
    while (key.Set("n" + std::to_string(kept), std::string(500, 'x')) == ERROR_SUCCESS) kept++;
    pipe.Say(std::to_string(kept));
    pipe.Say(std::to_string(LastFailure()));
    HiveTransaction transaction(HKEY_CURRENT_USER);
    int32_t result = transaction.Begin();
    key.SetBytes("large", 3, std::string(400000, 'y'));
    result = result == ERROR_SUCCESS ? transaction.Commit() : result;
    pipe.Say(std::to_string(result));
    pipe.Say(key.Get("n0") == std::string(500, 'x') ? "" : key.Get("v"));
    return 0;
  });
  int const kept = std::stoi(writer.pipe().Hear());
  EXPECT_GT(kept, 10);
  EXPECT_EQ(writer.pipe().Hear(), "3");
  EXPECT_EQ(writer.pipe().Hear(), std::to_string(ERROR_DISK_FULL));
  EXPECT_EQ(writer.pipe().Hear(), "old") << "it still reads";
  ASSERT_EQ(writer.Wait(), 0);
  Key const key(HKEY_CURRENT_USER);
  EXPECT_EQ(key.ValueNames().size(), static_cast<size_t>(kept) + 1);
  EXPECT_EQ(key.Set("more", "1"), ERROR_SUCCESS);
}

TEST_F(HiveFileTest, AFullDiskAtTheFirstStartIsFullAndLeavesNothingInTheWay) {
  // Whichever file meets the end of the space first.
  for (rlim_t const size : {0u, 1000u, 8192u, 20000u, 33600u, 40000u, 60000u, 80000u}) {
    EXPECT_TRUE(HoldsInChild([&] {
      FullDisk const limit(size);
      Key const key(HKEY_CURRENT_USER);
      bool const full = key.opened == ERROR_DISK_FULL && LastFailure() == 3;
      return full || key.Set("v", "1") == ERROR_SUCCESS;
    })) << size;
    EXPECT_EQ(Key(HKEY_CURRENT_USER).Set("w", "2"), ERROR_SUCCESS) << size;
    LeaveHives();
    for (auto const &entry : fs::directory_iterator(home_.path())) fs::remove_all(entry.path());
  }
}

}  // namespace
}  // namespace zolt::testing
