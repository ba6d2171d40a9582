#include "zolt41/library/library.h"

#include <initializer_list>
#include <new>
#include <string>
#include <utility>

#include "zolt41/library/store_set.h"
#include "zolt41/notify/channel_guard.h"
#include "zolt41/notify/notify_thread.h"
#include "zolt41/platform/kernel/shared_segment.h"
#include "zolt41/platform/registry/hive_file.h"
#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/platform/system/home.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/string_table.h"
#include "zolt41/prefs/level_tree.h"
#include "zolt41/prefs/standard_sections.h"
#include "zolt41/prefs/stores.h"
#include "zolt41/prefs/tree_path.h"

namespace {

constinit bool initialised = false;
constinit int32_t useCount = 0;
// The pointers to the stores outlive them.
constinit bool storesStand = false;

void DeleteStores() {
  delete GetUserPrefs();
  delete GetSystemPrefs();
  delete GetSharedSystemPrefs();
  delete GetSharedUserPrefs();
}

void ForgetStores() {
  for (auto *const set : {SetUserPrefs, SetSystemPrefs, SetSharedUserPrefs, SetSharedSystemPrefs})
    set(nullptr);
}

void Build(char const *path) {
  ForgetStores();
  storesStand = true;
  if (!zolt::BuildStores(path) || !zolt::RegisterStandardSections()) throw std::bad_alloc();
}

void TearDown() {
  if (!std::exchange(storesStand, false)) return;
  zolt::UnregisterStandardSections();
  DeleteStores();
}

// Keys that the program holds open keep the hives in the home in which it opened them.
bool HivesFollow() {
  HKEY key = 0;
  // Whoever opens a key of a root has the hives follow the environment, if they can.
  if (RegOpenKeyA(HKEY_CURRENT_USER, "Software", &key) == ERROR_SUCCESS) RegCloseKey(key);
  return zolt::InspectHive(HKEY_CURRENT_USER).path ==
         zolt::ResolveHivePath(zolt::ResolveHomes().user + "/user.hive");
}

// The channel stays where the hives stay.
void FollowHome() {
  std::string const path = zolt::SegmentPath();
  if (!zolt::SegmentElsewhere(path) || HivesFollow()) zolt::BindSegment(path);
}

// The section whose keys are made last, in the tree in which they are made last.
std::string LastKeyPath(char const *path) {
  char sharedPath[260] = "";
  if (path == nullptr) {
    LoadStringA(zolt::LibraryInstance(), zolt::kSharedPathString, sharedPath, sizeof sharedPath);
    path = sharedPath;
  }
  std::string last = std::string(path) + ":Conferencing:Layouts";
  zolt::UseBackslashes(last.data());
  return last;
}

// One hive in which all keys are made in one transaction if it lacks some, so that the first start
// costs one commit and not one for each key.
class NewHive {
 public:
  NewHive(HKEY root, std::string const &lastKeyPath) : transaction_(root) {
    HKEY key = 0;
    if (RegOpenKeyA(root, lastKeyPath.c_str(), &key) == ERROR_SUCCESS) {
      RegCloseKey(key);
    } else {
      begun_ = transaction_.Begin() == ERROR_SUCCESS;
    }
  }

  bool Keep() { return !begun_ || transaction_.Commit() == ERROR_SUCCESS; }

 private:
  zolt::HiveTransaction transaction_;
  bool begun_ = false;
};

bool BuildAtOnce(char const *path) {
  std::string const lastKeyPath = LastKeyPath(path);
  NewHive user(HKEY_CURRENT_USER, lastKeyPath);
  NewHive machine(HKEY_LOCAL_MACHINE, lastKeyPath);
  Build(path);
  bool const userKept = user.Keep();
  return machine.Keep() && userKept;
}

}  // namespace

int32_t InitZOLT() {
  ++useCount;
  return 1;
}

namespace {

void StartPrefs(char const *path) {
  FollowHome();
  zolt::ChannelGuard guard;
  zolt::FirstFailure failure;
  if (!BuildAtOnce(path)) {
    failure.Note();
    // The keys that the handles stand for were not kept.
    TearDown();
    Build(path);
  }
  zolt::StartNotificationThread();
  for (HKEY const root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    zolt::ReportHiveFailure(root);
    failure.Note();
  }
}

}  // namespace

void InitPrefs(char const *path) {
  if (initialised) return;
  try {
    StartPrefs(path);
  } catch (...) {
    // Nothing of it stands where memory ran out.
    zolt::StopNotificationThread();
    TearDown();
    ForgetStores();
    throw;
  }
  initialised = true;
}

void DisposeZOLT() {
  if (--useCount != 0) return;
  if (initialised) {
    zolt::StopNotificationThread();
    TearDown();
    initialised = false;
  }
}

uint32_t ZOLTCodePage() {
  return zolt::LocalCodePage();
}
