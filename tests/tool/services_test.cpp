#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/prefs/prefs_fixture.h"
#include "tests/services/stand_in.h"
#include "tests/support/run_tool.h"
#include "tools/zolt/verbs.h"
#include "zolt41/platform/system/late_module.h"

namespace zolt::testing {
namespace {

namespace fs = std::filesystem;

class ServicesTest : public StandInTest {
 protected:
  static int Code(std::vector<std::string> const &arguments, ToolSetting const &setting = {}) {
    ToolResult const result = RunTool(arguments, setting);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.code == 0, result.err.empty()) << result.err;
    return result.code;
  }
};

TEST_F(ServicesTest, LinksAndMailGoToTheDesktopsPrograms) {
  EXPECT_EQ(Code({"open", "http://x"}), 3);
  StandIn("xdg-open");
  StandIn("sendmail");
  EXPECT_EQ(Code({"open", "http://x/\u00FC"}), 0);
  EXPECT_EQ(Heard("xdg-open"), "<http://x/\u00FC>\n");
  EXPECT_EQ(Code({"open", "--", "-x"}), 2);
  EXPECT_EQ(Code({"open", "a\nb"}), 2);
  EXPECT_EQ(Code({"mail", "--", "-a@b"}), 2);
  EXPECT_EQ(Code({"mail", "a@b", "--subject", "a\nb"}), 2);
  EXPECT_EQ(Code({"mail", "a@b", "--subject", "Hi", "--text", "t"}), 0);
  EXPECT_TRUE(Heard("sendmail").starts_with("<-i><--><a@b>\nTo: a@b\nSubject: Hi\n"));
  EXPECT_EQ(Code({"mail", "a@b", "--from", "-"}, {.input = "line\n"}), 0);
  EXPECT_TRUE(Heard("sendmail").ends_with("\n\nline\n\n"));
  for (auto const &[line, out] :
       {std::pair("--json open x:y", R"({"schema":1,"url":"x:y","opened":true})"),
        {"--json -n open x:y", R"({"schema":1,"url":"x:y","opened":false})"},
        {"--json mail a@b", R"({"schema":1,"to":"a@b","sent":true})"},
        {"--json -n mail a@b", R"({"schema":1,"to":"a@b","sent":false})"}}) {
    EXPECT_EQ(RunTool(Words(line)).out, out + std::string("\n"));
  }
  StandIn("xdg-open", "exit 4");
  EXPECT_EQ(Code({"open", "http://x"}), 3);
}

TEST_F(ServicesTest, WhatIsNotSentIsSaidInOneLine) {
  std::string const no = "zolt: a@b: not sent: refused\n";
  struct Row {
    std::string line;
    int code;
    std::string err;
  };
  auto const check = [](std::initializer_list<Row> rows) {
    for (Row const &row : rows) {
      ToolResult const result = RunTool(Words(row.line));
      EXPECT_EQ(std::to_string(result.code) + " " + result.err,
                std::to_string(row.code) + " " + row.err)
          << row.line;
    }
  };
  check({{"mail a@b", 3, "zolt: this machine sends no mail; install a sendmail\n"}});
  StandIn("sendmail", "echo refused >&2; exit 69");
  StandIn("xdg-open");
  setenv("DISPLAY", ":none", 1);
  StandIn("zenity");
  check(
      {{"mail a@b", 3, no},
       {"mail -q a@b", 3, no},
       {"--json mail a@b", 3,
        R"({"error":{"code":3,"kind":"io","subject":"a@b","message":"not sent: refused","hint":""}})"
        "\n"},
       {"mail --compose a@b", 3,
        "zolt: no mail program can show it before it is sent; --compose needs a desktop with "
        "xdg-email\n"},
       {"-n mail a@b,c@d", 2,
        "zolt: a@b,c@d: is not one address; give it plain, as in anna@example.org\n"},
       {"-n mail a@b", 0, "zolt: a@b: would get the message (not sent)\n"},
       {"-n --exit-code -q mail a@b", 1, ""},
       {"-n --exit-code open x:y", 1, "zolt: x:y: would be opened (not opened)\n"}});
  EXPECT_EQ(Heard("zenity") + Heard("xdg-open"), "");
  WriteContent(Path("profile.ini"), "[MAIL]\nMAPI = 0\n");
  check({{"mail a@b", 3,
          "zolt: mail is switched off; set MAPI=1 below [MAIL] in " + Path("profile.ini") + "\n"}});
  unsetenv("DISPLAY");
}

TEST_F(ServicesTest, TheDoctorSaysWhatIsMissing) {
  std::string const before = RunTool({"doctor"}).out;
  EXPECT_NE(before.find("service\tlinks\tmissing\n"), std::string::npos) << before;
  StandIn("xdg-open");
  EXPECT_NE(RunTool({"doctor"}).out.find("service\tlinks\tnative\n"), std::string::npos);
  ToolResult const status = RunTool({"net", "status"});
  EXPECT_EQ(status.out, status.code == 0 ? "connected\n" : "not connected\n");
}

// By a trial in the same process, as the doctor says of itself.
TEST_F(ServicesTest, TheDoctorNamesADoorThatIsReplaced) {
  LateModule const fake = {"Shell32", {}, [] { return true; }};
  LateModuleSwap const swap(&fake);
  for (auto const &[option, line] : {std::pair("-q", "\nservice\tlinks\treplaced\n"),
                                     {"--json", R"({"service":"links","state":"replaced"})"}}) {
    char const *const words[] = {"doctor", option};
    tool::Arguments const arguments(words);
    tool::Settings const settings(arguments);
    int const file = open(Path("said").c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    tool::Output out(file, "said");
    EXPECT_EQ(tool::FindVerb("doctor", "")->run({arguments, settings, {}, out}), 0);
    out.Finish();
    EXPECT_NE(ContentOf(Path("said")).find(line), std::string::npos) << ContentOf(Path("said"));
  }
}

TEST_F(ServicesTest, TheDoctorTellsOfAnotherCodePage) {
  EXPECT_EQ(RunTool(Words("-q prefs set Audio V 1"), {.environment = {"ZOLT_CODEPAGE=1251"}}).code,
            0);
  EXPECT_EQ(RunTool({"doctor"}, {.environment = {"ZOLT_CODEPAGE=1251"}}).code, 0);
  ToolResult const other = RunTool({"doctor"}, {.environment = {"ZOLT_CODEPAGE=1252"}});
  EXPECT_EQ(other.code, 1);
  EXPECT_NE(other.out.find("problem\t" + home_.UserHive() +
                           "\tholds texts in code page 1251, which are read and written "
                           "in 1252\tset ZOLT_CODEPAGE=1251 for all programs\n"),
            std::string::npos)
      << other.out;
}

class RegisterTest : public ::testing::Test {
 protected:
  RegisterTest() {
    std::string const tool = ZOLT_TOOL;
    fs::create_directory(folder_);
    fs::copy_file(tool.substr(0, tool.rfind("/bin/")) + "/lib/libzolt41.so.0", library_);
  }

  static std::string Entered(HKEY root) {
    return Raw(root,
               "Software\\Classes\\CLSID\\{5ED2DD58-7638-11D3-8FD3-00A02459FA0F}\\InprocServer32",
               "");
  }

  TempHome home_;
  std::string folder_ = home_.path() + "/folder";
  std::string library_ = folder_ + "/libzolt41.so.0";
};

TEST_F(RegisterTest, ChangesOnceWhatIsEntered) {
  struct {
    char const *line;
    int code;
    char const *told;
    bool changes;
    bool entered;
  } const steps[] = {
      {"-n --exit-code unregister", 0, "was not registered", false, false},
      {"-n register", 0, "registered", true, false},
      {"-n --exit-code register", 1, "registered", true, false},
      {"register", 0, "registered", true, true},
      {"register", 0, "is registered already", false, true},
      {"-n --exit-code register", 0, "is registered already", false, true},
      {"-n --exit-code unregister", 1, "no longer registered", true, true},
      {"unregister", 0, "no longer registered", true, false},
      {"unregister", 0, "was not registered", false, false},
  };
  for (HKEY const root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    for (auto const &step : steps) {
      std::vector<std::string> words = Words(step.line);
      bool const out = words.back() == "unregister";
      if (!out) words.insert(words.end(), {"--module", library_});
      if (root == HKEY_LOCAL_MACHINE) words.emplace_back("--machine");
      ToolResult const result = RunTool(words);
      EXPECT_EQ(result.code, step.code) << step.line;
      EXPECT_EQ(result.err, "zolt: " + (out && !step.changes ? "Brindle.PrefManager" : library_) +
                                ": " + step.told +
                                (root == HKEY_LOCAL_MACHINE ? " for all users" : " for this user") +
                                (step.changes && words[0] == "-n" ? " (not written)\n" : "\n"));
      EXPECT_EQ(Entered(root), step.entered ? library_ : "no key") << step.line;
    }
  }
}

TEST_F(RegisterTest, TellsAProgramAndTheDoctor) {
  std::string const rest = R"("module":")" + library_ + R"(","registered":true,"changed":)";
  for (char const *changed : {"true}\n", "false}\n"}) {
    EXPECT_EQ(RunTool({"--json", "register", "--module", library_}).out,
              R"({"schema":1,"class":"Brindle.PrefManager","scope":"user",)" + rest + changed);
  }
  std::string const row = "component class\t" + library_ + "\tregistered for this user\n";
  EXPECT_NE(RunTool({"doctor"}).out.find(row), std::string::npos);
  chmod(folder_.c_str(), 0775);
  EXPECT_NE(RunTool({"doctor"}).out.find("problem\t" + folder_ + "\t"), std::string::npos);
}

TEST_F(RegisterTest, TheDoctorTellsOfAClassWithoutAModule) {
  std::string const problem =
      "problem\tBrindle.PrefManager\tis registered in part\tzolt register\n";
  HKEY key = HKEY_CURRENT_USER;
  for (char const *name : {"Software", "Classes", "Brindle.PrefManager"}) {
    ASSERT_EQ(RegCreateKeyA(key, name, &key), ERROR_SUCCESS);
  }
  ToolResult const result = RunTool({"doctor"});
  EXPECT_EQ(result.code, 1);
  EXPECT_NE(result.out.find("component class\t\tregistered for this user\n" + problem),
            std::string::npos)
      << result.out;
  EXPECT_NE(RunTool({"--json", "doctor"}).out.find(R"("component":{"scope":"user","module":"")"),
            std::string::npos);
  // Clients find the module of all users.
  EXPECT_EQ(RunTool({"-q", "register", "--machine", "--module", library_}).code, 0);
  EXPECT_EQ(RunTool({"doctor"}).out.find(problem), std::string::npos);
}

TEST_F(RegisterTest, RefusesWhatNoProgramWouldLoad) {
  std::string const module = "--module=";
  EXPECT_EQ(RunTool({"register", module}).code, 2);
  EXPECT_EQ(RunTool({"register", module + folder_ + "/none"}).code, 3);
  EXPECT_EQ(RunTool({"--home", "/dev/null", "register", module + library_}).code, 3);
  chmod(folder_.c_str(), 0775);
  ToolResult const result = RunTool({"register", module + library_});
  EXPECT_EQ(result.code, 3);
  EXPECT_TRUE(result.err.starts_with("zolt: " + folder_ + ": ")) << result.err;
  EXPECT_EQ(Entered(HKEY_CURRENT_USER), "no key");
}

TEST_F(RegisterTest, NothingIsMadeToTakeNothingAway) {
  std::string const none = home_.path() + "/none";
  for (char const *line : {"unregister", "-n register --module "}) {
    std::vector<std::string> words = Words(line);
    if (words.size() > 1) words.push_back(library_);
    words.insert(words.begin(), {"--home", none});
    EXPECT_EQ(RunTool(words).code, 0);
    EXPECT_FALSE(fs::exists(none)) << line;
  }
}

}  // namespace
}  // namespace zolt::testing
