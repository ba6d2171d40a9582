#include "zolt41/platform/registry/log_shortcuts.h"

#include <cstring>

namespace zolt {
namespace {

// SQLite's locks of the index of a log: those of writing, checkpoints and recovery, then one for
// each mark of readers. The first of these is for who reads the file alone and is never moved.
constexpr int kFirstMark = 4;

// How many transactions go by before a mark is moved on: an old one is as good as a new one, until
// a reader of another program stands still behind it.
constexpr uint32_t kTransactionsPerMark = 64;

sqlite3_file *FileOf(sqlite3 *database, int which) {
  sqlite3_file *file = nullptr;
  sqlite3_file_control(database, "main", which, &file);
  return file != nullptr && file->pMethods != nullptr ? file : nullptr;
}

// Puts methods of ours, which begin as the file's own, in the place of these.
template <typename Methods>
void Replace(sqlite3_file *file, Methods *methods) {
  *methods = Methods{};
  static_cast<sqlite3_io_methods &>(*methods) = *file->pMethods;
  methods->real = file->pMethods;
  file->pMethods = methods;
}

template <typename Methods>
Methods &Of(sqlite3_file *file) {
  return const_cast<Methods &>(static_cast<Methods const &>(*file->pMethods));
}

}  // namespace

bool LogShortcuts::Locks::Refuses(int offset, int count, int flags) {
  bool const moves = flags == (SQLITE_SHM_LOCK | SQLITE_SHM_EXCLUSIVE) && count == 1 &&
                     offset >= kFirstMark && held == 0;
  if (!moves || !marked) return false;
  // Asked a second time it has no mark to hold instead.
  if (offset <= refused) marked = false;
  refused = offset;
  return marked;
}

void LogShortcuts::Install(sqlite3 *database) {
  sqlite3_file *const hive = FileOf(database, SQLITE_FCNTL_FILE_POINTER);
  sqlite3_file *const log = FileOf(database, SQLITE_FCNTL_JOURNAL_POINTER);
  if (hive == nullptr || hive->pMethods->iVersion < 2 || log == nullptr) return;
  Replace(hive, &locks_);
  locks_.xShmLock = [](sqlite3_file *file, int offset, int count, int flags) {
    auto &locks = Of<Locks>(file);
    if (locks.Refuses(offset, count, flags)) return SQLITE_BUSY;
    int const result = locks.real->xShmLock(file, offset, count, flags);
    if (result != SQLITE_OK) return result;
    bool const lock = (flags & SQLITE_SHM_LOCK) != 0;
    if ((flags & SQLITE_SHM_EXCLUSIVE) != 0) {
      uint32_t const bits = ((1U << count) - 1) << offset;
      locks.held = lock ? locks.held | bits : locks.held & ~bits;
    } else if (lock && offset >= kFirstMark) {
      locks.marked = ++locks.transactions % kTransactionsPerMark != 0;
      locks.refused = 0;
    }
    return result;
  };
  Replace(log, &frames_);
  frames_.xWrite = [](sqlite3_file *file, void const *data, int size, sqlite3_int64 offset) {
    return Of<Frames>(file).Write(file, data, size, offset);
  };
  frames_.xRead = [](sqlite3_file *file, void *data, int size, sqlite3_int64 offset) {
    auto &frames = Of<Frames>(file);
    int const result = frames.WriteHeld(file);
    return result == SQLITE_OK ? frames.real->xRead(file, data, size, offset) : result;
  };
  frames_.xTruncate = [](sqlite3_file *file, sqlite3_int64 size) {
    auto &frames = Of<Frames>(file);
    int const result = frames.WriteHeld(file);
    return result == SQLITE_OK ? frames.real->xTruncate(file, size) : result;
  };
  frames_.xSync = [](sqlite3_file *file, int flags) {
    auto &frames = Of<Frames>(file);
    int const result = frames.WriteHeld(file);
    return result == SQLITE_OK ? frames.real->xSync(file, flags) : result;
  };
  frames_.xFileSize = [](sqlite3_file *file, sqlite3_int64 *size) {
    auto &frames = Of<Frames>(file);
    int const result = frames.WriteHeld(file);
    return result == SQLITE_OK ? frames.real->xFileSize(file, size) : result;
  };
}

// Only a head that follows on what was written before is that of a new frame, and so is followed
// by its page: when SQLite mends sums of frames that are there, it writes heads alone.
int LogShortcuts::Frames::Write(sqlite3_file *file, void const *data, int size,
                                sqlite3_int64 offset) {
  if (held >= 0 && offset == held + kHeadSize && size <= kMostPage) {
    std::memcpy(&frame[kHeadSize], data, static_cast<size_t>(size));
    int const result = real->xWrite(file, frame.data(), kHeadSize + size, held);
    held = -1;
    end = result == SQLITE_OK ? offset + size : -1;
    return result;
  }
  if (int const result = WriteHeld(file); result != SQLITE_OK) return result;
  if (size == kHeadSize && offset == end) {
    std::memcpy(frame.data(), data, kHeadSize);
    held = offset;
    return SQLITE_OK;
  }
  int const result = real->xWrite(file, data, size, offset);
  end = result == SQLITE_OK ? offset + size : -1;
  return result;
}

int LogShortcuts::Frames::WriteHeld(sqlite3_file *file) {
  if (held < 0) return SQLITE_OK;
  int const result = real->xWrite(file, frame.data(), kHeadSize, held);
  held = -1;
  end = -1;
  return result;
}

}  // namespace zolt
