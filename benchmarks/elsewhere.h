#ifndef ZOLT41_BENCH_ELSEWHERE_H_
#define ZOLT41_BENCH_ELSEWHERE_H_

#include <sys/types.h>

namespace zolt::bench {

// Another process that writes to other sections of the same home, one value every millisecond, for
// as long as this object lives. It has begun when the constructor returns.
class WriterElsewhere {
 public:
  WriterElsewhere();
  ~WriterElsewhere();
  WriterElsewhere(WriterElsewhere const &) = delete;
  WriterElsewhere &operator=(WriterElsewhere const &) = delete;

 private:
  pid_t process_ = -1;
  int stop_ = -1;
};

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_ELSEWHERE_H_
