// Strings, arrays and the list beside those of the standard library, on the same work.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <vector>

#include "benchmarks/measure.h"
#include "benchmarks/median_reporter.h"
#include "zolt41/zolt41.h"

namespace {

using namespace zolt::bench;

constexpr double kSeconds = 0.03;
constexpr int32_t kItems = 1'000;
constexpr char kPhrase[] = "forty bytes, which no object can hold...";
constexpr char kOtherPhrase[] = "other text, of as many bytes as that is.";
static_assert(sizeof kPhrase == 41 && sizeof kOtherPhrase == sizeof kPhrase);

// One iteration is one piece of work, whose result is not thrown away.
template <typename Work>
void Repeat(benchmark::State &state, Work work) {
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(work());
    benchmark::ClobberMemory();
  }
}

ZOLTXString Cut(ZOLTXString const &text) {
  return text.Mid(10, 24);
}
std::string Cut(std::string const &text) {
  return text.substr(10, 24);
}

ZOLTXString CutLeft(ZOLTXString const &text) {
  return text.Left(24);
}
std::string CutLeft(std::string const &text) {
  return text.substr(0, 24);
}

int64_t PlaceOf(ZOLTXString const &text, char character) {
  return text.OffsetOf(character);
}
int64_t PlaceOf(std::string const &text, char character) {
  return static_cast<int64_t>(text.find(character));
}

template <typename Text>
void AssignText(benchmark::State &state) {
  Text text(kPhrase);
  char const *phrases[] = {kOtherPhrase, kPhrase};
  size_t turn = 0;
  Repeat(state, [&] {
    text = phrases[turn ^= 1];
    return &text;
  });
}

template <typename Text>
void CopyText(benchmark::State &state) {
  Text const text(kPhrase);
  Repeat(state, [&] {
    Text copy(text);
    benchmark::DoNotOptimize(copy);
    return 0;
  });
}

template <typename Text>
void CutText(benchmark::State &state) {
  Text const text(kPhrase);
  Require(Cut(text) == std::string(kPhrase, 10, 24).c_str(), "a text was not cut");
  Repeat(state, [&] {
    Text part = Cut(text);
    benchmark::DoNotOptimize(part);
    return 0;
  });
}

template <typename Text>
void CutTextLeft(benchmark::State &state) {
  Text const text(kPhrase);
  Require(CutLeft(text) == std::string(kPhrase, 24).c_str(), "a text was not cut");
  Repeat(state, [&] {
    Text part = CutLeft(text);
    benchmark::DoNotOptimize(part);
    return 0;
  });
}

template <typename Text, size_t size>
void CompareTexts(benchmark::State &state) {
  Text const text(std::string(size, 'a').c_str());
  Text const same(text);
  Repeat(state, [&] { return text == same; });
}

template <typename Text>
void FindInText(benchmark::State &state) {
  Text const text((std::string(4095, 'a') + 'b').c_str());
  Require(PlaceOf(text, 'b') == 4095, "a character was not found");
  Repeat(state, [&] { return PlaceOf(text, 'b'); });
}

template <typename Text>
void AppendToText(benchmark::State &state) {
  Text const text(std::string(4096, 'a').c_str());
  Repeat(state, [&] {
    Text longer = text + kPhrase;
    benchmark::DoNotOptimize(longer);
    return 0;
  });
}

// The verbs of the three containers under one name. All hold pointers and have room for kItems.
struct StdVector {
  StdVector() { items.reserve(kItems + 1); }
  void Add(void *item) { items.push_back(item); }
  void *Get(int32_t index) const { return items[static_cast<size_t>(index)]; }
  void Insert(int32_t index, void *item) { items.insert(items.begin() + index, item); }
  void Remove(int32_t index) { items.erase(items.begin() + index); }
  void Clear() { items.clear(); }
  int64_t PlaceOf(void *item) const {
    return std::find(items.begin(), items.end(), item) - items.begin();
  }
  std::vector<void *> items;
};

struct OurArray {
  OurArray() {
    items.SetSize(kItems + 1, -1);
    Clear();
  }
  void Add(void *item) { items.Add(item); }
  void *Get(int32_t index) const { return items[index]; }
  void Insert(int32_t index, void *item) { items.InsertAt(index, item, 1); }
  void Remove(int32_t index) { items.RemoveAt(index, 1); }
  void Clear() { items.RemoveAt(0, items.GetSize()); }
  ZOLTXPtrArray items;
};

struct OurList {
  void Add(void *item) { items.AddItem(item); }
  void *Get(int32_t index) const { return items.GetItem(static_cast<uint32_t>(index)); }
  void Insert(int32_t index, void *item) { items.InsertItem(item, static_cast<uint32_t>(index)); }
  void Remove(int32_t index) { items.RemoveItem(static_cast<uint32_t>(index)); }
  void Clear() { items.Empty(); }
  int64_t PlaceOf(void *item) const { return items.IndexOf(item); }
  ZOLTXList items{kItems + 1};
};

char marks[kItems];

template <typename Items>
void Fill(Items &items) {
  for (char &mark : marks) items.Add(&mark);
}

template <typename Items>
void FillItems(benchmark::State &state) {
  Items items;
  Repeat(state, [&] {
    items.Clear();
    Fill(items);
    return 0;
  });
}

