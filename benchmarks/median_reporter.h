#ifndef ZOLT41_BENCH_MEDIAN_REPORTER_H_
#define ZOLT41_BENCH_MEDIAN_REPORTER_H_

#include <benchmark/benchmark.h>

#include <vector>

namespace zolt::bench {

// Reports the median of the repetitions under the benchmark's name: the time that one thread takes
// for one iteration.
class MedianReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(Context const &context) override;
  void ReportRuns(std::vector<Run> const &runs) override;
};

// Runs what was registered, nine times in random order, so that a disturbance from outside meets
// all of them alike.
void RunInterleaved();

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_MEDIAN_REPORTER_H_
