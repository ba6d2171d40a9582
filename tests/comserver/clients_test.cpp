// The example clients, as processes that know the component interfaces alone.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
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

// Becomes a program that uses the library in `home`.
int Become(Child::Pipe const &pipe, std::vector<std::string> words, std::string const &home) {
  pipe.BecomeStandard();
  setenv("LD_LIBRARY_PATH", home.c_str(), 1);
  words[0] = BuildPath("/bin/" + words[0]);
  std::vector<char *> argv;
  for (std::string &word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  execv(argv[0], argv.data());
  return 127;
}

// A home in which the class is registered with a library that lies there too.
class ClientsTest : public ::testing::Test {
 protected:
  ClientsTest() {
    std::string const library = home_.path() + "/libzolt41.so.0";
    std::filesystem::copy_file(BuildPath("/lib/libzolt41.so.0"), library);
    EXPECT_EQ(ZOLTRegisterServer(0), S_OK);
    std::string const key = "Software\\Classes\\CLSID\\{5ED2DD58-7638-11D3-8FD3-00A02459FA0F}";
    HKEY handle = 0;
    EXPECT_EQ(RegOpenKeyA(HKEY_CURRENT_USER, key.c_str(), &handle), ERROR_SUCCESS);
    Key(handle, "InprocServer32").Set("", library);
    RegCloseKey(handle);
  }
  ~ClientsTest() override { LeaveHives(); }

  std::unique_ptr<Child> Run(std::string const &line) const {
    return std::make_unique<Child>(
        [&](Child::Pipe &pipe) { return Become(pipe, Words(line), home_.path()); });
  }
  static void Tool(std::string const &line) { EXPECT_EQ(RunTool(Words(line)).code, 0) << line; }

  TempHome home_;
};

TEST_F(ClientsTest, OnePrintsTheTree) {
  Tool("prefs set Audio Volume 70");
  Tool("prefs set -t bytes Audio Mask 0x00FF");
  auto const client = Run("component_tree");
  std::vector<std::string> below;
  for (auto line = client->pipe().Hear(); !line.empty(); line = client->pipe().Hear()) {
    if (line == "  Audio" || line.starts_with("    ")) below.push_back(line);
  }
  EXPECT_EQ(client->Wait(), 0);
  EXPECT_EQ(below, (std::vector<std::string>{"  Audio", "    Volume = 70", "    Mask: 2 bytes"}));
}

TEST_F(ClientsTest, OneHearsChangesInAPlainLoop) {
  auto const client = Run("component_events Conferencing Audio");
  Child::Pipe &pipe = client->pipe();
  ASSERT_EQ(pipe.Hear(), "listening; end the input to stop");
  Tool("prefs set Audio Volume 70");
  EXPECT_EQ(pipe.Hear(), "Volume = 70");
  Tool("prefs set General Other 1");
  Tool("prefs set Audio Volume 40");
  EXPECT_EQ(pipe.Hear(), "Volume = 40");
  Tool("prefs unset Audio Volume");
  EXPECT_EQ(pipe.Hear(), "Volume is gone");
  client->EndInput();
  EXPECT_EQ(client->Wait(), 0);
}

}  // namespace
}  // namespace zolt::testing
