#ifndef ZOLT41_TESTS_SUPPORT_RAW_HIVE_H_
#define ZOLT41_TESTS_SUPPORT_RAW_HIVE_H_

#include <sqlite3.h>

#include <string>

namespace zolt::testing {

// A hive's file as another program sees it: SQLite without any of the library's rules.
class RawHive {
 public:
  explicit RawHive(std::string const &path) {
    sqlite3_open(path.c_str(), &database_);
    sqlite3_busy_timeout(database_, 10000);
  }
  ~RawHive() { sqlite3_close(database_); }
  RawHive(RawHive const &) = delete;
  RawHive &operator=(RawHive const &) = delete;

  // Runs statements; the first column of the last row, "" without one, or "error: " and a text.
  std::string Run(std::string const &text) {
    std::string result;
    char *error = nullptr;
    auto keep = [](void *to, int, char **columns, char **) {
      *static_cast<std::string *>(to) = columns[0] == nullptr ? "" : columns[0];
      return 0;
    };
    if (sqlite3_exec(database_, text.c_str(), keep, &result, &error) != SQLITE_OK) {
      result = std::string("error: ") + error;
      sqlite3_free(error);
    }
    return result;
  }

 private:
  sqlite3 *database_ = nullptr;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_RAW_HIVE_H_
