#include <fcntl.h>

#include <tuple>

#include "tests/prefs/prefs_fixture.h"
#include "tests/services/stand_in.h"
#include "tests/support/run_tool.h"
#include "tools/zolt/verbs.h"
#include "zolt41/platform/system/late_module.h"

namespace zolt::testing {
namespace {

namespace fs = std::filesystem;

// A line, the exit code, and what is said on standard error, but for "zolt: ".
using Row = std::tuple<char const *, int, std::string>;

void Expect(std::vector<Row> const &rows) {
  for (auto const &[line, code, err] : rows) {
    ToolResult const result = RunTool(Words(line));
    EXPECT_EQ(std::to_string(result.code) + result.err,
              std::to_string(code) + (err.empty() ? "" : "zolt: " + err + "\n"))
        << line;
  }
}

class ServicesTest : public StandInTest {
 protected:
  static int Code(std::string const &line, ToolSetting const &setting = {}) {
    ToolResult const result = RunTool(Words(line), setting);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.code == 0, result.err.empty()) << result.err;
    return result.code;
  }
};

TEST_F(ServicesTest, LinksAndMailGoToTheDesktopsPrograms) {
  EXPECT_EQ(Code("open http://x"), 3);
  StandIn("xdg-open");
  StandIn("sendmail");
  EXPECT_EQ(Code("open http://x/\u00FC"), 0);
  EXPECT_EQ(Heard("xdg-open"), "<http://x/\u00FC>\n");
  for (char const *wrong :
       {"open -- -x", "open 'a\nb'", "mail -- -a@b", "mail a@b --subject 'a\nb'"})
    EXPECT_EQ(Code(wrong), 2) << wrong;
  EXPECT_EQ(Code("mail a@b --subject Hi --text t"), 0);
  EXPECT_TRUE(Heard("sendmail").starts_with("<-i><--><a@b>\nTo: a@b\nSubject: Hi\n"));
  EXPECT_EQ(Code("mail a@b --from -", {"line\n"}), 0);
  EXPECT_TRUE(Heard("sendmail").ends_with("\n\nline\n\n"));
  for (auto const &[line, out] :
       {std::pair("--json open x:y", R"({"schema":1,"url":"x:y","opened":true})"),
        {"--json -n open x:y", R"({"schema":1,"url":"x:y","opened":false})"},
        {"--json mail a@b", R"({"schema":1,"to":"a@b","sent":true})"},
        {"--json -n mail a@b", R"({"schema":1,"to":"a@b","sent":false})"}}) {
    EXPECT_EQ(RunTool(Words(line)).out, out + std::string("\n"));
  }
  StandIn("xdg-open", "exit 4");
  EXPECT_EQ(Code("open http://x"), 3);
}

TEST_F(ServicesTest, WhatIsNotSentIsSaidInOneLine) {
  Expect({{"mail a@b", 3, "this machine sends no mail; install a sendmail"}});
  StandIn("sendmail", "echo refused >&2; exit 69");
  StandIn("xdg-open");
  setenv("DISPLAY", ":none", 1);
  StandIn("zenity");
  Expect(
      {{"mail a@b", 3, "a@b: not sent: refused"},
       {"mail -q a@b", 3, "a@b: not sent: refused"},
       {"mail --compose a@b", 3,
        "no mail program can show it before it is sent; --compose needs a desktop with xdg-email"},
       {"-n mail a@b,c@d", 2, "a@b,c@d: is not one address; give it plain, as in anna@example.org"},
       {"-n mail a@b", 0, "a@b: would get the message (not sent)"},
       {"-n --exit-code -q mail a@b", 1, ""},
       {"-n --exit-code open x:y", 1, "x:y: would be opened (not opened)"}});
  EXPECT_EQ(RunTool({"--json", "mail", "a@b"}).err,
            R"({"error":{"code":3,"kind":"io","subject":"a@b","message":"not sent: refused",)"
            "\"hint\":\"\"}}\n");
  EXPECT_EQ(Heard("zenity") + Heard("xdg-open"), "");
  WriteContent(Path("profile.ini"), "[MAIL]\nMAPI = 0\n");
  Expect(
      {{"mail a@b", 3, "mail is switched off; set MAPI=1 below [MAIL] in " + Path("profile.ini")}});
  unsetenv("DISPLAY");
}

TEST_F(ServicesTest, TheDoctorSaysWhatIsMissing) {
  EXPECT_TRUE(Has(RunTool({"doctor"}).out, "service\tlinks\tmissing\n"));
  StandIn("xdg-open");
  EXPECT_TRUE(Has(RunTool({"doctor"}).out, "service\tlinks\tnative\n"));
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
    EXPECT_TRUE(Has(ContentOf(Path("said")), line));
  }
}

