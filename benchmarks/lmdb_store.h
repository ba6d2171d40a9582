#ifndef ZOLT41_BENCH_LMDB_STORE_H_
#define ZOLT41_BENCH_LMDB_STORE_H_

#include <lmdb.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/measure.h"
#include "benchmarks/work.h"

namespace zolt::bench {

inline void CheckLmdb(int result) {
  if (result != MDB_SUCCESS) Fail(std::string("LMDB: ") + mdb_strerror(result));
}

// A process may open a file of LMDB only once, so its threads share this. A commit is not synced:
// it outlives the process, as the library's do, and not a fall of the system.
struct LmdbFile {
  explicit LmdbFile(std::string const &path = WorkFile("peer.lmdb")) {
    CheckLmdb(mdb_env_create(&environment));
    CheckLmdb(mdb_env_set_mapsize(environment, size_t{1} << 28));
    CheckLmdb(mdb_env_open(environment, path.c_str(), MDB_NOSUBDIR | MDB_NOSYNC | MDB_NOTLS, 0600));
    MDB_txn *transaction = nullptr;
    CheckLmdb(mdb_txn_begin(environment, nullptr, 0, &transaction));
    CheckLmdb(mdb_dbi_open(transaction, nullptr, 0, &database));
    CheckLmdb(mdb_txn_commit(transaction));
  }
  ~LmdbFile() { mdb_env_close(environment); }
  LmdbFile(LmdbFile const &) = delete;
  LmdbFile &operator=(LmdbFile const &) = delete;

  MDB_env *environment = nullptr;
  MDB_dbi database = 0;
};

enum class LmdbRead {
  fresh,    // each get renews the transaction, and so sees what others have written
  one_view  // all gets in one transaction, which sees nothing new
};

// The values under keys that are put together beforehand.
template <LmdbRead kind>
class LmdbStore {
 public:
  explicit LmdbStore(LmdbFile &file, std::vector<std::string> names = Names(kValues))
      : file_(file), names_(std::move(names)) {
    for (std::string const &name : names_) keys_.push_back(kSectionName + ("/" + name));
    CheckLmdb(mdb_txn_begin(file_.environment, nullptr, MDB_RDONLY, &reader_));
    if (kind == LmdbRead::fresh) mdb_txn_reset(reader_);
  }
  ~LmdbStore() { mdb_txn_abort(reader_); }
  LmdbStore(LmdbStore const &) = delete;
  LmdbStore &operator=(LmdbStore const &) = delete;

  void Fill() {
    BeginWrite();
    for (size_t i = 0; i < names_.size(); i++) Put(i);
    EndWrite();
  }

  // The bytes that a get gives are good only within the transaction, so they are copied.
  void Read(size_t index, char *buffer) {
    if (kind == LmdbRead::fresh) mdb_txn_renew(reader_);
    MDB_val key = KeyOf(index);
    MDB_val value;
    CheckLmdb(mdb_get(reader_, file_.database, &key, &value));
    std::memcpy(buffer, value.mv_data, value.mv_size);
    if (kind == LmdbRead::fresh) mdb_txn_reset(reader_);
  }

  void Write(size_t index) {
    BeginWrite();
    Put(index);
    EndWrite();
  }

  void BeginWrite() { CheckLmdb(mdb_txn_begin(file_.environment, nullptr, 0, &writer_)); }
  void EndWrite() { CheckLmdb(mdb_txn_commit(writer_)); }

  std::vector<std::string> const &names() const { return names_; }

 private:
  MDB_val KeyOf(size_t index) { return {keys_[index].size(), keys_[index].data()}; }

  void Put(size_t index) {
    std::string text = NextText(names_[index]);
    MDB_val key = KeyOf(index);
    MDB_val value{text.size() + 1, text.data()};
    CheckLmdb(mdb_put(writer_, file_.database, &key, &value, 0));
  }

  LmdbFile &file_;
  std::vector<std::string> names_;
  std::vector<std::string> keys_;
  MDB_txn *reader_ = nullptr;
  MDB_txn *writer_ = nullptr;
};

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_LMDB_STORE_H_
