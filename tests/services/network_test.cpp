#include "zolt41/services/network.h"

#include <linux/if_tun.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <cstdlib>
#include <cstring>
#include <tuple>

#include "tests/support/child.h"
#include "tests/support/files.h"
#include "zolt41/platform/desktop/net_state.h"
#include "zolt41/platform/system/late_module.h"
#include "zolt41/services/network_state.h"

namespace zolt::testing {
namespace {

int32_t connected = 0;
uint32_t enumResult = 0;
std::vector<uint32_t> states;
int asked = 0;

int32_t FakeConnected(uint32_t *flags, uint32_t reserved) {
  EXPECT_TRUE(flags != nullptr && reserved == 0);
  return connected;
}

uint32_t FakeEnum(RASCONN *connections, uint32_t *size, uint32_t *count) {
  asked++;
  EXPECT_EQ(connections[0].dwSize, 412U);
  EXPECT_EQ(*size, 13184U);
  for (uint32_t i = 0; i < states.size(); i++) connections[i].hrasconn = 100 + i;
  *count = static_cast<uint32_t>(states.size());
  return enumResult;
}

uint32_t FakeStatus(uint32_t connection, RASCONNSTATUS *status) {
  EXPECT_EQ(status->dwSize, 160U);
  status->rasconnstate = states[connection - 100];
  // The call for this one fails.
  return connection == 101 ? 1 : 0;
}

LateFunction const kConnected[] = {
    {"InternetGetConnectedState", reinterpret_cast<FARPROC>(FakeConnected)}};
LateFunction const kBoth[] = {{"RasEnumConnectionsA", reinterpret_cast<FARPROC>(FakeEnum)},
                              {"RasGetConnectStatusA", reinterpret_cast<FARPROC>(FakeStatus)}};
template <bool Is>
bool Usable() {
  return Is;
}

LateModule const kGoneInternet = {"Wininet.dll", kConnected, Usable<false>};
LateModule const kGoneRas = {"Rasapi32.dll", kBoth, Usable<false>};
LateModule const kInternet = {"Wininet.dll", kConnected, Usable<true>};
LateModule const kNoInternet = {"Wininet.dll", {}, Usable<true>};
LateModule const kRas = {"Rasapi32.dll", kBoth, Usable<true>};
LateModule const kHalfRas = {"Rasapi32.dll", std::span(kBoth, 1), Usable<true>};

TEST(NetworkTest, TheModulesDecideInTheirOrder) {
  constexpr uint32_t kUp = 0x2000;
  // The modules, what they answer, whether the network is on, and how often the second was asked.
  std::tuple<LateModule const *, LateModule const *, int32_t, uint32_t, std::vector<uint32_t>,
             int32_t, int> const rows[] = {
      {&kNoInternet, &kRas, 0, 0, {}, 1, 0},
      {&kGoneInternet, &kRas, 0, 0, {}, 1, 0},
      {&kInternet, &kRas, 1, 0, {}, 1, 0},
      {&kInternet, &kHalfRas, 0, 0, {kUp}, 0, 0},
      {&kInternet, &kGoneRas, 0, 0, {kUp}, 0, 0},
      {&kInternet, &kRas, 0, 0, {}, 0, 1},
      {&kInternet, &kRas, 0, 0, {1, kUp, kUp}, 1, 1},
      {&kInternet, &kRas, 0, 0, {1, kUp, 0x2001}, 0, 1},
      {&kInternet, &kRas, 0, 603, {kUp}, 0, 1},
  };
  for (auto const &[internet, ras, isConnected, result, itsStates, on, times] : rows) {
    LateModuleSwap const first(internet);
    LateModuleSwap const second(ras);
    connected = isConnected;
    enumResult = result;
    states = itsStates;
    asked = 0;
    ForgetNetwork();
    EXPECT_EQ(IsNetworkOn(), on);
    EXPECT_EQ(asked, times);
  }
  ForgetNetwork();
}

// As root of a user namespace of its own, where the right is missing.
bool EnterNetwork() {
  constexpr int kOwn = CLONE_NEWNET | CLONE_NEWUTS | CLONE_NEWNS;
  if (unshare(kOwn) == 0) return true;
  std::string const user = std::to_string(geteuid());
  std::string const group = std::to_string(getegid());
  if (unshare(CLONE_NEWUSER | kOwn) != 0) return false;
  WriteContent("/proc/self/setgroups", "deny");
  WriteContent("/proc/self/uid_map", "0 " + user + " 1");
  WriteContent("/proc/self/gid_map", "0 " + group + " 1");
  return true;
}

// Runs in a network of its own, which has nothing but what the test makes.
template <typename Run>
int InNetwork(Run run) {
  Child child([&run](Child::Pipe &) {
    if (!EnterNetwork()) return 99;
    ForgetNetwork();
    return run();
  });
  return child.Wait();
}

void Ip(std::string const &arguments) {
  if (std::system(("ip " + arguments).c_str()) != 0) _exit(98);
}

// A link and the other end of it, which gives it a carrier once that is up, too.
void AddLink(std::string const &name, std::string const &address) {
  Ip("link add " + name + " type veth peer name " + name + "end");
  Ip("addr add " + address + "/24 dev " + name);
  Ip("link set " + name + " up");
}

// The kernel tells of a carrier some time after the other end came or went.
bool BecomesOn(int32_t on) {
  auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (IsNetworkOn() != on) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

TEST(NetworkTest, RoutesToEverywhereWithACarrierAreFoundWhereverTheyStand) {
  EXPECT_EQ(InNetwork([] {
              if (IsNetworkOn() != 0) return 80;
              AddLink("n0", "10.8.0.1");  // without a carrier
              AddLink("v0", "10.9.0.1");
              Ip("link set v0end up");
              if (IsNetworkOn() != 0) return 81;  // no route
              struct Row {
                std::vector<char const *> routes;
                int32_t on;
              };
              std::vector<Row> const rows = {
                  {{"default nexthop via 10.8.0.2 nexthop via 10.9.0.2"}, 1},
                  {{"default via 10.9.0.2 table 100"}, 1},
                  {{"0.0.0.0/1 via 10.9.0.2", "128.0.0.0/1 via 10.9.0.2"}, 1},
                  {{"::/1 dev v0", "8000::/1 dev v0"}, 1},
                  {{"default via 10.8.0.2"}, 0},
                  {{"0.0.0.0/1 via 10.9.0.2", "128.0.0.0/1 via 10.8.0.2"}, 0},
                  {{"0.0.0.0/1 via 10.9.0.2", "8000::/1 dev v0"}, 0},
                  {{"blackhole default"}, 0}};
              for (size_t i = 0; i < rows.size(); i++) {
                for (char const *route : rows[i].routes) Ip("route add " + std::string(route));
                if (!BecomesOn(rows[i].on)) return static_cast<int>(i) + 1;
                for (char const *route : rows[i].routes) Ip("route del " + std::string(route));
              }
              Ip("route add default via 10.9.0.2");
              if (!BecomesOn(1)) return 82;
              Ip("link set v0end down");
              if (!BecomesOn(0)) return 83;
              rlimit const none{};
              setrlimit(RLIMIT_NOFILE, &none);
              return IsNetworkOn() == 1 ? 0 : 90;  // the kernel cannot be asked
            }),
            0);
}

TEST(NetworkTest, APointToPointLinkThatRunsIsADialUpConnection) {
  EXPECT_EQ(InNetwork([] {
              Ip("tuntap add dev t0 mode tun");
              Ip("link set t0 up");
              if (IsNetworkOn() != 0) return 1;  // nobody is at its end
              int const tunnel = open("/dev/net/tun", O_RDWR | O_CLOEXEC);
              ifreq request{};
              request.ifr_flags = IFF_TUN;
              std::strcpy(request.ifr_name, "t0");
              if (ioctl(tunnel, TUNSETIFF, &request) != 0) return 2;
              return BecomesOn(1) ? 0 : 3;
            }),
            0);
}

TEST(NetworkTest, ALoopbackAddressGivesWayToThatOfTheDefaultRoute) {
  EXPECT_EQ(InNetwork([] {
              std::array<uint8_t, 4> address{};
              if (LookUpHost("no-such-host.invalid", &address)) return 5;
              Ip("link set lo up");
              if (!LookUpHost("127.0.1.1", &address) || address[0] != 127) return 1;
              AddLink("v0", "10.9.0.1");
              Ip("link set v0end up");
              Ip("route add default via 10.9.0.2");
              Ip("route add blackhole 198.51.100.0/24");
              if (!LookUpHost("127.0.1.1", &address)) return 2;
              if (address != std::array<uint8_t, 4>{10, 9, 0, 1}) return 3;
              if (!LookUpHost("192.0.2.7", &address) || address[0] != 192) return 4;
              return 0;
            }),
            0);
}

TEST(NetworkTest, OfSeveralAddressesTheFirstIsGiven) {
  TempHome const home;
  std::string const hosts = home.path() + "/hosts";
  WriteContent(hosts, "192.0.2.1 two\n10.9.0.7 two\n");
  EXPECT_EQ(InNetwork([&hosts] {
              mount("", "/", "", MS_REC | MS_PRIVATE, nullptr);
              if (mount(hosts.c_str(), "/etc/hosts", "", MS_BIND, nullptr) != 0) return 97;
              // Only the second can be reached.
              AddLink("v0", "10.9.0.1");
              if (sethostname("two", 3) != 0) return 97;
              char text[16] = "";
              return GetMyIP(text) == 1 && std::string(text) == "192.0.2.1" ? 0 : 1;
            }),
            0);
}

TEST(NetworkTest, WithoutANameThereIsNoAddress) {
  EXPECT_EQ(InNetwork([] {
              if (sethostname("no-such-host.invalid", 20) != 0) return 97;
              char text[16] = "unchanged";
              if (GetMyIP(text) != 0 || std::string(text) != "0.0.0.0") return 1;
              if (sethostname("192.0.2.7", 9) != 0) return 97;
              return GetMyIP(text) == 1 && std::string(text) == "192.0.2.7" ? 0 : 2;
            }),
            0);
}

}  // namespace
}  // namespace zolt::testing
