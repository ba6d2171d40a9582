#ifndef ZOLT41_TESTS_ROLODEX_RANDOM_STEPS_H_
#define ZOLT41_TESTS_ROLODEX_RANDOM_STEPS_H_

#include <functional>
#include <random>
#include <utility>

#include "tests/rolodex/model.h"

namespace zolt::testing {

using Results = std::vector<int64_t>;

// An operation on a database, and what it gives by the model.
struct CardStep {
  std::function<Results(Book *)> run;
  Results results;
};

// Random operations on cards, each of which the model has done when it is given out. What they
// change is in the file at once.
class RandomSteps {
 public:
  explicit RandomSteps(uint32_t seed, Cards const &cards = {}) : random_(seed) {
    for (auto const &[id, card] : cards) model_.Enter(id, card);
  }

  CardStep Next() {
    uint32_t const kind = Pick(20);
    if (kind < 6) return Create();
    if (kind < 10) return Save(PickId());
    if (kind < 13) return Delete(PickId());
    if (kind < 15) return Rename(PickId());
    if (kind < 17) return Categorise(PickId());
    if (kind < 18) return CreateMany();
    if (kind < 19) return Apply();
    return Compact();
  }
  Model &model() { return model_; }
  Cards cards() const { return model_.All(); }

  uint32_t Pick(uint32_t count) { return static_cast<uint32_t>(random_() % count); }
  // Mostly of a card that there is.
  uint32_t PickId() {
    Ids const ids = model_.AllIds();
    return ids.empty() || Pick(20) == 0 ? Pick(40) : ids[Pick(static_cast<uint32_t>(ids.size()))];
  }
  std::string PickName() {
    constexpr char const *kNames[] = {
        "", "Al", "AL", "a\xEC", "al\x80y", "Bob", "a name of more than 31 characters"};
    uint32_t const which = Pick(2 * std::size(kNames));
    return which < std::size(kNames) ? kNames[which]
                                     : std::string(Pick(32), static_cast<char>('A' + Pick(26)));
  }

  CardStep Create() {
    CardContent const card = PickCard();
    return {
        [card](Book *book) { return Results{book->Add(card.body, card.names, card.categories)}; },
        {model_.Create(card)}};
  }
  CardStep Save(uint32_t id) {
    std::string const body = PickBody();
    return {[=](Book *book) { return Results{book->Save(id, body)}; }, {model_.Save(id, body)}};
  }
  CardStep Delete(uint32_t id) {
    return {[=](Book *book) { return Results{book->DeleteCard(id)}; }, {model_.Delete(id)}};
  }

 private:
  std::string PickBody() {
    constexpr uint32_t kSizes[] = {4, 5, 8, 64, 128, 129, 132, 248, 372, 373, 900, 4100};
    return BodyOf(kSizes[Pick(std::size(kSizes))], static_cast<char>('a' + Pick(26)));
  }
  Categories PickSet() {
    if (Pick(10) == 0) return {255};
    Categories set = {0};
    for (set[0] = static_cast<unsigned char>(Pick(3)); set.size() <= set[0];)
      set.push_back(static_cast<unsigned char>(Pick(140)));
    return set;
  }
  CardContent PickCard() { return {PickBody(), {PickName(), PickName(), PickName()}, PickSet()}; }

  CardStep CreateMany() {
    std::vector<CardContent> contents(Pick(6));
    Results ids;
    for (CardContent &card : contents) ids.push_back(model_.Create(card = PickCard()));
    auto const run = [contents](Book *book) {
      Ids const added = book->AddMany(contents);
      return Results(added.begin(), added.end());
    };
    return {run, ids};
  }
  CardStep Rename(uint32_t id) {
    std::string const name = PickName();
    uint32_t const which = Pick(3);
    SomeNames names;
    names[which] = name;
    model_.SetNames(id, names);
    auto const run = [=](Book *book) {
      char const *texts[3] = {};
      texts[which] = name.c_str();
      book->SetCardName(id, texts[0], texts[1], texts[2]);
      return Results{};
    };
    return {run, {}};
  }
  CardStep Categorise(uint32_t id) {
    Categories const set = PickSet();
    model_.SetCategories(id, set);
    auto const run = [=](Book *book) {
      book->SetCardCategories(id, set.data());
      return Results{};
    };
    return {run, {}};
  }
  CardStep Apply() {
    Categories const add = PickSet(), remove = PickSet(), filter = PickSet();
    auto const run = [=](Book *book) {
      return Results{book->ApplyCategory(add.data(), remove.data(), filter.data())};
    };
    return {run, {model_.Apply(add, remove, filter)}};
  }
  CardStep Compact() {
    auto const force = static_cast<int32_t>(Pick(4));
    return {[=](Book *book) { return Results{book->Compact(force)}; }, {model_.Compact(force)}};
  }

  std::mt19937 random_;
  Model model_;
};

// Of each card that is the same before and after an operation there is nothing else to be found
// than that; of any other, one of the two. Empty if that holds, else what is wrong.
inline std::string Between(Cards const &found, Cards const &before, Cards const &after) {
  auto const in = [](Cards const &cards, uint32_t id) {
    auto const card = cards.find(id);
    return card == cards.end() ? CardContent{"none", {}} : card->second;
  };
  Cards all = before;
  all.insert(after.begin(), after.end());
  all.insert(found.begin(), found.end());
  for (auto const &[id, card] : all) {
    CardContent const now = in(found, id);
    if (now != in(before, id) && now != in(after, id))
      return "card " + std::to_string(id) + " is lost, changed, or should not be there";
  }
  return "";
}

// A trial over many seeds is several tests, each with its share of them.
constexpr uint32_t kShares = 16;

template <typename Test>
class Sharing : public Test, public ::testing::WithParamInterface<uint32_t> {
 protected:
  template <typename Trial>
  static void ForSeeds(uint32_t count, Trial const &trial) {
    for (uint32_t seed = 1 + GetParam(); seed <= count && !Test::HasFailure(); seed += kShares) {
      SCOPED_TRACE(seed);
      trial(seed);
    }
  }
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_ROLODEX_RANDOM_STEPS_H_
