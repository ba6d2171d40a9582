// What the change notification needs to know of sections.
#include <cstdint>
#include <cstring>

#include "zolt41/foundation/zoltx_string.h"
#include "zolt41/notify/pref_notify.h"
#include "zolt41/notify/transaction.h"
#include "zolt41/prefs/pref_sections.h"
#include "zolt41/prefs/stores.h"
#include "zolt41/prefs/text_argument.h"

void BeginPrefsModify(char const *path, int32_t level, uint32_t extra) {
  ZOLTXString const whole(zolt::TextOrEmpty(path));
  int32_t last = whole.ROffsetOf('\\');
  if (last < 0) last = whole.ROffsetOf(':');
  WinPrefs *const store = GetSystemPrefs();
  if (store == nullptr) return;
  int32_t const id = store->SectionID(whole.Mid(last + 1), 0);
  if (id != -1) BeginPrefsModify(id, level, extra);
}

void CPrefNotify::AddNotificationID(int32_t id, int32_t system, int32_t ignored) {
  AddNotificationKey(SectionKey(id, system), static_cast<uint32_t>(id), ignored);
}
