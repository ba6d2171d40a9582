#ifndef ZOLT41_BENCH_MEASURE_H_
#define ZOLT41_BENCH_MEASURE_H_

#include <chrono>
#include <string>
#include <vector>

namespace zolt::bench {

// Figures go to the standard output, one a line: key, tab, figure. Times are in nanoseconds and
// sizes in bytes.
void Report(std::string const &key, double figure);
void ReportVersion(std::string const &peer, std::string const &version);

// Of an even count the mean of the two in the middle; there must be one figure at least.
double Median(std::vector<double> figures);

class Stopwatch {
 public:
  double Nanoseconds() const {
    return std::chrono::duration<double, std::nano>(Clock::now() - start_).count();
  }

 private:
  using Clock = std::chrono::steady_clock;
  Clock::time_point start_ = Clock::now();
};

// A path in the directory of this run, which BENCH_DIR names.
std::string WorkFile(std::string const &name);

// Ends the program: a figure of work that was not done would mislead.
[[noreturn]] void Fail(std::string const &what);
void Require(bool held, char const *what);

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_MEASURE_H_
