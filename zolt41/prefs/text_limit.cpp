#include "zolt41/prefs/text_limit.h"

#include <limits>
#include <utility>

namespace zolt {
namespace {

// As with the last failure: a read must not cost a call into the loader.
__attribute__((tls_model("initial-exec"))) constinit thread_local int32_t limit =
    std::numeric_limits<int32_t>::max();

}  // namespace

int32_t TextLimit() {
  return limit;
}

LimitedText::LimitedText(int32_t newLimit) : before_(std::exchange(limit, newLimit)) {}

LimitedText::~LimitedText() {
  limit = before_;
}

}  // namespace zolt
