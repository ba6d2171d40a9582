#ifndef ZOLT41_TESTS_ROLODEX_RANDOM_STEPS_H_
#define ZOLT41_TESTS_ROLODEX_RANDOM_STEPS_H_

#include <algorithm>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "tests/rolodex/book.h"
#include "zolt41/cardfile/call_card.h"

namespace zolt::testing {

// One operation on a database, and what its cards are afterwards.
struct CardStep {
  std::function<void(Book *)> run;
  Cards after;
};

// Random operations on cards, each with its outcome by a plain map. All of them succeed.
class RandomSteps {
 public:
  explicit RandomSteps(uint32_t seed, Cards cards = {}) : random_(seed), cards_(std::move(cards)) {
    for (auto const &[id, card] : cards_) lastId_ = std::max(lastId_, id);
  }

  CardStep Next() {
    uint32_t const kind = Pick(20);
    if (kind < 6 || cards_.empty()) return Create();
    if (kind < 10) return Save();
    if (kind < 13) return Delete();
    if (kind < 15) return Rename();
    if (kind < 17) return Categorise();
    if (kind < 18) return CreateMany();
    if (kind < 19) return Apply();
    return {[](Book *book) { book->Compact(1); }, cards_};
  }
  Cards const &cards() const { return cards_; }

 private:
  uint32_t Pick(uint32_t count) { return static_cast<uint32_t>(random_() % count); }
  uint32_t PickId() {
    auto card = cards_.begin();
    std::advance(card, Pick(static_cast<uint32_t>(cards_.size())));
    return card->first;
  }
  std::string PickBody() {
    constexpr uint32_t kSizes[] = {4, 8, 61, 128, 132, 376, 900, 4100};
    return BodyOf(kSizes[Pick(std::size(kSizes))], static_cast<char>('a' + Pick(26)));
  }
  Categories PickSet() {
    return {2, static_cast<unsigned char>(Pick(64)), static_cast<unsigned char>(64 + Pick(64))};
  }
  CardContent PickCard() {
    Names names;
    for (std::string &name : names) name = std::string(Pick(32), static_cast<char>('A' + Pick(26)));
    return {PickBody(), names, PickSet()};
  }

  CardStep Create() {
    CardContent const card = PickCard();
    cards_[++lastId_] = card;
    return {[card](Book *book) { book->Add(card.body, card.names, card.categories); }, cards_};
  }
  CardStep CreateMany() {
    std::vector<CardContent> contents(1 + Pick(4));
    for (CardContent &card : contents) cards_[++lastId_] = card = PickCard();
    auto const run = [contents](Book *book) {
      std::vector<CallCard> cards(contents.size());
      std::vector<PCardStorage *> pointers;
      std::vector<CardNames> names;
      std::vector<unsigned char const *> sets;
      for (size_t i = 0; i < contents.size(); i++) {
        CardContent const &card = contents[i];
        Book::SetBody(&cards[i], card.body);
        pointers.push_back(&cards[i]);
        names.push_back({card.names[0].c_str(), card.names[1].c_str(), card.names[2].c_str()});
        sets.push_back(card.categories.data());
      }
      book->CreateCards(static_cast<uint32_t>(contents.size()), pointers.data(), names.data(),
                        sets.data(), nullptr);
    };
    return {run, cards_};
  }
  CardStep Save() {
    uint32_t const id = PickId();
    std::string const body = PickBody();
    cards_[id].body = body;
    return {[=](Book *book) { book->Save(id, body); }, cards_};
  }
  CardStep Delete() {
    uint32_t const id = PickId();
    cards_.erase(id);
    return {[=](Book *book) { book->DeleteCard(id); }, cards_};
  }
  CardStep Rename() {
    uint32_t const id = PickId();
    Names const names = cards_[id].names = PickCard().names;
    return {[=](Book *book) {
              book->SetCardName(id, names[0].c_str(), names[1].c_str(), names[2].c_str());
            },
            cards_};
  }
  CardStep Categorise() {
    uint32_t const id = PickId();
    Categories const set = cards_[id].categories = PickSet();
    return {[=](Book *book) { book->SetCardCategories(id, set.data()); }, cards_};
  }
  CardStep Apply() {
    unsigned char const category = static_cast<unsigned char>(Pick(128));
    for (auto &[id, card] : cards_) {
      auto const place =
          std::lower_bound(card.categories.begin() + 1, card.categories.end(), category);
      if (place != card.categories.end() && *place == category) continue;
      card.categories.insert(place, category);
      card.categories[0]++;
    }
    return {[=](Book *book) {
              unsigned char const list[] = {1, category};
              book->ApplyCategory(list, nullptr, nullptr);
            },
            cards_};
  }

  std::mt19937 random_;
  Cards cards_;
  uint32_t lastId_ = 0;
};

// Of each card that is the same before and after an operation there is nothing else to be found
// than that; of any other, one of the two. Empty if that holds, else what is wrong.
inline std::string Between(Cards const &found, Cards const &before, Cards const &after) {
  auto const in = [](Cards const &cards, uint32_t id) {
    auto const card = cards.find(id);
    return card == cards.end() ? nullptr : &card->second;
  };
  Cards all = before;
  all.insert(after.begin(), after.end());
  all.insert(found.begin(), found.end());
  for (auto const &[id, card] : all) {
    CardContent const *const now = in(found, id);
    bool good = false;
    for (Cards const *state : {&before, &after}) {
      CardContent const *const then = in(*state, id);
      good = good || (now != nullptr && then != nullptr ? *now == *then : now == then);
    }
    if (good) continue;
    if (now == nullptr) return "card " + std::to_string(id) + " is lost";
    return "card " + std::to_string(id) + " is changed, or should not be there";
  }
  return "";
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_ROLODEX_RANDOM_STEPS_H_
