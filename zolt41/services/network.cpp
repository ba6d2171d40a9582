#include "zolt41/services/network.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>

#include "zolt41/platform/desktop/net_state.h"
#include "zolt41/platform/system/late_module.h"
#include "zolt41/platform/system/with_memory.h"
#include "zolt41/services/network_state.h"

namespace {

constexpr size_t kMostConnections = 32;

// What a module has, which is tried once in a process. Two threads that ask at the same moment both
// try, so that nobody waits, not even after a fork.
struct Internet {
  std::atomic<bool> tried;
  std::atomic<InternetGetConnectedState> connected;
};
struct DialUp {
  std::atomic<bool> tried;
  std::atomic<RasEnumConnections> enumerate;
  std::atomic<RasGetConnectStatus> status;
};

constinit Internet internet{};
constinit DialUp dialUp{};

InternetGetConnectedState Connected() {
  if (!internet.tried) {
    internet.connected = reinterpret_cast<InternetGetConnectedState>(
        GetProcAddress(LoadLibraryA("Wininet.dll"), "InternetGetConnectedState"));
    internet.tried = true;
  }
  return internet.connected;
}

// False if the module is not usable: both functions must be there.
bool FindDialUp(RasEnumConnections *enumerate, RasGetConnectStatus *status) {
  if (!dialUp.tried) {
    HMODULE const module = LoadLibraryA("Rasapi32.dll");
    dialUp.enumerate =
        reinterpret_cast<RasEnumConnections>(GetProcAddress(module, "RasEnumConnectionsA"));
    dialUp.status =
        reinterpret_cast<RasGetConnectStatus>(GetProcAddress(module, "RasGetConnectStatusA"));
    dialUp.tried = true;
  }
  *enumerate = dialUp.enumerate;
  *status = dialUp.status;
  return *enumerate != nullptr && *status != nullptr;
}

bool IsDialledUp() {
  RasEnumConnections enumerate = nullptr;
  RasGetConnectStatus status = nullptr;
  if (!FindDialUp(&enumerate, &status)) return false;
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
  internet.tried = false;
  dialUp.tried = false;
}

}  // namespace zolt

// A state that cannot be asked counts as connected.
int32_t IsNetworkOn() {
  bool const on = zolt::WithMemory(true, [] {
    InternetGetConnectedState const connected = Connected();
    uint32_t flags = 0;
    return connected == nullptr || connected(&flags, 0) != 0;
  });
  return on || zolt::WithMemory(false, [] { return IsDialledUp(); }) ? 1 : 0;
}

int32_t GetMyIP(char *destination) {
  char name[256];
  std::array<uint8_t, 4> address{};
  bool const known = zolt::WithMemory(
      false, [&] { return zolt::HostName(name) && zolt::LookUpHost(name, &address); });
  if (!known) address = {};
  if (destination != nullptr) {
    std::snprintf(destination, 16, "%d.%d.%d.%d", address[0], address[1], address[2], address[3]);
  }
  return known ? 1 : 0;
}
