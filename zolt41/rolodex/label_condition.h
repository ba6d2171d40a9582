#ifndef ZOLT41_ROLODEX_LABEL_CONDITION_H_
#define ZOLT41_ROLODEX_LABEL_CONDITION_H_

#include <cstdint>
#include <string>

#include "zolt41/cards/property_storage.h"
#include "zolt41/rolodex/card_entry.h"

namespace zolt {

// What the first names of cards are compared with, without regard to the case of ASCII letters.
class LabelCondition {
 public:
  LabelCondition(CSOper oper, char const *value);

  bool Matches(CardEntry const &entry) const;

 private:
  bool StandsAt(char const *place) const;

  CSOper oper_;
  std::string value_;  // folded
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_LABEL_CONDITION_H_
