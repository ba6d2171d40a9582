// How fast other processes hear of a change, and how many changes a second one process can tell.
// With an argument it is one of those who listen.

#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "benchmarks/measure.h"
#include "benchmarks/news_component.h"
#include "benchmarks/news_dconf.h"
#include "benchmarks/news_gdbus.h"
#include "benchmarks/news_ours.h"
#include "benchmarks/news_sd_bus.h"
#include "benchmarks/watchers.h"

namespace {

using namespace zolt::bench;

constexpr int kNews = 500;
constexpr int kFirstNews = 20;  // fill the caches and are not counted
// Services of a peer are still at work when the listener has heard, and then processors rest.
constexpr auto kRest = std::chrono::milliseconds(2);
constexpr auto kNoRest = std::chrono::milliseconds(0);
constexpr size_t kManyWatchers = 32;
// Where the system puts a process decides much.
constexpr int kPlacements = 9;
constexpr int kNewsEach = 100;
constexpr int kRateRounds = 15;
constexpr int kStandstillRounds = 11;
constexpr uint32_t kSeries = 1000;

struct Role {
  char const *name;
  void (*run)();
};
constexpr Role kRoles[] = {
    {"watch_ours", WatchOurs},   {"watch_sd_bus", WatchSdBus}, {"watch_gdbus", WatchGDBus},
    {"serve_gdbus", ServeGDBus}, {"watch_dconf", WatchDConf},  {"watch_component", WatchComponent},
};

int Play(char const *name) {
  for (Role const &role : kRoles) {
    if (std::strcmp(role.name, name) == 0) {
      role.run();
      return 0;
    }
  }
  Fail(std::string("no such role: ") + name);
}

struct Way {
  std::string key;
  Watchers *watchers;
  Watchers::Send send;
  uint32_t count = 1;
  std::vector<double> times = {};
};

void ReportTimes(std::vector<Way> const &ways) {
  for (Way const &way : ways) Report(way.key, Median(way.times));
}

void MeasureHearing(std::chrono::milliseconds rest, std::vector<Way> ways, int news = kNews) {
  std::mt19937 random(1);
  std::vector<Way *> order;
  for (Way &way : ways) {
    way.watchers->Settle(way.send);
    order.push_back(&way);
  }
  for (int i = 0; i < kFirstNews + news; i++) {
    std::shuffle(order.begin(), order.end(), random);
    for (Way *way : order) {
      if (rest != kNoRest) std::this_thread::sleep_for(rest);
      double const time = way->watchers->TimeToLast(way->send);
      if (i >= kFirstNews) way->times.push_back(time);
    }
  }
  ReportTimes(ways);
}

void MeasureRate(std::vector<Way> ways) {
  for (Way &way : ways) way.watchers->Settle(way.send);
  for (int i = 0; i < kRateRounds; i++) {
    for (Way &way : ways) way.times.push_back(way.watchers->TimeToSend(way.send, way.count));
  }
  ReportTimes(ways);
}

double TimeOfSeries(OurNews *news) {
  Stopwatch const watch;
  for (uint32_t i = 0; i < kSeries; i++) news->Send(std::to_string(i).c_str());
  return watch.Nanoseconds();
}

// What a series takes longer with a second watcher that was stopped or killed than without it.
double TimeLostTo(int signal, OurNews *news) {
  Watchers alone("watch_ours", 1);
  double const undisturbed = TimeOfSeries(news);
  Watchers other("watch_ours", 1);
  other.Halt(0, signal);
  return std::max(0.0, TimeOfSeries(news) - undisturbed);
}

void MeasureStandstill(std::string const &key, int signal, OurNews *news) {
  std::vector<double> times;
  for (int i = 0; i < kStandstillRounds; i++) times.push_back(TimeLostTo(signal, news));
  Report(key, Median(times));
}

}  // namespace

int main(int count, char **arguments) {
  if (count > 1) return Play(arguments[1]);
  OurNews ours;
  SdBusNews bus;
  DConfNews dconf;
  auto const send_ours = [&](char const *text) { ours.Send(text); };
  auto const send_sd_bus = [&](char const *text) { bus.Send(text); };
  // One at a time listens, so that none waits for the other.
  struct Listening {
    char const *key;
    std::chrono::milliseconds rest;
    char const *role;
    Watchers::Send send;
  };
  Listening const kinds[] = {{"heard.ours", kNoRest, "watch_ours", send_ours},
                             {"heard.sd_bus", kNoRest, "watch_sd_bus", send_sd_bus},
                             {"rested.ours", kRest, "watch_ours", send_ours},
                             {"rested.sd_bus", kRest, "watch_sd_bus", send_sd_bus},
                             {"rested.component", kRest, "watch_component", send_ours}};
  for (int i = 0; i < kPlacements; i++) {
    for (Listening const &kind : kinds) {
      Watchers watcher(kind.role, 1);
      MeasureHearing(kind.rest, {{kind.key, &watcher, kind.send}}, kNewsEach);
    }
  }
  for (auto const &[key, rest] :
       {std::pair("heard.dconf", kNoRest), std::pair("rested.dconf", kRest)}) {
    Watchers watcher("watch_dconf", 1);
    MeasureHearing(rest, {{key, &watcher, [&](char const *text) { dconf.Send(text); }}});
  }
  {
    Watchers our_watchers("watch_ours", kManyWatchers);
    Watchers bus_watchers("watch_sd_bus", kManyWatchers);
    MeasureHearing(kRest, {{"heard32.ours", &our_watchers, send_ours},
                           {"heard32.sd_bus", &bus_watchers, send_sd_bus}});
  }
  {
    Watchers const service("serve_gdbus", 1);
    GDBusNews gdbus;
    Watchers our_watcher("watch_ours", 1);
    Watchers gdbus_watcher("watch_gdbus", 1);
    Watchers dconf_watcher("watch_dconf", 1);
    MeasureRate(
        {{"rate.ours", &our_watcher, send_ours, 400},
         {"rate.gdbus", &gdbus_watcher, [&](char const *text) { gdbus.Send(text); }, 100},
         {"rate.dconf", &dconf_watcher, [&](char const *text) { dconf.SendAndSync(text); }, 20}});
  }
  MeasureStandstill("stopped.ours", SIGSTOP, &ours);
  MeasureStandstill("killed.ours", SIGKILL, &ours);
}
