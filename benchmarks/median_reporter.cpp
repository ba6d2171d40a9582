#include "benchmarks/median_reporter.h"

#include <iterator>
#include <string>

#include "benchmarks/measure.h"

namespace zolt::bench {

bool MedianReporter::ReportContext(Context const & /*context*/) {
  return true;
}

void MedianReporter::ReportRuns(std::vector<Run> const &runs) {
  std::vector<double> times;
  for (Run const &run : runs) {
    if (run.error_occurred) Fail(run.run_name.function_name + ": " + run.error_message);
    if (run.run_type != Run::RT_Iteration) continue;
    // The run tells the time that passed by the iterations of all threads together.
    times.push_back(run.GetAdjustedRealTime() * static_cast<double>(run.threads));
  }
  if (!times.empty()) Report(runs.front().run_name.function_name, Median(times));
}

void RunInterleaved() {
  std::string program = "bench";
  std::string repetitions = "--benchmark_repetitions=9";
  std::string interleaving = "--benchmark_enable_random_interleaving=true";
  char *arguments[] = {program.data(), repetitions.data(), interleaving.data(), nullptr};
  int count = static_cast<int>(std::size(arguments)) - 1;
  benchmark::Initialize(&count, arguments);
  MedianReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
}

}  // namespace zolt::bench
