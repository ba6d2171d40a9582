#ifndef ZOLT41_FOUNDATION_AFS_RESULTS_H_
#define ZOLT41_FOUNDATION_AFS_RESULTS_H_

#include <cstdint>

namespace zolt {

// What AFS_Read gives where the file ends before all is read.
inline constexpr int32_t kAfsEndedEarly = -8995;

}  // namespace zolt

#endif  // ZOLT41_FOUNDATION_AFS_RESULTS_H_
