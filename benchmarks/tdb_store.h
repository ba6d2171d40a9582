#ifndef ZOLT41_BENCH_TDB_STORE_H_
#define ZOLT41_BENCH_TDB_STORE_H_

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <tdb.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "benchmarks/measure.h"
#include "benchmarks/work.h"

namespace zolt::bench {

// Writes are transactions that are not synced: they outlive the process. A process may open a file
// of TDB only once, and on one thread.
class TdbStore {
 public:
  TdbStore() : names_(Names(kValues)) {
    for (std::string const &name : names_) keys_.push_back(kSectionName + ("/" + name));
    file_ = tdb_open(WorkFile("peer.tdb").c_str(), 10007, TDB_NOSYNC, O_RDWR | O_CREAT, 0600);
    Require(file_ != nullptr, "TDB did not open its file");
  }
  ~TdbStore() { tdb_close(file_); }
  TdbStore(TdbStore const &) = delete;
  TdbStore &operator=(TdbStore const &) = delete;

  void Fill() {
    for (size_t i = 0; i < names_.size(); i++) Write(i);
  }

  void Read(size_t index, char *buffer) {
    TDB_DATA const value = tdb_fetch(file_, DataOf(keys_[index].data(), keys_[index].size()));
    Require(value.dptr != nullptr, "TDB has no such value");
    std::memcpy(buffer, value.dptr, value.dsize);
    std::free(value.dptr);
  }

  void Write(size_t index) {
    std::string text = NextText(names_[index]);
    Require(tdb_transaction_start(file_) == 0, "a transaction of TDB did not begin");
    tdb_store(file_, DataOf(keys_[index].data(), keys_[index].size()),
              DataOf(text.data(), text.size() + 1), TDB_REPLACE);
    Require(tdb_transaction_commit(file_) == 0, "a transaction of TDB was not kept");
  }

  std::vector<std::string> const &names() const { return names_; }

 private:
  static TDB_DATA DataOf(char *bytes, size_t size) {
    return {reinterpret_cast<unsigned char *>(bytes), size};
  }

  std::vector<std::string> names_;
  std::vector<std::string> keys_;
  TDB_CONTEXT *file_ = nullptr;
};

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_TDB_STORE_H_
