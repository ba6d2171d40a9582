#ifndef ZOLT41_BENCH_NEWS_OURS_H_
#define ZOLT41_BENCH_NEWS_OURS_H_

#include "benchmarks/our_store.h"

namespace zolt::bench {

// Sends by a zolt::Transaction with one value, which returns when all who listen have taken it.
class OurNews {
 public:
  void Send(char const *text);

 private:
  OurLibrary library_;
  OurStore store_{Names(1), "News"};
};

// Hears on a thread that waits in GetMessageA.
void WatchOurs();

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_NEWS_OURS_H_
