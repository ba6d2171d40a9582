#include "zolt41/prefs/write_transaction.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zolt41/notify/announce.h"
#include "zolt41/notify/announcement.h"
#include "zolt41/notify/channel_guard.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/prefs/announced_ids.h"
#include "zolt41/prefs/change_set.h"
#include "zolt41/prefs/level_tree.h"
#include "zolt41/prefs/stores.h"
#include "zolt41/prefs/text_argument.h"

namespace zolt {
namespace {

constexpr size_t kMostRecords = 128;

struct Step {
  bool clear;
  uint32_t section;
  std::string name;
  MaybeValue value;
};

// Null for a level that is none of the four.
WinPrefs *StoreOf(PrefLevel level) {
  constexpr std::array kStores = {GetSharedSystemPrefs, GetSharedUserPrefs, GetSystemPrefs,
                                  GetUserPrefs};
  return HasTree(level) ? kStores[static_cast<size_t>(level) - PrefLevelSharedSystem]() : nullptr;
}

// Why the last operation on the hive failed; by Failure.
Commit FailureOfHive() {
  constexpr Commit kCommits[] = {Commit::io,   Commit::denied,   Commit::locked,
                                 Commit::full, Commit::damaged,  Commit::newer,
                                 Commit::io,   Commit::timed_out};
  return kCommits[ZOLTLastFailure(nullptr, 0)];
}

Commit Refuse(Failure failure, Commit commit, std::string_view subject) {
  SetFailure(failure, subject);
  return commit;
}

ChangeType TypeOf(ChangeSet::Value const &value) {
  if (!value.after) return ChangeType::removed;
  return value.before ? ChangeType::modified : ChangeType::created;
}

// Calls `tell` with the changes of a type, so many at once as an announcement takes.
template <typename Tell>
void TellTexts(ChangeSet::Section const &section, ChangeType type, Tell tell) {
  std::vector<ChangeText> texts;
  for (ChangeSet::Value const &value : section.values) {
    if (value.before == value.after || TypeOf(value) != type) continue;
    texts.push_back({value.name, value.after ? value.after->text() : std::string_view(),
                     value.before ? value.before->text() : std::string_view()});
    if (texts.size() < kMostRecords) continue;
    tell(texts);
    texts.clear();
  }
  if (!texts.empty()) tell(texts);
}

void AnnounceChanges(ChangeSet const &changes, PrefLevel level, uint32_t extra) {
  constexpr std::array kOrder = {ChangeType::removed, ChangeType::modified, ChangeType::created};
  for (ChangeSet::Section const &section : changes.sections()) {
    AnnouncedIds const ids = IdsToAnnounce(static_cast<int32_t>(section.id));
    for (ChangeType const type : kOrder) {
      AnnouncementHead const head = {static_cast<uint32_t>(ids.id),
                                     static_cast<uint32_t>(ids.alias), static_cast<uint32_t>(level),
                                     extra, static_cast<uint32_t>(type)};
      TellTexts(section, type, [&head](std::span<ChangeText const> texts) {
        Announce({head, texts}, Pause::none);
      });
    }
  }
}

}  // namespace

struct Transaction::Collected {
  std::vector<Step> expected;
  std::vector<Step> steps;
};

Transaction::Transaction(PrefLevel level, uint32_t extra)
    : level_(level), extra_(extra), collected_(std::make_unique<Collected>()) {}

Transaction::~Transaction() = default;

void Transaction::SetStr(uint32_t section, char const *name, char const *value) {
  collected_->steps.push_back({false, section, TextOrEmpty(name), TextValue(TextOrEmpty(value))});
}

void Transaction::SetFree(uint32_t section, char const *name, uint32_t type, void const *data,
                          uint32_t size) {
  collected_->steps.push_back({false, section, TextOrEmpty(name), BytesValue(type, data, size)});
}

void Transaction::Remove(uint32_t section, char const *name) {
  collected_->steps.push_back({false, section, TextOrEmpty(name), {}});
}

void Transaction::Clear(uint32_t section) {
  collected_->steps.push_back({true, section, "", {}});
}

void Transaction::Expect(uint32_t section, char const *name, char const *text) {
  collected_->expected.push_back(
      {false, section, TextOrEmpty(name), text == nullptr ? MaybeValue() : TextValue(text)});
}

void Transaction::ExpectFree(uint32_t section, char const *name, uint32_t type, void const *data,
                             uint32_t size) {
  collected_->expected.push_back({false, section, TextOrEmpty(name), BytesValue(type, data, size)});
}

Commit Transaction::CheckExpected(ChangeSet *changes) {
  WinPrefs *const store = StoreOf(level_);
  for (Step const &step : std::exchange(collected_->expected, {})) {
    HKEY const key = store->SectionKey(static_cast<int32_t>(step.section), 0);
    MaybeValue stored;
    if (!changes->Read(step.section, key, step.name, &stored)) return FailureOfHive();
    if (stored != step.value) return Commit::mismatch;
  }
  return Commit::done;
}

Commit Transaction::Apply(ChangeSet *changes, HiveTransaction *hive) {
  WinPrefs *const store = StoreOf(level_);
  // A section may not be open because the hive could not be read, which its own failure tells.
  if (Commit const open = CheckSections(); open != Commit::done) return open;
  // What is expected was so before the changes, wherever it was said.
  if (Commit const met = CheckExpected(changes); met != Commit::done) return met;
  for (Step &step : std::exchange(collected_->steps, {})) {
    HKEY const key = store->SectionKey(static_cast<int32_t>(step.section), 0);
    bool const whole = step.clear
                           ? changes->Clear(step.section, key)
                           : changes->Set(step.section, key, step.name, std::move(step.value));
    if (!whole) return FailureOfHive();
  }
  if (!changes->changes()) return Commit::unchanged;
  AlertBeforeAnnouncing();
  if (!changes->Write() || hive->Commit() != ERROR_SUCCESS) return FailureOfHive();
  return Commit::done;
}

Commit Transaction::CheckSections() const {
  WinPrefs *const store = StoreOf(level_);
  for (auto const *const steps : {&collected_->expected, &collected_->steps}) {
    for (Step const &step : *steps) {
      if (store->SectionKey(static_cast<int32_t>(step.section), 0) != 0) continue;
      char subject[32];
      std::snprintf(subject, sizeof subject, "section 0x%08X", step.section);
      return Refuse(Failure::denied, Commit::denied, subject);
    }
  }
  return Commit::done;
}

Commit Transaction::Write() {
  return Write({});
}

Commit Transaction::Write(std::function<void()> const &look) {
  ClearFailure();
  Commit result = Commit::unchanged;
  if (StoreOf(level_) == nullptr) {
    result = Refuse(Failure::denied, Commit::denied, "level");
  } else if (look || !collected_->steps.empty() || !collected_->expected.empty()) {
    result = WriteAndAnnounce(look);
  }
  collected_->expected.clear();
  collected_->steps.clear();
  return result;
}

Commit Transaction::WriteAndAnnounce(std::function<void()> const &look) {
  ChannelGuard const channel(std::min(LockWait(), ChannelGuard::kWait));
  if (channel.timedOut()) {
    return Refuse(Failure::timed_out, Commit::timed_out, "/ZO/ZOLT/SECURE2");
  }
  ChangeSet changes;
  std::exception_ptr thrown;
  Commit result = Commit::unchanged;
  {
    Announcing const announcing;
    try {
      result = LookAndApply(look, &changes);
    } catch (...) {
      // Nothing was written, so there is nothing that nobody told.
      thrown = std::current_exception();
    }
    if (result == Commit::done) AnnounceChanges(changes, level_, extra_);
  }
  if (thrown != nullptr) std::rethrow_exception(thrown);
  return result;
}

Commit Transaction::LookAndApply(std::function<void()> const &look, ChangeSet *changes) {
  HiveTransaction hive(TreeOf(level_).root);
  if (hive.Begin() != ERROR_SUCCESS) return FailureOfHive();
  if (look) look();
  return Apply(changes, &hive);
}

}  // namespace zolt
