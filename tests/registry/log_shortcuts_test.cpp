#include "zolt41/platform/registry/log_shortcuts.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/support/raw_hive.h"
#include "tests/support/temp_home.h"
#include "zolt41/platform/registry/connection.h"

namespace zolt::testing {
namespace {

// A hive with two values on pages of their own, which are always changed together, written by a
// connection of ours, read by another one, and seen by a program without shortcuts.
class LogShortcutsTest : public ::testing::Test {
 protected:
  LogShortcutsTest() {
    std::ofstream const empty(path_);
    EXPECT_EQ(Open(writer_, Connection::Mode::create), Failure::none);
    writer_.Execute(
        "INSERT INTO value VALUES(1,'first',1,1,zeroblob(3000)),(1,'second',2,1,zeroblob(3000))");
    writer_.Execute(Setting(0).c_str());
    EXPECT_EQ(Open(reader_, Connection::Mode::read), Failure::none);
    raw_.Run("PRAGMA busy_timeout=0");
  }
  Failure Open(Connection &connection, Connection::Mode mode) {
    return connection.Open(path_, mode, Connection::Journal::log, 1000);
  }
  static std::string Setting(int number) {
    std::string const text = std::to_string(1000000 + number);
    return "UPDATE value SET data=CAST('" + text + "' || zeroblob(3000) AS BLOB) WHERE key=1";
  }
  static int Get(Connection &connection, char const *name) {
    Use use(connection, Sql::get_value);
    use.Bind(int64_t{1}).Bind(name);
    return use.Row() ? std::stoi(std::string(use.Bytes(1).substr(0, 7))) - 1000000 : -1;
  }
  std::string Checkpoint() { return raw_.Run("PRAGMA wal_checkpoint(RESTART)"); }

  TempHome home_;
  std::string path_ = home_.path() + "/hive";
  Connection writer_;
  Connection reader_;
  RawHive raw_{path_};
};

TEST_F(LogShortcutsTest, EveryCommitIsSeenAtOnceByAll) {
  for (int i = 0; i < 200; i++) {
    ASSERT_EQ(writer_.Execute(Setting(i).c_str()), Failure::none);
    ASSERT_EQ(Get(reader_, "first"), i);
    // A program without shortcuts moves the marks on, and so is away in between.
    if (i % 30 < 20) {
      ASSERT_EQ(raw_.Run("SELECT substr(data,1,7)-1000000 FROM value WHERE name='second'"),
                std::to_string(i));
    }
    // Nobody is in the way.
    if (i % 30 == 14) {
      ASSERT_EQ(Checkpoint(), "0");
    }
    if (i % 30 == 29) {
      ASSERT_TRUE(writer_.Checkpoint(false));
    }
  }
}

TEST_F(LogShortcutsTest, WhatAReaderSeesStandsThroughOthersCommitsAndCheckpoints) {
  Get(reader_, "first");
  for (int i = 0; i < 30; i++) ASSERT_EQ(writer_.Execute(Setting(i).c_str()), Failure::none);
  ASSERT_EQ(reader_.Execute("BEGIN"), Failure::none);
  ASSERT_EQ(Get(reader_, "first"), 29);
  for (int i = 30; i < 60; i++) {
    ASSERT_EQ(raw_.Run(Setting(i)), "");
    ASSERT_EQ(Checkpoint(), "1") << "the reader is in the way";
  }
  EXPECT_EQ(Get(reader_, "second"), 29);
  ASSERT_EQ(reader_.Execute("COMMIT"), Failure::none);
  EXPECT_EQ(Get(reader_, "second"), 59);
  EXPECT_EQ(Checkpoint(), "0");
}

// A page that is changed again after it left the cache is written over in the log, and the sums of
// all frames from there on are mended.
TEST_F(LogShortcutsTest, ALogThatWasMendedBeforeItsCommitIsWhole) {
  ASSERT_EQ(writer_.Execute("PRAGMA cache_size=10;BEGIN IMMEDIATE"), Failure::none);
  for (int round = 0; round < 3; round++) {
    for (int i = 0; i < 60; i++) {
      std::string const text =
          "REPLACE INTO value VALUES(2," + std::to_string(i) + ",1,1,randomblob(3000))";
      ASSERT_EQ(writer_.Execute(text.c_str()), Failure::none);
    }
  }
  ASSERT_EQ(writer_.Execute("COMMIT"), Failure::none);
  // The log's index stays behind, so that the log itself is read.
  std::string const copy = home_.path() + "/copy";
  for (char const *suffix : {"", "-wal"}) std::filesystem::copy_file(path_ + suffix, copy + suffix);
  RawHive copied(copy);
  EXPECT_EQ(copied.Run("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(copied.Run("SELECT count(*) FROM value WHERE key=2"), "60");
}

}  // namespace
}  // namespace zolt::testing