TEST_F(ServicesTest, TheDoctorTellsOfAnotherCodePage) {
  ToolSetting const russian{.environment = {"ZOLT_CODEPAGE=1251"}};
  EXPECT_EQ(RunTool(Words("-q prefs set Audio V 1"), russian).code, 0);
  EXPECT_EQ(RunTool({"doctor"}, russian).code, 0);
  ToolResult const other = RunTool({"doctor"}, {.environment = {"ZOLT_CODEPAGE=1252"}});
  EXPECT_EQ(other.code, 1);
  EXPECT_TRUE(Has(other.out, "problem\t" + home_.UserHive() +
                                 "\tholds texts in code page 1251, which are read and written in "
                                 "1252\tset ZOLT_CODEPAGE=1251 for all programs\n"));
}

class RegisterTest : public FileTest {
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

  std::string folder_ = Path("folder");
  std::string library_ = folder_ + "/libzolt41.so.0";
};

TEST_F(RegisterTest, ChangesOnceWhatIsEntered) {
  // A line, its exit code, what is told, and whether it changes something and what is entered.
  std::tuple<std::string, int, std::string, bool, bool> const steps[] = {
      {"-n --exit-code unregister", 0, "was not registered", false, false},
      {"-n register", 0, "registered", true, false},
      {"-n --exit-code register", 1, "registered", true, false},
      {"register", 0, "registered", true, true},
      {"register", 0, "is registered already", false, true},
      {"-n --exit-code register", 0, "is registered already", false, true},
      {"-n --exit-code unregister", 1, "no longer registered", true, true},
      {"unregister", 0, "no longer registered", true, false},
      {"unregister", 0, "was not registered", false, false}};
  for (auto const &[root, option, whom] : {std::tuple(HKEY_CURRENT_USER, "", " for this user"),
                                           {HKEY_LOCAL_MACHINE, " --machine", " for all users"}}) {
    for (auto const &[line, code, told, changes, entered] : steps) {
      SCOPED_TRACE(line);
      bool const out = line.ends_with("unregister");
      ToolResult const result =
          RunTool(Words(line + (out ? "" : " --module " + library_) + option));
      EXPECT_EQ(result.code, code);
      EXPECT_EQ(result.err, "zolt: " + (out && !changes ? "Brindle.PrefManager" : library_) + ": " +
                                told + whom +
                                (changes && line.starts_with("-n") ? " (not written)\n" : "\n"));
      EXPECT_EQ(Entered(root), entered ? library_ : "no key");
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
  EXPECT_TRUE(Has(RunTool({"doctor"}).out, row));
  fs::permissions(folder_, fs::perms(0775));
  EXPECT_TRUE(Has(RunTool({"doctor"}).out, "problem\t" + folder_ + "\t"));
}

TEST_F(RegisterTest, TheDoctorTellsOfAClassWithoutAModule) {
  std::string const problem =
      "problem\tBrindle.PrefManager\tis registered in part\tzolt register\n";
  HKEY key = HKEY_CURRENT_USER;
  for (char const *name : {"Software", "Classes", "Brindle.PrefManager"})
    ASSERT_EQ(RegCreateKeyA(key, name, &key), ERROR_SUCCESS);
  ToolResult const result = RunTool({"doctor"});
  EXPECT_EQ(result.code, 1);
  EXPECT_TRUE(Has(result.out, "component class\t\tregistered for this user\n" + problem));
  EXPECT_TRUE(Has(RunTool({"--json", "doctor"}).out, R"("component":{"scope":"user","module":"")"));
  // Clients find the module of all users.
  EXPECT_EQ(RunTool({"-q", "register", "--machine", "--module", library_}).code, 0);
  EXPECT_FALSE(Has(RunTool({"doctor"}).out, problem));
}

TEST_F(RegisterTest, RefusesWhatNoProgramWouldLoad) {
  std::string const module = "--module=";
  EXPECT_EQ(RunTool({"register", module}).code, 2);
  EXPECT_EQ(RunTool({"register", module + folder_ + "/none"}).code, 3);
  EXPECT_EQ(RunTool({"--home", "/dev/null", "register", module + library_}).code, 3);
  fs::permissions(folder_, fs::perms(0775));
  ToolResult const result = RunTool({"register", module + library_});
  EXPECT_EQ(result.code, 3);
  EXPECT_TRUE(result.err.starts_with("zolt: " + folder_ + ": ")) << result.err;
  EXPECT_EQ(Entered(HKEY_CURRENT_USER), "no key");
}

TEST_F(RegisterTest, NothingIsMadeToTakeNothingAway) {
  for (std::string const &line : {std::string("unregister"), "-n register --module " + library_}) {
    EXPECT_EQ(RunTool(Words("--home " + Path("none ") + line)).code, 0);
    EXPECT_FALSE(fs::exists(Path("none"))) << line;
  }
}

}  // namespace
}  // namespace zolt::testing
