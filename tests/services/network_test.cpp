#include "zolt41/services/network.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

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

bool Usable() {
  return true;
}

LateFunction const kConnected[] = {
    {"InternetGetConnectedState", reinterpret_cast<FARPROC>(FakeConnected)}};
LateFunction const kBoth[] = {{"RasEnumConnectionsA", reinterpret_cast<FARPROC>(FakeEnum)},
                              {"RasGetConnectStatusA", reinterpret_cast<FARPROC>(FakeStatus)}};
bool Gone() {
  return false;
}

LateModule const kGoneInternet = {"Wininet.dll", kConnected, Gone};
LateModule const kGoneRas = {"Rasapi32.dll", kBoth, Gone};
LateModule const kInternet = {"Wininet.dll", kConnected, Usable};
LateModule const kNoInternet = {"Wininet.dll", {}, Usable};
LateModule const kRas = {"Rasapi32.dll", kBoth, Usable};
LateModule const kHalfRas = {"Rasapi32.dll", std::span(kBoth, 1), Usable};

TEST(NetworkTest, TheModulesDecideInTheirOrder) {
  struct Row {
    LateModule const *internet;
    LateModule const *ras;
    int32_t connected;
    uint32_t enumResult;
    std::vector<uint32_t> states;
    int32_t on;
    int asked;
  };
  constexpr uint32_t kUp = 0x2000;
  for (Row const &row : {
           Row{&kNoInternet, &kRas, 0, 0, {}, 1, 0},
           Row{&kGoneInternet, &kRas, 0, 0, {}, 1, 0},
           Row{&kInternet, &kRas, 1, 0, {}, 1, 0},
           Row{&kInternet, &kHalfRas, 0, 0, {kUp}, 0, 0},
           Row{&kInternet, &kGoneRas, 0, 0, {kUp}, 0, 0},
           Row{&kInternet, &kRas, 0, 0, {}, 0, 1},
           Row{&kInternet, &kRas, 0, 0, {1, kUp, kUp}, 1, 1},
           Row{&kInternet, &kRas, 0, 0, {1, kUp, 0x2001}, 0, 1},
           Row{&kInternet, &kRas, 0, 603, {kUp}, 0, 1},
       }) {
    LateModuleSwap const internet(row.internet);
    LateModuleSwap const ras(row.ras);
    connected = row.connected;
    enumResult = row.enumResult;
    states = row.states;
    asked = 0;
    ForgetNetwork();
    EXPECT_EQ(IsNetworkOn(), row.on);
    EXPECT_EQ(asked, row.asked);
  }
  ForgetNetwork();
}

void WriteMap(char const *file, std::string const &text) {
  int const map = open(file, O_WRONLY | O_CLOEXEC);
  if (write(map, text.data(), text.size()) < 0) _exit(96);
  close(map);
}

// As root of a user namespace of its own, where the right is missing.
bool EnterNetwork() {
  constexpr int kOwn = CLONE_NEWNET | CLONE_NEWUTS | CLONE_NEWNS;
  if (unshare(kOwn) == 0) return true;
  std::string const user = std::to_string(geteuid());
  std::string const group = std::to_string(getegid());
  if (unshare(CLONE_NEWUSER | kOwn) != 0) return false;
  WriteMap("/proc/self/setgroups", "deny");
  WriteMap("/proc/self/uid_map", "0 " + user + " 1");
  WriteMap("/proc/self/gid_map", "0 " + group + " 1");
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
  std::vector<std::string> words = {"ip"};
  for (size_t at = 0; at < arguments.size();) {
    size_t const end = std::min(arguments.find(' ', at), arguments.size());
    words.push_back(arguments.substr(at, end - at));
    at = end + 1;
  }
  std::vector<char *> pointers;
  for (std::string &word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  pid_t const process = fork();
  if (process == 0) {
    execvp("ip", pointers.data());
    _exit(127);
  }
  int status = 0;
  waitpid(process, &status, 0);
  if (status != 0) _exit(98);
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

TEST(NetworkTest, ARouteWithACarrierIsANetwork) {
  EXPECT_EQ(InNetwork([] {
              if (IsNetworkOn() != 0) return 1;
              Ip("link add v0 type veth peer name v1");
              Ip("addr add 10.9.0.1/24 dev v0");
              Ip("link set v0 up");
              Ip("link set v1 up");
              if (IsNetworkOn() != 0) return 2;  // no route
              Ip("route add default via 10.9.0.2");
              if (!BecomesOn(1)) return 3;
              Ip("link set v1 down");
              if (!BecomesOn(0)) return 4;  // a route and no carrier
              return 0;
            }),
            0);
}

TEST(NetworkTest, RoutesToEverywhereAreFoundWhereverTheyStand) {
  EXPECT_EQ(InNetwork([] {
              Ip("link add n0 type veth peer name n1");
              Ip("link add v0 type veth peer name v1");
              Ip("addr add 10.8.0.1/24 dev n0");
              Ip("addr add 10.9.0.1/24 dev v0");
              for (char const *link : {"n0", "v0", "v1"})  // n0 has no carrier
                Ip("link set " + std::string(link) + " up");
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
              Ip("link add v0 type veth peer name v1");
              Ip("addr add 10.9.0.1/24 dev v0");
              Ip("link set v0 up");
              Ip("link set v1 up");
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
              Ip("link add v0 type veth peer name v1");
              Ip("addr add 10.9.0.1/24 dev v0");
              Ip("link set v0 up");
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
