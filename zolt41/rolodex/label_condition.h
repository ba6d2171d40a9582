#ifndef ZOLT41_ROLODEX_LABEL_CONDITION_H_
#define ZOLT41_ROLODEX_LABEL_CONDITION_H_

#include <cstdint>
#include <string>

#include "zolt41/cards/property_storage.h"
#include "zolt41/rolodex/label_column.h"

namespace zolt {

// What the first names of cards are compared with, without regard to the case of ASCII letters.
class LabelCondition {
 public:
  LabelCondition(CSOper oper, char const *value);

  // The place of the first label that matches, or `count`.
  uint32_t FirstMatch(FoldedLabel const *labels, uint32_t count) const;

 private:
  bool StandsIn(FoldedLabel const &label, uint32_t places) const;
  bool EndsRight(char behind) const { return !toTheEnd_ || behind == '\0'; }

  std::string value_;  // folded
  bool never_;
  bool fromTheBeginning_;
  bool toTheEnd_;
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_LABEL_CONDITION_H_
