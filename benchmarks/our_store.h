#ifndef ZOLT41_BENCH_OUR_STORE_H_
#define ZOLT41_BENCH_OUR_STORE_H_

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/measure.h"
#include "benchmarks/work.h"
#include "zolt41/zolt41.h"

namespace zolt::bench {

// The library between its start and its stop, on the home that ZOLT_HOME names.
class OurLibrary {
 public:
  OurLibrary() {
    InitZOLT();
    InitPrefs(nullptr);
    Require(UserPrefs() != nullptr, "the stores did not open");
  }
  ~OurLibrary() { DisposeZOLT(); }
  OurLibrary(OurLibrary const &) = delete;
  OurLibrary &operator=(OurLibrary const &) = delete;
};

// One section of the user's store, or of the system's. A read asks the user's store, which falls
// back to the system's.
class OurStore {
 public:
  explicit OurStore(std::vector<std::string> names = Names(kValues),
                    char const *section = kSectionName, PrefLevel level = PrefLevelUser)
      : names_(std::move(names)), level_(level) {
    auto const id = GetUserPrefs()->GetIDFromString(section, 0);
    if (GetUserPrefs()->GetSectionFromID(id) == nullptr) {
      Require(GetUserPrefs()->RegisterSection(id, section) != 0, "the section did not open");
    }
    section_ = static_cast<uint32_t>(id);
  }

  void Fill() {
    BeginWrite();
    for (size_t i = 0; i < names_.size(); i++) Write(i);
    EndWrite();
  }

  void Read(size_t index, char *buffer) {
    UserPrefs()->ReadStr(section_, names_[index].c_str(), buffer, "", 0);
  }

  void Write(size_t index) {
    std::string const &name = names_[index];
    UserPrefs()->WriteStr(section_, name.c_str(), NextText(name), level_);
  }

  // Between these two the writes are one transaction.
  void BeginWrite() {
    bool const user = level_ == PrefLevelUser;
    transaction_.emplace(user ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE);
    Require(transaction_->Begin() == ERROR_SUCCESS, "our transaction did not begin");
  }
  void EndWrite() {
    Require(transaction_->Commit() == ERROR_SUCCESS, "our transaction was not kept");
    transaction_.reset();
  }

  uint32_t section() const { return section_; }
  std::vector<std::string> const &names() const { return names_; }

 private:
  std::vector<std::string> names_;
  PrefLevel level_;
  uint32_t section_;
  std::optional<HiveTransaction> transaction_;
};

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_OUR_STORE_H_
