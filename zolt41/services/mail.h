#ifndef ZOLT41_SERVICES_MAIL_H_
#define ZOLT41_SERVICES_MAIL_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Hands a message to the machine's mail program; docs/services.md tells which that is. Any thread
// may call; texts are local text.

// 1 if mail can be sent, else 0. What the first call in a process finds stays so.
ZOLT_API int32_t CanMail();

// Sends `text` to one recipient. With `silent` 0 the mail program shows the message first, where
// there is a desktop to show it on. `sender` and `attachment` have no effect and may be null. Gives
// 0 if it was sent, or, with nothing done, if CanMail gives 0; 1 if the user gave it up, 3 if the
// mail program did not let him in; any other number for a failure, of which the user is told.
ZOLT_API uint32_t SendMail(char *sender, char *recipient, char *subject, char *text,
                           char *attachment, int32_t silent);

// For programs that tell of a failure themselves: the same, and nobody is told.
ZOLT_API uint32_t ZOLTSendMail(char *recipient, char *subject, char *text, int32_t silent);

// What the native mail service refuses before it does anything: 25 for a recipient that is not one
// address of visible ASCII, 2 for control characters in the subject, else 0. Null is "".
ZOLT_API uint32_t ZOLTCheckMail(char const *recipient, char const *subject);

// 1 if the mail program shows a message with `silent` 0 first, 0 if it would be sent unseen.
ZOLT_API int32_t ZOLTCanShowMail();

#endif  // ZOLT41_SERVICES_MAIL_H_
