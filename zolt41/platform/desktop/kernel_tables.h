#ifndef ZOLT41_PLATFORM_DESKTOP_KERNEL_TABLES_H_
#define ZOLT41_PLATFORM_DESKTOP_KERNEL_TABLES_H_

#include <cstdint>
#include <set>
#include <vector>

namespace zolt {

// The kernel's own tables of the network.

struct NetworkLink {
  uint32_t number;  // never 0
  uint32_t flags;   // IFF_UP and its like

  // Up, and something is at the other end.
  bool Runs() const;
};

// False if the kernel cannot be asked.
bool ReadLinks(std::vector<NetworkLink> *links);

// Whether routes of one family lead to everywhere over these links: one route, or one for each half
// of all addresses. Routes of every table count, with each of their next hops. False, with `*found`
// as it was, if the kernel cannot be asked.
bool FindWayToEverywhere(std::set<uint32_t> const &links, bool *found);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_DESKTOP_KERNEL_TABLES_H_
