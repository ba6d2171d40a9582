#include "zolt41/services/network.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "zolt41/platform/desktop/net_state.h"
#include "zolt41/platform/system/late_module.h"
#include "zolt41/services/network_state.h"

namespace {

constexpr size_t kMostConnections = 32;

// Each module is tried once in a process.
struct Network {
  std::mutex lock;
  bool internetTried = false;
  InternetGetConnectedState connected = nullptr;
  bool rasTried = false;
  RasEnumConnections enumerate = nullptr;
  RasGetConnectStatus status = nullptr;
};

Network &TheNetwork() {
  static auto *const network = new Network;
  return *network;
}

InternetGetConnectedState Connected() {
  Network &network = TheNetwork();
  std::lock_guard const guard(network.lock);
  if (!network.internetTried) {
    network.internetTried = true;
    network.connected = reinterpret_cast<InternetGetConnectedState>(
        GetProcAddress(LoadLibraryA("Wininet.dll"), "InternetGetConnectedState"));
  }
  return network.connected;
}

// False if the module is not usable: both functions must be there.
bool DialUp(RasEnumConnections *enumerate, RasGetConnectStatus *status) {
  Network &network = TheNetwork();
  std::lock_guard const guard(network.lock);
  if (!network.rasTried) {
    network.rasTried = true;
    HMODULE const module = LoadLibraryA("Rasapi32.dll");
    network.enumerate =
        reinterpret_cast<RasEnumConnections>(GetProcAddress(module, "RasEnumConnectionsA"));
    network.status =
        reinterpret_cast<RasGetConnectStatus>(GetProcAddress(module, "RasGetConnectStatusA"));
  }
  *enumerate = network.enumerate;
  *status = network.status;
  return *enumerate != nullptr && *status != nullptr;
}

bool IsDialledUp() {
  RasEnumConnections enumerate = nullptr;
  RasGetConnectStatus status = nullptr;
  if (!DialUp(&enumerate, &status)) return false;
  RASCONN connections[kMostConnections];
  connections[0].dwSize = kRasConnSize;
  uint32_t size = sizeof connections;
  uint32_t count = 0;
  if (enumerate(connections, &size, &count) != 0) return false;
  for (uint32_t i = 0; i < count && i < kMostConnections; i++) {
    RASCONNSTATUS state{};
    state.dwSize = kRasConnStatusSize;
    if (status(connections[i].hrasconn, &state) == 0 && state.rasconnstate == RASCS_Connected) {
      return true;
    }
  }
  return false;
}

}  // namespace

namespace zolt {

void ForgetNetwork() {
  Network &network = TheNetwork();
  std::lock_guard const guard(network.lock);
  network.internetTried = false;
  network.connected = nullptr;
  network.rasTried = false;
  network.enumerate = nullptr;
  network.status = nullptr;
}

}  // namespace zolt

int32_t IsNetworkOn() {
  InternetGetConnectedState const connected = Connected();
  uint32_t flags = 0;
  if (connected == nullptr || connected(&flags, 0) != 0) return 1;
  return IsDialledUp() ? 1 : 0;
}

int32_t GetMyIP(char *destination) {
  char name[256];
  std::array<uint8_t, 4> address{};
  bool const known = zolt::HostName(name) && zolt::LookUpHost(name, &address);
  if (destination != nullptr) {
    std::snprintf(destination, 16, "%d.%d.%d.%d", address[0], address[1], address[2], address[3]);
  }
  return known ? 1 : 0;
}
