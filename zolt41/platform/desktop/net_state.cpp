#include "zolt41/platform/desktop/net_state.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <set>
#include <vector>

#include "zolt41/platform/desktop/kernel_tables.h"
#include "zolt41/platform/system/late_module.h"

namespace {

// The states of a link that is not there yet.
constexpr uint32_t kConnecting = 0;
// For all that a look-up of one name can give.
constexpr size_t kMostRoom = size_t{1} << 20;

// A machine that cannot say counts as connected.
int32_t NativeConnectedState(uint32_t *flags, uint32_t) {
  if (flags != nullptr) *flags = 0;
  std::vector<zolt::NetworkLink> links;
  if (!zolt::ReadLinks(&links)) return 1;
  std::set<uint32_t> usable;
  for (zolt::NetworkLink const &link : links)
    if (link.Runs() && (link.flags & IFF_LOOPBACK) == 0) usable.insert(link.number);
  bool found = false;
  return !zolt::FindWayToEverywhere(usable, &found) || found ? 1 : 0;
}

std::vector<zolt::NetworkLink> PointToPointLinks() {
  std::vector<zolt::NetworkLink> links;
  zolt::ReadLinks(&links);
  std::erase_if(links, [](zolt::NetworkLink const &link) {
    return (link.flags & IFF_POINTOPOINT) == 0 || (link.flags & IFF_UP) == 0;
  });
  return links;
}

uint32_t NativeEnumConnections(RASCONN *connections, uint32_t *size, uint32_t *count) {
  std::vector<zolt::NetworkLink> const links = PointToPointLinks();
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
  for (zolt::NetworkLink const &link : PointToPointLinks()) {
    if (link.number != connection) continue;
    status->rasconnstate = link.Runs() ? RASCS_Connected : kConnecting;
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

// The address that packets to `place` would bear; none is sent.
bool AddressTowards(char const *place, std::array<uint8_t, 4> *address) {
  int const probe = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (probe < 0) return false;
  sockaddr_in peer{};
  peer.sin_family = AF_INET;
  peer.sin_port = htons(9);
  inet_pton(AF_INET, place, &peer.sin_addr);
  socklen_t size = sizeof peer;
  auto *const generic = reinterpret_cast<sockaddr *>(&peer);
  bool const known =
      connect(probe, generic, sizeof peer) == 0 && getsockname(probe, generic, &size) == 0;
  close(probe);
  if (known) std::memcpy(address->data(), &peer.sin_addr, address->size());
  return known;
}

// A machine may have routes that refuse some of these; nobody is at the first three.
bool AddressOfDefaultRoute(std::array<uint8_t, 4> *address) {
  constexpr char const *kFarAway[] = {"198.51.100.1", "192.88.99.1", "240.0.0.1", "1.0.0.1"};
  return std::ranges::any_of(
      kFarAway, [address](char const *place) { return AddressTowards(place, address); });
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
  std::vector<char> room(1024);
  hostent entry{};
  hostent *found = nullptr;
  int error = 0;
  while (gethostbyname2_r(name, AF_INET, &entry, room.data(), room.size(), &found, &error) ==
         ERANGE) {
    if (room.size() >= kMostRoom) return false;
    room.resize(room.size() * 2);
  }
  if (found == nullptr || found->h_addr_list[0] == nullptr) return false;
  std::memcpy(address->data(), found->h_addr_list[0], address->size());
  if ((*address)[0] == 127) AddressOfDefaultRoute(address);
  return true;
}

}  // namespace zolt
