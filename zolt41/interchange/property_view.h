#ifndef ZOLT41_INTERCHANGE_PROPERTY_VIEW_H_
#define ZOLT41_INTERCHANGE_PROPERTY_VIEW_H_

#include <cstdint>
#include <string>
#include <string_view>

#include "zolt41/cards/property_storage.h"

namespace zolt {

// A property as it stands in a card, good until the card changes.
struct PropertyView {
  char const *name = nullptr;
  uint32_t type = 0;
  uint32_t flags = 0;
  std::string_view value;
};

// `index` is below the count.
PropertyView PropertyAt(PCardStorage *card, uint32_t index);

// The value of a string property up to its NUL, which may be missing: of byte text, of 16-bit text,
// and of either as local text, in which '?' stands for what the code page lacks.
std::string_view ByteText(std::string_view value);
std::u16string WideText(std::string_view value);
std::string LocalText(PropertyView const &property);

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_PROPERTY_VIEW_H_
