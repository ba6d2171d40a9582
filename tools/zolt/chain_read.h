#ifndef ZOLT41_TOOLS_ZOLT_CHAIN_READ_H_
#define ZOLT41_TOOLS_ZOLT_CHAIN_READ_H_

#include <span>
#include <string>
#include <vector>

#include "tools/zolt/documents.h"
#include "tools/zolt/section_key.h"
#include "tools/zolt/settings.h"

namespace zolt::tool {

// The stores that a read asks under these settings, in its order.
std::vector<Level const *> ReadLevels(Settings const &settings, bool parentFirst = false);

// What each store of a chain holds under a name. A read of text is answered by the first that holds
// a text which can be read, one of bytes by the first that holds anything; where nobody has such a
// text, the latter answers.
std::vector<Holding> ReadHoldings(std::span<SectionKey const> keys, std::string const &name);

// Each name once, in the order of the stores and, within one, of first writing.
struct FoundName {
  std::string name;
  Level const *level;  // the first that has it
};
std::vector<FoundName> NamesAlong(std::span<SectionKey const> keys,
                                  std::vector<std::string> (SectionKey::*namesIn)() const);

// The section of that name below, in each of the stores.
std::vector<SectionKey> AllBelow(std::span<SectionKey const> keys, std::string const &name);

// The values of the section, each as the store that answers has it.
std::vector<Entry> ValuesAlong(SectionPath const &path, std::span<SectionKey const> keys);

// The one that answers, or null.
Holding const *Answer(std::span<Holding const> holdings);

// Fails with the section's and the value's name, and a name that is near.
[[noreturn]] void FailWithoutValue(SectionPath const &path, std::string const &name,
                                   std::span<SectionKey const> keys);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CHAIN_READ_H_
