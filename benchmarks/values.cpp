// Reading and writing single values, in one process with all peers.

#include <benchmark/benchmark.h>
#include <glib.h>
#include <kconfig_version.h>

#include <optional>

#include "benchmarks/elsewhere.h"
#include "benchmarks/gsettings_store.h"
#include "benchmarks/lmdb_store.h"
#include "benchmarks/median_reporter.h"
#include "benchmarks/our_store.h"
#include "benchmarks/qt_stores.h"
#include "benchmarks/sqlite_store.h"
#include "benchmarks/tdb_store.h"

namespace {

using namespace zolt::bench;

constexpr size_t kBatch = 128;
constexpr char kFallbackSection[] = "Fallback";

LmdbFile &TheLmdbFile() {
  static LmdbFile file;
  return file;
}

struct LmdbFreshStore : LmdbStore<LmdbRead::fresh> {
  LmdbFreshStore() : LmdbStore(TheLmdbFile()) {}
};
struct LmdbOneViewStore : LmdbStore<LmdbRead::one_view> {
  LmdbOneViewStore() : LmdbStore(TheLmdbFile()) {}
};

// A section that has values in the system's store only.
struct FallbackStore : OurStore {
  FallbackStore() : OurStore(Names(kValues), kFallbackSection, PrefLevelSystem) {}
};

template <typename Store>
void RequireTexts(Store &store) {
  for (size_t i = 0; i < kValues; i++) {
    char buffer[kTextSize] = "";
    store.Read(i, buffer);
    Require(IsTextOf(store.names()[i], buffer), "a value that was read is not what was written");
  }
}

// Each thread has a store object of its own on the same file.
template <typename Store>
void ReadValues(benchmark::State &state) {
  Store store;
  RequireTexts(store);
  char buffer[kTextSize];
  size_t index = 0;
  for ([[maybe_unused]] auto _ : state) {
    store.Read(index, buffer);
    benchmark::DoNotOptimize(buffer);
    benchmark::ClobberMemory();
    if (++index == kValues) index = 0;
  }
}

template <typename Store>
void WriteValues(benchmark::State &state) {
  Store store;
  size_t index = 0;
  for ([[maybe_unused]] auto _ : state) {
    store.Write(index);
    if (++index == kValues) index = 0;
  }
  RequireTexts(store);
}

template <typename Store>
void WriteBatches(benchmark::State &state) {
  Store store;
  for ([[maybe_unused]] auto _ : state) {
    store.BeginWrite();
    for (size_t i = 0; i < kBatch; i++) store.Write(i);
    store.EndWrite();
  }
  RequireTexts(store);
}

std::optional<WriterElsewhere> otherWriter;

void StartWriter(benchmark::State const & /*state*/) {
  otherWriter.emplace();
}

void StopWriter(benchmark::State const & /*state*/) {
  otherWriter.reset();
}

benchmark::internal::Benchmark *Add(char const *key, void (*body)(benchmark::State &),
                                    double seconds) {
  return benchmark::RegisterBenchmark(key, body)->UseRealTime()->MinTime(seconds);
}

template <typename Store>
void AddReads(std::string const &peer) {
  Add(("read." + peer).c_str(), ReadValues<Store>, 0.08);
  Add(("read2." + peer).c_str(), ReadValues<Store>, 0.08)->Threads(2);
}

template <typename Store>
void AddWrites(std::string const &peer, double seconds) {
  Add(("write." + peer).c_str(), WriteValues<Store>, seconds);
}

template <typename Store>
void AddBatches(std::string const &peer) {
  Add(("batch." + peer).c_str(), WriteBatches<Store>, 0.15);
}

template <typename Store>
void FillStore() {
  Store store;
  store.Fill();
  RequireTexts(store);
}

void FillStores() {
  FillStore<OurStore>();
  FillStore<FallbackStore>();
  FillStore<SqliteStore>();
  FillStore<LmdbFreshStore>();
  FillStore<TdbStore>();
  FillStore<GSettingsStore>();
  FillStore<KConfigStore>();
  FillStore<QSettingsStore>();
}

void AddBenchmarks() {
  AddReads<OurStore>("ours");
  AddReads<LmdbFreshStore>("lmdb");
  AddReads<LmdbOneViewStore>("lmdb_one_view");
  AddReads<SqliteStore>("sqlite");
  AddReads<GSettingsStore>("gsettings");
  AddReads<KConfigStore>("kconfig");
  AddReads<QSettingsStore>("qsettings");
  Add("read.tdb", ReadValues<TdbStore>, 0.08);
  Add("read.fallback", ReadValues<FallbackStore>, 0.08);
  Add("read.disturbed", ReadValues<OurStore>, 0.2)->Setup(StartWriter)->Teardown(StopWriter);
  AddWrites<OurStore>("ours", 0.25);
  AddWrites<SqliteStore>("sqlite", 0.25);
  AddWrites<LmdbFreshStore>("lmdb", 0.1);
  AddWrites<TdbStore>("tdb", 0.1);
  AddWrites<GSettingsStore>("gsettings", 0.25);
  AddWrites<KConfigStore>("kconfig", 0.1);
  AddWrites<QSettingsStore>("qsettings", 0.1);
  AddBatches<OurStore>("ours");
  AddBatches<SqliteStore>("sqlite");
}

std::string JoinVersion(unsigned major, unsigned minor, unsigned patch) {
  return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
}

void ReportVersions() {
  ReportVersion("lmdb", JoinVersion(MDB_VERSION_MAJOR, MDB_VERSION_MINOR, MDB_VERSION_PATCH));
  ReportVersion("tdb", BENCH_TDB_VERSION);
  ReportVersion("sqlite", sqlite3_libversion());
  ReportVersion("glib", JoinVersion(glib_major_version, glib_minor_version, glib_micro_version));
  ReportVersion("kconfig", KCONFIG_VERSION_STRING);
  ReportVersion("qt", qVersion());
  ReportVersion("ours", BENCH_ZOLT_VERSION);
}

}  // namespace

int main() {
  OurLibrary const library;
  ReportVersions();
  FillStores();
  AddBenchmarks();
  RunInterleaved();
}
