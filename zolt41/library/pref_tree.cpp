#include "zolt41/library/pref_tree.h"

#include <new>

#include "zolt41/library/store_set.h"
#include "zolt41/notify/channel_guard.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/string_table.h"
#include "zolt41/prefs/level_tree.h"
#include "zolt41/prefs/stores.h"

namespace {

struct PrefTreeFrame {
  PrefTreeFrame *next;
  WinPrefs *sharedUser;
  WinPrefs *sharedSystem;
  WinPrefs *user;
  WinPrefs *system;
  bool set;  // else the stores are still these
};

constinit PrefTreeFrame *frames = nullptr;

// Back from the stores that are set.
void Return(PrefTreeFrame const &frame) {
  delete GetSharedUserPrefs();
  delete GetSharedSystemPrefs();
  delete GetUserPrefs();
  delete GetSystemPrefs();
  SetSharedUserPrefs(frame.sharedUser);
  SetSharedSystemPrefs(frame.sharedSystem);
  SetUserPrefs(frame.user);
  SetSystemPrefs(frame.system);
}

}  // namespace

int32_t ZOLTDefaultTree(PrefLevel level, char *buffer, int32_t size) {
  if (!zolt::HasTree(level)) return 0;
  return LoadStringA(zolt::LibraryInstance(), zolt::TreeOf(level).defaultPath, buffer, size);
}

void SetPrefTree(char const *path) {
  auto *const frame = new (std::nothrow) PrefTreeFrame{};
  if (frame == nullptr) return;
  zolt::ChannelGuard guard;
  *frame = {frames,         GetSharedUserPrefs(), GetSharedSystemPrefs(),
            GetUserPrefs(), GetSystemPrefs(),     true};
  frames = frame;
  if (zolt::BuildStores(path)) return;
  Return(*frame);
  frame->set = false;
  zolt::SetFailure(zolt::Failure::full, "");
}

void ResetPrefTree() {
  zolt::ChannelGuard guard;
  PrefTreeFrame *const frame = frames;
  if (frame == nullptr) return;
  if (frame->set) Return(*frame);
  frames = frame->next;
  delete frame;
}
