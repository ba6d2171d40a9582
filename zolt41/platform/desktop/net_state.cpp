#include "zolt41/platform/desktop/net_state.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "zolt41/platform/system/late_module.h"

namespace {

constexpr uint32_t kRouteUp = 0x1;
// The states of a link that is not there yet.
constexpr uint32_t kConnecting = 0;

// Calls `visit` with name and flags of each interface, until it gives true.
template <typename Visit>
bool AnyInterface(Visit visit) {
  ifaddrs *first = nullptr;
  if (getifaddrs(&first) != 0) return false;
  std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> const all(first, freeifaddrs);
  for (ifaddrs const *each = first; each != nullptr; each = each->ifa_next)
    if (visit(each->ifa_name, each->ifa_flags)) return true;
  return false;
}

// Up, and something is at the other end.
bool Runs(uint32_t flags) {
  return (flags & IFF_UP) != 0 && (flags & IFF_RUNNING) != 0;
}

// Interfaces of the routes to everywhere, of both families.
std::set<std::string> DefaultInterfaces() {
  std::set<std::string> interfaces;
  std::ifstream routes("/proc/net/route");
  std::string line;
  std::getline(routes, line);
  while (std::getline(routes, line)) {
    std::istringstream fields(line);
    std::string interface;
    std::string destination;
    std::string gateway;
    uint32_t flags = 0;
    uint32_t ignored = 0;
    std::string mask;
    fields >> interface >> destination >> gateway >> std::hex >> flags >> std::dec >> ignored >>
        ignored >> ignored >> mask;
    if (destination == "00000000" && mask == "00000000" && (flags & kRouteUp) != 0) {
      interfaces.insert(interface);
    }
  }
  std::ifstream routes6("/proc/net/ipv6_route");
  while (std::getline(routes6, line)) {
    std::istringstream fields(line);
    std::vector<std::string> words;
    for (std::string word; fields >> word;) words.push_back(word);
    if (words.size() < 10 || words[0] != std::string(32, '0') || words[1] != "00") continue;
    if (words[9] != "lo") interfaces.insert(words[9]);
  }
  return interfaces;
}

int32_t NativeConnectedState(uint32_t *flags, uint32_t) {
  if (flags != nullptr) *flags = 0;
  std::set<std::string> const interfaces = DefaultInterfaces();
  return AnyInterface([&interfaces](char const *name, uint32_t interfaceFlags) {
    return interfaces.contains(name) && Runs(interfaceFlags);
  });
}

struct Link {
  uint32_t number;
  bool runs;
};

std::vector<Link> PointToPointLinks() {
  std::vector<Link> links;
  AnyInterface([&links](char const *name, uint32_t flags) {
    uint32_t const number = if_nametoindex(name);
    bool const known =
        std::ranges::any_of(links, [number](Link const &link) { return link.number == number; });
    if ((flags & IFF_POINTOPOINT) != 0 && (flags & IFF_UP) != 0 && !known) {
      links.push_back({number, Runs(flags)});
    }
    return false;
  });
  return links;
}

uint32_t NativeEnumConnections(RASCONN *connections, uint32_t *size, uint32_t *count) {
  std::vector<Link> const links = PointToPointLinks();
  auto const room = *size / kRasConnSize;
  *count = static_cast<uint32_t>(links.size());
  *size = *count * kRasConnSize;
  if (links.size() > room) return ERROR_BUFFER_TOO_SMALL;
  for (size_t i = 0; i < links.size(); i++) {
    connections[i] = {};
    connections[i].dwSize = kRasConnSize;
    connections[i].hrasconn = links[i].number;
  }
  return 0;
}

uint32_t NativeConnectStatus(uint32_t connection, RASCONNSTATUS *status) {
  for (Link const &link : PointToPointLinks()) {
    if (link.number != connection) continue;
    status->rasconnstate = link.runs ? RASCS_Connected : kConnecting;
    return 0;
  }
  return 1;
}

bool Always() {
  return true;
}

zolt::LateFunction const kInternetFunctions[] = {
    {"InternetGetConnectedState", reinterpret_cast<FARPROC>(NativeConnectedState)}};
zolt::LateModule const kInternet = {"Wininet.dll", kInternetFunctions, Always};
zolt::LateFunction const kRasFunctions[] = {
    {"RasEnumConnectionsA", reinterpret_cast<FARPROC>(NativeEnumConnections)},
    {"RasGetConnectStatusA", reinterpret_cast<FARPROC>(NativeConnectStatus)}};
zolt::LateModule const kRas = {"Rasapi32.dll", kRasFunctions, Always};

[[gnu::constructor]] void Enter() {
  zolt::EnterLateModule(&kInternet);
  zolt::EnterLateModule(&kRas);
}

void Store(in_addr const &from, std::array<uint8_t, 4> *address) {
  std::memcpy(address->data(), &from, address->size());
}

// The address that packets to far away would bear; none is sent.
bool AddressOfDefaultRoute(std::array<uint8_t, 4> *address) {
  int const probe = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (probe < 0) return false;
  sockaddr_in place{};
  place.sin_family = AF_INET;
  place.sin_port = htons(9);
  // For documentation only; nobody is there.
  inet_pton(AF_INET, "198.51.100.1", &place.sin_addr);
  socklen_t size = sizeof place;
  auto *const generic = reinterpret_cast<sockaddr *>(&place);
  bool const known =
      connect(probe, generic, sizeof place) == 0 && getsockname(probe, generic, &size) == 0;
  close(probe);
  if (known) Store(place.sin_addr, address);
  return known;
}

}  // namespace

namespace zolt {

bool HostName(char (&name)[256]) {
  char found[256] = "";
  if (gethostname(found, sizeof found - 1) != 0 || found[0] == '\0') return false;
  std::memcpy(name, found, sizeof name);
  return true;
}

bool LookUpHost(char const *name, std::array<uint8_t, 4> *address) {
  addrinfo wanted{};
  wanted.ai_family = AF_INET;
  wanted.ai_socktype = SOCK_STREAM;
  addrinfo *found = nullptr;
  if (getaddrinfo(name, nullptr, &wanted, &found) != 0) return false;
  std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> const all(found, freeaddrinfo);
  Store(reinterpret_cast<sockaddr_in const *>(found->ai_addr)->sin_addr, address);
  if ((*address)[0] == 127) AddressOfDefaultRoute(address);
  return true;
}

}  // namespace zolt
