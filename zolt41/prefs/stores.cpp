#include "zolt41/prefs/stores.h"

namespace {

constinit WinPrefs *userStore = nullptr;
constinit WinPrefs *systemStore = nullptr;
constinit WinPrefs *sharedUserStore = nullptr;
constinit WinPrefs *sharedSystemStore = nullptr;

}  // namespace

WinPrefs *GetUserPrefs() {
  return userStore;
}
WinPrefs *GetSystemPrefs() {
  return systemStore;
}
WinPrefs *GetSharedUserPrefs() {
  return sharedUserStore;
}
WinPrefs *GetSharedSystemPrefs() {
  return sharedSystemStore;
}

void SetUserPrefs(WinPrefs *store) {
  userStore = store;
}
void SetSystemPrefs(WinPrefs *store) {
  systemStore = store;
}
void SetSharedUserPrefs(WinPrefs *store) {
  sharedUserStore = store;
}
void SetSharedSystemPrefs(WinPrefs *store) {
  sharedSystemStore = store;
}

TYPrefs *UserPrefs() {
  return userStore;
}
TYPrefs *SystemPrefs() {
  return systemStore;
}
TYPrefs *SharedUserPrefs() {
  return sharedUserStore;
}
TYPrefs *SharedSystemPrefs() {
  return sharedSystemStore;
}
