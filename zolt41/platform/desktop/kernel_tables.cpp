#include "zolt41/platform/desktop/kernel_tables.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace zolt {
namespace {

// The kernel writes no longer pieces.
constexpr size_t kPiece = 65536;

struct Request {
  nlmsghdr head;
  rtgenmsg what;
};

bool Ask(int socket, uint16_t table) {
  Request request{};
  request.head.nlmsg_len = NLMSG_LENGTH(sizeof request.what);
  request.head.nlmsg_type = table;
  request.head.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  request.what.rtgen_family = AF_UNSPEC;
  return send(socket, &request, request.head.nlmsg_len, 0) ==
         static_cast<ssize_t>(request.head.nlmsg_len);
}

// Visits each entry of an answer in its pieces. False if it does not come to its end.
template <typename Visit>
bool HearAll(int socket, Visit const &visit) {
  std::vector<char> piece(kPiece);
  for (;;) {
    ssize_t const got = recv(socket, piece.data(), piece.size(), MSG_TRUNC);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0 || static_cast<size_t>(got) > piece.size()) return false;
    auto left = static_cast<uint32_t>(got);
    auto const *message = reinterpret_cast<nlmsghdr const *>(piece.data());
    for (; NLMSG_OK(message, left); message = NLMSG_NEXT(message, left)) {
      if (message->nlmsg_type == NLMSG_DONE) return true;
      if (message->nlmsg_type == NLMSG_ERROR) return false;
      visit(*message);
    }
  }
}

template <typename Visit>
bool VisitTable(uint16_t table, Visit const &visit) {
  int const netlink = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE);
  if (netlink < 0) return false;
  bool const whole = Ask(netlink, table) && HearAll(netlink, visit);
  close(netlink);
  return whole;
}

// Visits what is in the attributes of an entry.
template <typename Visit>
void VisitAttributes(void const *first, size_t size, Visit const &visit) {
  auto left = static_cast<uint32_t>(size);
  auto const *attribute = static_cast<rtattr const *>(first);
  for (; RTA_OK(attribute, left); attribute = RTA_NEXT(attribute, left)) {
    visit(attribute->rta_type, static_cast<char const *>(RTA_DATA(attribute)),
          RTA_PAYLOAD(attribute));
  }
}

template <typename Number>
Number NumberAt(char const *bytes, size_t size) {
  Number number{};
  if (size >= sizeof number) std::memcpy(&number, bytes, sizeof number);
  return number;
}

// Over which of the links a route leads.
class WaysOf {
 public:
  explicit WaysOf(std::set<uint32_t> const &links) : links_(links) {}

  void Add(uint16_t type, char const *bytes, size_t size) {
    if (type == RTA_OIF) AddLink(NumberAt<uint32_t>(bytes, size));
    if (type == RTA_MULTIPATH) AddHops(bytes, size);
    if (type == RTA_NH_ID) byName_ = true;
  }

  // A kernel may name the next hop alone, which can then be any.
  bool any() const { return any_ || (byName_ && !named_ && !links_.empty()); }

 private:
  void AddLink(uint32_t link) {
    named_ = true;
    any_ = any_ || links_.contains(link);
  }

  void AddHops(char const *bytes, size_t size) {
    while (size >= sizeof(rtnexthop)) {
      auto const hop = NumberAt<rtnexthop>(bytes, size);
      if (hop.rtnh_len < sizeof hop) return;
      AddLink(static_cast<uint32_t>(hop.rtnh_ifindex));
      size_t const step = std::min<size_t>(RTNH_ALIGN(hop.rtnh_len), size);
      bytes += step;
      size -= step;
    }
  }

  std::set<uint32_t> const &links_;
  bool named_ = false;
  bool byName_ = false;
  bool any_ = false;
};

// The addresses of a family that routes lead to.
struct Reached {
  bool half[2];

  void Add(nlmsghdr const &message, rtmsg const &route, std::set<uint32_t> const &links) {
    if (route.rtm_type != RTN_UNICAST || route.rtm_dst_len > 1) return;
    WaysOf ways(links);
    size_t upper = 0;
    VisitAttributes(RTM_RTA(&route), RTM_PAYLOAD(&message),
                    [&](uint16_t type, char const *bytes, size_t size) {
                      if (type == RTA_DST && size > 0) upper = (bytes[0] & 0x80) != 0 ? 1 : 0;
                      ways.Add(type, bytes, size);
                    });
    if (!ways.any()) return;
    half[upper] = true;
    if (route.rtm_dst_len == 0) half[1] = half[0] = true;
  }

  bool Everything() const { return half[0] && half[1]; }
};

}  // namespace

bool NetworkLink::Runs() const {
  return (flags & IFF_UP) != 0 && (flags & IFF_RUNNING) != 0;
}

bool ReadLinks(std::vector<NetworkLink> *links) {
  return VisitTable(RTM_GETLINK, [links](nlmsghdr const &message) {
    if (message.nlmsg_type != RTM_NEWLINK || message.nlmsg_len < NLMSG_LENGTH(sizeof(ifinfomsg)))
      return;
    auto const *const link = static_cast<ifinfomsg const *>(NLMSG_DATA(&message));
    links->push_back({static_cast<uint32_t>(link->ifi_index), link->ifi_flags});
  });
}

bool FindWayToEverywhere(std::set<uint32_t> const &links, bool *found) {
  Reached four{};
  Reached six{};
  bool const whole = VisitTable(RTM_GETROUTE, [&](nlmsghdr const &message) {
    if (message.nlmsg_type != RTM_NEWROUTE || message.nlmsg_len < NLMSG_LENGTH(sizeof(rtmsg)))
      return;
    auto const *const route = static_cast<rtmsg const *>(NLMSG_DATA(&message));
    if (route->rtm_family == AF_INET) four.Add(message, *route, links);
    if (route->rtm_family == AF_INET6) six.Add(message, *route, links);
  });
  if (whole) *found = four.Everything() || six.Everything();
  return whole;
}

}  // namespace zolt
