// The example clients, as processes that know the component interfaces alone.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/key.h"
#include "tests/support/run_tool.h"
#include "tests/support/temp_home.h"
#include "zolt41/comserver/server_exports.h"
#include "zolt41/platform/registry/hive_status.h"

namespace zolt::testing {
namespace {

std::string BuildPath(std::string const &below) {
  std::string const tool = ZOLT_TOOL;
  return tool.substr(0, tool.rfind("/bin/")) + below;
}

// A program that uses the library in `home`. Its input ends with this.
class Client {
 public:
  Client(std::string const &program, std::vector<std::string> arguments, std::string const &home)
      : process_([&](Child::Pipe &) {
          dup2(input_[0], 0);
          dup2(output_[1], 1);
          close(input_[1]);
          setenv("LD_LIBRARY_PATH", home.c_str(), 1);
          std::string path = BuildPath("/bin/" + program);
          std::vector<char *> argv = {path.data()};
          for (std::string &argument : arguments) argv.push_back(argument.data());
          argv.push_back(nullptr);
          execv(argv[0], argv.data());
          return 127;
        }) {
    close(output_[1]);
    close(input_[0]);
  }
  ~Client() {
    EndInput();
    close(output_[0]);
  }

  std::string Line() { return lines_.Hear(); }
  void EndInput() {
    if (input_[1] >= 0) close(input_[1]);
    input_[1] = -1;
  }
  int Wait() { return process_.Wait(); }

 private:
  static std::array<int, 2> NewPipe() {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    return ends;
  }

  std::array<int, 2> input_ = NewPipe();
  std::array<int, 2> output_ = NewPipe();
  Child::Pipe lines_{output_[0], -1};
  Child process_;
};

// A home in which the class is registered with a library that lies there too.
class ClientsTest : public ::testing::Test {
 protected:
  ClientsTest() {
    std::string const library = home_.path() + "/libzolt41.so.0";
    std::filesystem::copy_file(BuildPath("/lib/libzolt41.so.0"), library);
    EXPECT_EQ(ZOLTRegisterServer(0), S_OK);
    HKEY key = 0;
    EXPECT_EQ(RegOpenKeyA(HKEY_CURRENT_USER,
                          "Software\\Classes\\CLSID\\{5ED2DD58-7638-11D3-8FD3-00A02459FA0F}", &key),
              ERROR_SUCCESS);
    Key(key, "InprocServer32").Set("", library);
    RegCloseKey(key);
  }
  ~ClientsTest() override { LeaveHives(); }

  static void Tool(std::string const &line) { EXPECT_EQ(RunTool(Words(line)).code, 0) << line; }

  TempHome home_;
};

TEST_F(ClientsTest, OnePrintsTheTree) {
  Tool("prefs set Audio Volume 70");
  Tool("prefs set -t bytes Audio Mask 0x00FF");
  Client client("component_tree", {}, home_.path());
  std::vector<std::string> below;
  for (std::string line = client.Line(); !line.empty(); line = client.Line()) {
    if (line == "  Audio" || line.starts_with("    ")) below.push_back(line);
  }
  EXPECT_EQ(client.Wait(), 0);
  EXPECT_EQ(below, (std::vector<std::string>{"  Audio", "    Volume = 70", "    Mask: 2 bytes"}));
}

TEST_F(ClientsTest, OneHearsChangesInAPlainLoop) {
  Client client("component_events", {"Conferencing", "Audio"}, home_.path());
  ASSERT_EQ(client.Line(), "listening; end the input to stop");
  Tool("prefs set Audio Volume 70");
  EXPECT_EQ(client.Line(), "Volume = 70");
  Tool("prefs set General Other 1");
  Tool("prefs set Audio Volume 40");
  EXPECT_EQ(client.Line(), "Volume = 40");
  Tool("prefs unset Audio Volume");
  EXPECT_EQ(client.Line(), "Volume is gone");
  client.EndInput();
  EXPECT_EQ(client.Wait(), 0);
}

}  // namespace
}  // namespace zolt::testing