template <typename Items>
void WalkItems(benchmark::State &state) {
  Items items;
  Fill(items);
  Repeat(state, [&] {
    uintptr_t sum = 0;
    for (int32_t i = 0; i < kItems; i++) sum += reinterpret_cast<uintptr_t>(items.Get(i));
    return sum;
  });
}

template <typename Items>
void InsertAndRemove(benchmark::State &state) {
  Items items;
  Fill(items);
  Repeat(state, [&] {
    items.Insert(kItems / 2, marks);
    items.Remove(kItems / 2);
    return 0;
  });
}

template <typename Items>
void PassThroughQueue(benchmark::State &state) {
  Items items;
  Fill(items);
  Repeat(state, [&] {
    items.Remove(0);
    items.Add(marks);
    return 0;
  });
}

template <typename Items>
void FindItem(benchmark::State &state) {
  Items items;
  Fill(items);
  Require(items.PlaceOf(marks + kItems - 1) == kItems - 1, "an item was not found");
  Repeat(state, [&] { return items.PlaceOf(marks + kItems - 1); });
}

void FillOurTexts(benchmark::State &state) {
  Repeat(state, [] {
    ZOLTXStringArray texts;
    texts.SetSize(0, kItems);
    for (int32_t i = 0; i < kItems; i++) texts.Add(kPhrase);
    return texts.GetSize();
  });
}

void FillStdTexts(benchmark::State &state) {
  Repeat(state, [] {
    std::vector<std::string> texts;
    texts.reserve(kItems);
    for (int32_t i = 0; i < kItems; i++) texts.emplace_back(kPhrase);
    return texts.size();
  });
}

// A vector that takes a new buffer when an array, or a list, would.
size_t StepOfArray(size_t size) {
  return size == 0 ? 1 : std::clamp<size_t>(size / 8, 4, 1024);
}
size_t StepOfList(size_t size) {
  return size == 0 ? 256 : size / 8;
}

template <size_t (*Step)(size_t)>
struct SteppingVector {
  void Add(void *item) {
    if (items.size() == items.capacity()) items.reserve(items.size() + Step(items.size()));
    items.push_back(item);
  }
  std::vector<void *> items;
};

struct GrowingArray {
  void Add(void *item) { items.Add(item); }
  ZOLTXPtrArray items;
};

struct GrowingList {
  void Add(void *item) { items.AddItem(item); }
  ZOLTXList items;
};

template <typename Items>
void Grow(benchmark::State &state) {
  Repeat(state, [&] {
    Items items;
    for (int64_t i = 0; i < state.range(0); i++) items.Add(marks);
    benchmark::DoNotOptimize(items);
    return 0;
  });
}

void Add(std::string const &key, void (*ours)(benchmark::State &),
         void (*theirs)(benchmark::State &)) {
  benchmark::RegisterBenchmark((key + ".ours").c_str(), ours)->MinTime(kSeconds);
  benchmark::RegisterBenchmark((key + ".std").c_str(), theirs)->MinTime(kSeconds);
}

template <typename Items>
void AddGrowth(std::string const &key) {
  for (int64_t size : {1'000, 10'000, 100'000}) {
    std::string const name = key + "." + std::to_string(size);
    benchmark::RegisterBenchmark(name.c_str(), Grow<Items>)->Arg(size)->MinTime(kSeconds);
  }
}

void AddBenchmarks() {
  Add("text.assign", AssignText<ZOLTXString>, AssignText<std::string>);
  Add("text.copy", CopyText<ZOLTXString>, CopyText<std::string>);
  Add("text.cut", CutText<ZOLTXString>, CutText<std::string>);
  Add("text.left", CutTextLeft<ZOLTXString>, CutTextLeft<std::string>);
  Add("text.compare", CompareTexts<ZOLTXString, 40>, CompareTexts<std::string, 40>);
  Add("text.compare_long", CompareTexts<ZOLTXString, 4096>, CompareTexts<std::string, 4096>);
  Add("text.find", FindInText<ZOLTXString>, FindInText<std::string>);
  Add("text.append", AppendToText<ZOLTXString>, AppendToText<std::string>);
  Add("texts.fill", FillOurTexts, FillStdTexts);
  Add("array.fill", FillItems<OurArray>, FillItems<StdVector>);
  Add("array.walk", WalkItems<OurArray>, WalkItems<StdVector>);
  Add("array.insert", InsertAndRemove<OurArray>, InsertAndRemove<StdVector>);
  Add("list.fill", FillItems<OurList>, FillItems<StdVector>);
  Add("list.walk", WalkItems<OurList>, WalkItems<StdVector>);
  Add("list.insert", InsertAndRemove<OurList>, InsertAndRemove<StdVector>);
  Add("list.queue", PassThroughQueue<OurList>, PassThroughQueue<StdVector>);
  Add("list.find", FindItem<OurList>, FindItem<StdVector>);
  AddGrowth<GrowingArray>("array.grow.ours");
  AddGrowth<SteppingVector<StepOfArray>>("array.grow.std");
  AddGrowth<GrowingList>("list.grow.ours");
  AddGrowth<SteppingVector<StepOfList>>("list.grow.std");
}

}  // namespace

int main() {
  AddBenchmarks();
  RunInterleaved();
}
