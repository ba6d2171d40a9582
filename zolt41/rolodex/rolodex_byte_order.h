#ifndef ZOLT41_ROLODEX_ROLODEX_BYTE_ORDER_H_
#define ZOLT41_ROLODEX_ROLODEX_BYTE_ORDER_H_

#include <string>
#include <string_view>

namespace zolt {

// What stands in a file of the other byte order, in this one's: all in front of the card area, and
// the head of a record.
std::string SwappedFront(std::string_view front);
std::string SwappedHead(std::string_view head);

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_ROLODEX_BYTE_ORDER_H_
