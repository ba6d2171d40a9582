#ifndef ZOLT41_SERVICES_MAIL_STATE_H_
#define ZOLT41_SERVICES_MAIL_STATE_H_

#include <cstdint>

namespace zolt {

// Leaves what this process has found about mail in the block that all processes share, cut to 32
// bits; nobody believes it. Who did not get as far as the module leaves another's words for it and
// its entry as they are.
void ShareNoMail();
void ShareMailState(uintptr_t entry, uintptr_t module);

// The next call tests anew; for trials.
void ForgetMailTest();

}  // namespace zolt

#endif  // ZOLT41_SERVICES_MAIL_STATE_H_
