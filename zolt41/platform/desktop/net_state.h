#ifndef ZOLT41_PLATFORM_DESKTOP_NET_STATE_H_
#define ZOLT41_PLATFORM_DESKTOP_NET_STATE_H_

#include <array>
#include <cstdint>

// The machine's network. Two modules are reached through late_module.h: Wininet.dll has
// InternetGetConnectedState, and Rasapi32.dll RasEnumConnectionsA and RasGetConnectStatusA.

using InternetGetConnectedState = int32_t (*)(uint32_t *flags, uint32_t reserved);

inline constexpr uint32_t kRasConnSize = 412;
inline constexpr uint32_t kRasConnStatusSize = 160;
inline constexpr uint32_t RASCS_Connected = 0x2000;
inline constexpr uint32_t ERROR_BUFFER_TOO_SMALL = 603;

// As published, with a handle of 32 bits.
struct RASCONN {
  uint32_t dwSize;
  uint32_t hrasconn;
  char rest[kRasConnSize - 8];
};
static_assert(sizeof(RASCONN) == kRasConnSize);

struct RASCONNSTATUS {
  uint32_t dwSize;
  uint32_t rasconnstate;
  char rest[kRasConnStatusSize - 8];
};
static_assert(sizeof(RASCONNSTATUS) == kRasConnStatusSize);

using RasEnumConnections = uint32_t (*)(RASCONN *connections, uint32_t *size, uint32_t *count);
using RasGetConnectStatus = uint32_t (*)(uint32_t connection, RASCONNSTATUS *status);

// The native functions: the machine is connected if routes lead to everywhere over interfaces with
// a carrier, or if the kernel cannot be asked; dial-up connections are point-to-point links,
// connected once they run.

namespace zolt {

// The first address of a host of that name, in the order of the look-up; a loopback address gives
// way to the one from which the default route is taken, if there is one. False if there is none.
bool LookUpHost(char const *name, std::array<uint8_t, 4> *address);

// The name of this host, with its NUL; false, with the buffer as it was, if it cannot be had.
bool HostName(char (&name)[256]);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_DESKTOP_NET_STATE_H_
