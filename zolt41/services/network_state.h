#ifndef ZOLT41_SERVICES_NETWORK_STATE_H_
#define ZOLT41_SERVICES_NETWORK_STATE_H_

namespace zolt {

// The next calls look for their modules anew; for trials.
void ForgetNetwork();
void ForgetShell();

}  // namespace zolt

#endif  // ZOLT41_SERVICES_NETWORK_STATE_H_
