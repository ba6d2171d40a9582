// The example clients, as somebody builds them who has the installed library, and as processes that
// know the component interfaces alone.

#include <cstdlib>
#include <memory>

#include "tests/support/child.h"
#include "tests/support/run_tool.h"
#include "tests/support/temp_home.h"
#include "zolt41/platform/registry/hive_status.h"

namespace zolt::testing {
namespace {

// A home with the library installed in it, whose class is registered.
class ClientsTest : public ::testing::Test {
 protected:
  ClientsTest() {
    Shell("cmake --install '" ZOLT_BUILD "' --prefix $ZOLT_HOME/prefix > /dev/null");
    Shell("$ZOLT_HOME/prefix/bin/zolt -q register");
  }
  ~ClientsTest() override { LeaveHives(); }
  static void Shell(std::string const &line) {
    EXPECT_EQ(std::system(line.c_str()), 0) << line;  // NOLINT(cert-env33-c)
  }
  // As the head of the example's file says.
  static void Build(std::string const &example) {
    Shell("cd $ZOLT_HOME && export PKG_CONFIG_PATH=prefix/" ZOLT_LIBDIR
          "/pkgconfig && " ZOLT_COMPILE " -std=c++20 -O0 -o " +
          example + " '" ZOLT_EXAMPLES "/" + example +
          ".cpp' $(pkg-config --cflags --libs zolt41) "
          "-Wl,-rpath,$ZOLT_HOME/prefix/" ZOLT_LIBDIR);
  }
  std::unique_ptr<Child> Run(std::string const &line) const {
    return std::make_unique<Child>([&](Child::Pipe &pipe) {
      pipe.BecomeStandard();
      return Child::Become(Words(home_.path() + "/" + line));
    });
  }
  static void Tool(std::string const &line) { EXPECT_EQ(RunTool(Words(line)).code, 0) << line; }

  TempHome home_;
};

TEST_F(ClientsTest, OnePrintsTheTree) {
  Build("component_tree");
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
  Build("component_events");
  auto const nameless = Run("component_events \xFF");
  EXPECT_EQ(nameless->Wait(), 1) << "no name in UTF-8";
  auto const client = Run("component_events Conferencing B\u00FCro");
  Child::Pipe &pipe = client->pipe();
  ASSERT_EQ(pipe.Hear(), "listening; end the input to stop");
  std::string const section = "Conferencing:B\u00FCro";
  Tool("prefs set " + section + " Volume 70");
  EXPECT_EQ(pipe.Hear(), "Volume = 70");
  Tool("prefs set General Other 1");
  Tool("prefs set " + section + " Volume 40");
  EXPECT_EQ(pipe.Hear(), "Volume = 40");
  Tool("prefs unset " + section + " Volume");
  EXPECT_EQ(pipe.Hear(), "Volume is gone");
  client->EndInput();
  EXPECT_EQ(client->Wait(), 0);
}

}  // namespace
}  // namespace zolt::testing
