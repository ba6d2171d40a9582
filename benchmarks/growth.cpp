// How the cost of one value grows with the number of values in its section, and what the cache of
// values takes. A program of its own for each number, so that its cache is that of such a program:
// bench_growth fill COUNT makes a section and files of the peers, bench_growth speed COUNT measures
// with them once, and bench_growth memory COUNT measures sizes.

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/lmdb_store.h"
#include "benchmarks/our_store.h"
#include "benchmarks/sqlite_store.h"

namespace {

using namespace zolt::bench;

constexpr size_t kReads = 200'000;
constexpr size_t kWrites = 400;
constexpr size_t kSteps = 20'000;
// More names than the cache has places for.
constexpr size_t kAbsentNames = 400'000;
// Has no divisor in common with the sizes, so that all values have their turn.
constexpr size_t kStride = 7'919;

std::string SectionOf(size_t size) {
  return "Growth" + std::to_string(size);
}

// The time of each of `count` items.
template <typename Round>
double TimePerItem(size_t count, Round round) {
  Stopwatch const watch;
  round();
  return watch.Nanoseconds() / static_cast<double>(count);
}

// Up to 240 names that lie evenly over the section.
std::vector<std::string> SomeNames(size_t size) {
  size_t const count = std::min(size, kValues);
  std::vector<std::string> const all = Names(size);
  std::vector<std::string> some;
  for (size_t i = 0; i < count; i++) some.push_back(all[i * size / count]);
  return some;
}

// All names, each far from the one before it.
std::vector<std::string> SpreadNames(size_t size) {
  std::vector<std::string> const all = Names(size);
  std::vector<std::string> spread;
  for (size_t i = 0; i < size; i++) spread.push_back(all[i * kStride % size]);
  return spread;
}

template <typename Store>
void ReadInTurn(Store &store, size_t count) {
  char buffer[kTextSize];
  size_t index = 0;
  for (size_t i = 0; i < count; i++) {
    store.Read(index, buffer);
    if (++index == store.names().size()) index = 0;
  }
}

template <typename Store>
double TimeOfReads(Store &store) {
  ReadInTurn(store, store.names().size());
  return TimePerItem(kReads, [&] { ReadInTurn(store, kReads); });
}

template <typename Store>
double TimeOfWrites(Store &store) {
  size_t index = 0;
  return TimePerItem(kWrites, [&] {
    for (size_t i = 0; i < kWrites; i++) {
      store.Write(index);
      if (++index == store.names().size()) index = 0;
    }
  });
}

void WalkOnce(CEnumPrefs *walk, size_t size) {
  size_t found = 0;
  walk->Reset();
  while (walk->Next() > 0) found++;
  Require(found == size, "a walk did not meet all values");
}

// The walks read the list of names anew after another name came in.
struct WalkTimes {
  double first;
  double later;
};

WalkTimes TimeOfWalks(OurStore const &store, size_t size) {
  auto const id = static_cast<int32_t>(store.section());
  CEnumPrefs *walk = GetUserPrefs()->GetEnum(0, id, SectionOf(size).c_str());
  GetUserPrefs()->WriteStr(store.section(), "another", "x", PrefLevelUser);
  GetUserPrefs()->RemoveValue(store.section(), "another");
  double const first = TimePerItem(size, [&] { WalkOnce(walk, size); });
  size_t const walks = std::max<size_t>(kSteps / size, 1);
  double const later = TimePerItem(walks * size, [&] {
    for (size_t i = 0; i < walks; i++) WalkOnce(walk, size);
  });
  walk->Release();
  return {first, later};
}

double TimeOfCursor(SqliteStore *store, size_t size) {
  size_t const walks = std::max<size_t>(kSteps / size, 1);
  Require(store->Walk() == size, "a cursor did not meet all values");
  return TimePerItem(walks * size, [&] {
    for (size_t i = 0; i < walks; i++) store->Walk();
  });
}

std::string PeerFile(size_t size, char const *ending) {
  return WorkFile("growth" + std::to_string(size) + ending);
}

// In the order of the names, as a program would have made them.
void Fill(size_t size) {
  OurStore(Names(size), SectionOf(size).c_str()).Fill();
  LmdbFile file(PeerFile(size, ".lmdb"));
  LmdbStore<LmdbRead::fresh>(file, Names(size)).Fill();
  SqliteStore(Names(size), PeerFile(size, ".sqlite")).Fill();
}

void MeasureSpeed(size_t size) {
  std::string const section = SectionOf(size);
  OurStore some(SomeNames(size), section.c_str());
  OurStore all(SpreadNames(size), section.c_str());
  LmdbFile file(PeerFile(size, ".lmdb"));
  LmdbStore<LmdbRead::fresh> lmdb(file, SpreadNames(size));
  SqliteStore sqlite(SpreadNames(size), PeerFile(size, ".sqlite"));
  // In the order of the section, which is not that of the reads that are measured.
  OurStore ordered(Names(size), section.c_str());
  ReadInTurn(ordered, size);
  WalkTimes const walks = TimeOfWalks(all, size);
  std::pair<char const *, double> const times[] = {
      {"all.ours", TimeOfReads(all)},
      {"all.lmdb", TimeOfReads(lmdb)},
      {"some.ours", TimeOfReads(some)},
      {"write.ours", TimeOfWrites(all)},
      {"write.sqlite", TimeOfWrites(sqlite)},
      {"first_walk.ours", walks.first},
      {"walk.ours", walks.later},
      {"walk.sqlite", TimeOfCursor(&sqlite, size)},
  };
  for (auto const &[what, time] : times) {
    Report("growth." + std::string(what) + "." + std::to_string(size), time);
  }
}

double ResidentBytes() {
  size_t whole = 0;
  size_t resident = 0;
  std::ifstream("/proc/self/statm") >> whole >> resident;
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

// The first reads bring in pages of the hive and of code that are not the cache's.
void MeasureMemory(size_t size) {
  OurStore store(Names(size), SectionOf(size).c_str());
  char buffer[kTextSize];
  for (size_t i = 0; i < size / 10; i++) {
    GetUserPrefs()->ReadStr(store.section(), "none", buffer, "", 0);
    if (i < kValues) store.Read(i, buffer);
  }
  double const before = ResidentBytes();
  for (size_t i = kValues; i < size; i++) store.Read(i, buffer);
  Report("memory.values", ResidentBytes() - before);
  for (size_t i = 0; i < kAbsentNames; i++) {
    char name[32];
    std::snprintf(name, sizeof name, "none-%zu", i);
    GetUserPrefs()->ReadStr(store.section(), name, buffer, "", 0);
  }
  Report("memory.full", ResidentBytes() - before);
}

}  // namespace

int main(int count, char **arguments) {
  Require(count == 3, "usage: bench_growth fill|speed|memory COUNT");
  std::map<std::string, void (*)(size_t)> const modes = {
      {"fill", Fill}, {"speed", MeasureSpeed}, {"memory", MeasureMemory}};
  auto const mode = modes.find(arguments[1]);
  Require(mode != modes.end(), "there is no such mode");
  OurLibrary const library;
  mode->second(std::stoul(arguments[2]));
}
