#include <algorithm>

#include "tools/zolt/chain_read.h"
#include "tools/zolt/listener.h"
#include "tools/zolt/text.h"
#include "tools/zolt/value_type.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

constexpr std::chrono::seconds kLookAgain(1);

struct Awaited {
  SectionPath path;
  std::string name;
  ValueType type;
  StoredValue value;
  std::vector<Level const *> levels;
};

// The text as `get` prints it; absent where it would print none.
StoredValue AsRead(ValueType type, StoredValue const &stored) {
  if (type == ValueType::boolean) return {Kind::text, BooleanText(ClientBoolean(stored.data))};
  if (type != ValueType::number) return stored;
  std::optional<int32_t> const number = ClientNumber(stored.data);
  return number ? StoredValue{Kind::text, std::to_string(*number)} : StoredValue{};
}

bool HoldsBytes(Awaited const &awaited, std::vector<SectionKey> const &keys) {
  for (SectionKey const &key : keys) {
    if (MaybeRaw const raw = ReadRaw(key.key(), awaited.name)) {
      return raw->data == awaited.value.data;
    }
  }
  return false;
}

bool Holds(Awaited const &awaited) {
  std::vector<SectionKey> const keys = OpenAlong(awaited.levels, awaited.path);
  if (awaited.type == ValueType::bytes) return HoldsBytes(awaited, keys);
  std::vector<Holding> const holdings = ReadHoldings(keys, awaited.name);
  auto const answer = std::ranges::find_if(holdings, &Holding::answers);
  return answer != holdings.end() && AsRead(awaited.type, answer->value) == awaited.value;
}

bool Concerns(std::vector<News> const &heard, Awaited const &awaited) {
  return heard.empty() || std::ranges::any_of(heard, [&awaited](News const &news) {
           return news.kind == NewsKind::gap || news.section == awaited.path.id();
         });
}

void WaitUntilItHolds(Awaited const &awaited, Deadline deadline) {
  Listener listener;
  while (!Holds(awaited)) {
    auto const now = std::chrono::steady_clock::now();
    if (deadline && *deadline <= now) {
      throw ToolError(kLocked, "timeout", Subject(awaited.path, awaited.name),
                      "is not " + Describe(awaited.value) + " in time");
    }
    // What is written without a word is seen a little later.
    auto const again = now + kLookAgain;
    auto const until = deadline ? std::min(*deadline, again) : again;
    while (!Concerns(listener.Next(until), awaited)) continue;
  }
}

int Wait(Call const &call) {
  Arguments const &arguments = call.arguments;
  ValueType const type = TypeFrom(arguments);
  Awaited const awaited = {SectionPath::FromOperand(call.operands[0]), ValueName(call.operands[1]),
                           type, ParseValue(type, call.operands[2]), ReadLevels(call.settings)};
  Deadline const deadline = DeadlineFrom(arguments);
  PrepareLibrary(arguments, call.settings);
  SectionPath const *const paths[] = {&awaited.path};
  SayMissingSections(paths, kIsMissing, call.settings);
  WaitUntilItHolds(awaited, deadline);
  return kDone;
}

}  // namespace

Verb const kPrefsWait = {
    .group = "prefs",
    .name = "wait",
    .operands = "SECTION NAME VALUE",
    .summary = "wait until a value is read",
    .options = {OptionId::type, OptionId::timeout},
    .least = 3,
    .most = 3,
    .run = Wait,
    .description =
        "Ends with 0 as soon as a program would read VALUE, from the store of -L or else those\n"
        "behind it, and with 5 at the time-out. With -t num, bool or bytes it is compared with\n"
        "what zolt prefs get -t prints. A change that a program does not announce is seen within\n"
        "a second.",
    .examples =
        "  zolt prefs wait Audio Volume 70\n"
        "  zolt prefs wait -t bool Audio Mute yes --timeout 10\n",
};

}  // namespace zolt::tool
