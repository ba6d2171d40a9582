#ifndef ZOLT41_PLATFORM_REGISTRY_LOG_SHORTCUTS_H_
#define ZOLT41_PLATFORM_REGISTRY_LOG_SHORTCUTS_H_

#include <sqlite3.h>

#include <array>
#include <cstdint>

namespace zolt {

// Spares the connection to a hive with a log three of the eight calls of the system that a commit
// of SQLite's makes. The bytes of the log, and what other programs find locked, stay the same.
class LogShortcuts {
 public:
  LogShortcuts() = default;
  LogShortcuts(LogShortcuts const &) = delete;
  LogShortcuts &operator=(LogShortcuts const &) = delete;

  // Must outlive the connection, which has its log open. May be called again for the next one.
  void Install(sqlite3 *database);

 private:
  // SQLite moves one of its four marks of what readers need on for each transaction, which takes
  // two calls: it locks the mark alone and lets it go. Where it is told that the mark is locked, it
  // holds an earlier one instead, and sees the newest commit all the same: an earlier mark only
  // holds a checkpoint back for as long as the transaction lasts. So it is told that, most times.
  struct Locks : sqlite3_io_methods {
    sqlite3_io_methods const *real = nullptr;
    uint32_t held = 0;  // the locks that the connection has alone
    uint32_t transactions = 0;
    bool marked = false;  // the last transaction found a mark to hold, and this one may too
    int refused = 0;      // the last mark that was refused to this transaction

    bool Refuses(int offset, int count, int flags);
  };

  // A page goes to the log in two calls, its head first. The head waits for its page here.
  struct Frames : sqlite3_io_methods {
    static constexpr int kHeadSize = 24;
    static constexpr int kMostPage = 4096;

    sqlite3_io_methods const *real = nullptr;
    sqlite3_int64 end = -1;   // of the last write
    sqlite3_int64 held = -1;  // where the head belongs that waits
    std::array<unsigned char, kHeadSize + kMostPage> frame{};

    int Write(sqlite3_file *file, void const *data, int size, sqlite3_int64 offset);
    int WriteHeld(sqlite3_file *file);
  };

  Locks locks_;
  Frames frames_;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_LOG_SHORTCUTS_H_
