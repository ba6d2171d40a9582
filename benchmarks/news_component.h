#ifndef ZOLT41_BENCH_NEWS_COMPONENT_H_
#define ZOLT41_BENCH_NEWS_COMPONENT_H_

namespace zolt::bench {

// Hears what OurNews sends through a sink, on a thread that waits in GetMessageA.
void WatchComponent();

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_NEWS_COMPONENT_H_
