#include "benchmarks/measure.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace zolt::bench {

void Report(std::string const &key, double figure) {
  std::printf("%s\t%.2f\n", key.c_str(), figure);
}

void ReportVersion(std::string const &peer, std::string const &version) {
  std::printf("version.%s\t%s\n", peer.c_str(), version.c_str());
}

double Median(std::vector<double> figures) {
  std::sort(figures.begin(), figures.end());
  size_t const middle = figures.size() / 2;
  return figures.size() % 2 == 1 ? figures[middle] : (figures[middle - 1] + figures[middle]) / 2;
}

std::string WorkFile(std::string const &name) {
  char const *directory = std::getenv("BENCH_DIR");
  if (directory == nullptr) Fail("BENCH_DIR is not set; start ./bench instead");
  return std::string(directory) + "/" + name;
}

void Fail(std::string const &what) {
  std::fprintf(stderr, "bench: %s\n", what.c_str());
  std::exit(1);
}

void Require(bool held, char const *what) {
  if (!held) Fail(what);
}

}  // namespace zolt::bench
