#ifndef ZOLT41_NOTIFY_NOTIFICATION_INFO_H_
#define ZOLT41_NOTIFY_NOTIFICATION_INFO_H_

// One changed value, as subscribers get it: texts in the local code page, ended with a NUL. What
// does not fit is cut to 255, 1023 and 1023 bytes; what stands behind a NUL means nothing.
struct NotificationInfo {
  char name[256];
  char newValue[1024];  // empty for a value that is no text or was removed
  char oldValue[1024];  // empty for a value that was no text or did not exist
};
static_assert(sizeof(NotificationInfo) == 2304);

#endif  // ZOLT41_NOTIFY_NOTIFICATION_INFO_H_
