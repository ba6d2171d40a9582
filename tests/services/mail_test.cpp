#include "zolt41/services/mail.h"

#include <sys/stat.h>

#include <algorithm>
#include <sstream>
#include <tuple>

#include "tests/services/stand_in.h"
#include "tests/support/child.h"
#include "zolt41/notify/channel_objects.h"
#include "zolt41/platform/desktop/mail_client.h"
#include "zolt41/platform/system/late_module.h"
#include "zolt41/services/mail_state.h"

namespace zolt::testing {
namespace {

// Name, address, subject, text and flags of the last message; "?" behind them if another field is
// not as it should be.
std::string sent;
uint32_t answer = 0;
bool usable = true;
int lookedFor = 0;

bool IsUsable() {
  lookedFor++;
  return usable;
}

uint32_t FakeSendMail(uintptr_t session, uintptr_t ui, MapiMessage *message, uint32_t flags,
                      uint32_t reserved) {
  MapiRecipDesc const &to = *message->lpRecips;
  bool const plain = session == 0 && ui == 0 && reserved == 0 && message->ulReserved == 0 &&
                     message->lpszMessageType == nullptr && message->flFlags == 0 &&
                     message->lpOriginator == nullptr && message->nRecipCount == 1 &&
                     message->nFileCount == 0 && message->lpFiles == nullptr &&
                     to.ulReserved == 0 && to.ulRecipClass == 1 && to.ulEIDSize == 0 &&
                     to.lpEntryID == nullptr;
  sent.clear();
  for (char const *part :
       {to.lpszName, to.lpszAddress, message->lpszSubject, message->lpszNoteText})
    sent += part + std::string(" ");
  sent += std::to_string(flags) + (plain ? "" : "?");
  return answer;
}

LateFunction const kFunctions[] = {{"MAPISendMail", reinterpret_cast<FARPROC>(FakeSendMail)}};
LateModule const kFake = {"mapi32", kFunctions, IsUsable};
std::atomic<int> asking = 0;
std::atomic<int> inside = 0;
LateModule const kSlow = {"mapi32", kFunctions, [] {
                            inside++;
                            while (asking < 2) std::this_thread::yield();
                            for (int i = 0; i < 1000; i++) std::this_thread::yield();
                            return true;
                          }};
LateModule const kWithout = {"MAPI32.DLL", {}, [] { return true; }};

class MailTest : public StandInTest {
 protected:
  MailTest() {
    ForgetMailTest();
    sent.clear();
    answer = 0;
    usable = true;
  }
  ~MailTest() override { ForgetMailTest(); }

  void Profile(std::string const &text) const { WriteContent(Path("profile.ini"), text); }
  static uint32_t Send(std::string to, std::string subject, std::string text, int32_t silent) {
    return SendMail(nullptr, to.data(), subject.data(), text.data(), nullptr, silent);
  }
  // What is told on standard error, since there is no desktop.
  template <typename Do>
  static std::string ToldBy(Do what) {
    ::testing::internal::CaptureStderr();
    what();
    return ::testing::internal::GetCapturedStderr();
  }
};

TEST_F(MailTest, TheProfileTheModuleAndItsFunctionDecide) {
  // Without a word of the profile a machine with a mailer can mail.
  StandIn("sendmail");
  std::tuple<char const *, bool, bool, int32_t> const rows[] = {
      {"[MAIL]\nMAPI=1\n", true, true, 1},
      {"[mail]\r\nmapi = 2\r\n", true, true, 1},
      {"[MAIL]\nMAPI=0\n", true, true, 0},
      {"\t[ Mail ] \r\n Mapi\t=\t0 ", true, true, 0},
      {"\xEF\xBB\xBF[MAIL]\nMAPI=0\n", true, true, 0},
      {"[MAIL\n[OTHER]\nMAPI=0\n[MAIL]\nx=0\n", true, true, 1},
      {"[MAIL]\nMAPI=1\n", false, true, 0},
      {"[MAIL]\nMAPI=1\n", true, false, 0}};
  for (auto const &[profile, there, function, can] : rows) {
    LateModuleSwap const swap(function ? &kFake : &kWithout);
    usable = there;
    lookedFor = 0;
    Profile(profile);
    ForgetMailTest();
    EXPECT_EQ(CanMail(), can) << profile << there << function;
    bool const off = can == 0 && there && function;
    EXPECT_TRUE(!off || lookedFor == 0) << profile;
  }
}

TEST_F(MailTest, TheFirstResultStands) {
  LateModuleSwap const swap(&kFake);
  StandIn("sendmail");
  std::string const profile = Path("profile.ini");
  ASSERT_EQ(mkfifo(profile.c_str(), 0600), 0);
  EXPECT_EQ(CanMail(), 1) << "a profile that would never end is none";
  std::filesystem::remove(profile);
  Profile("[MAIL]\nMAPI=0\n");
  EXPECT_EQ(CanMail(), 1);
  ForgetMailTest();
  EXPECT_EQ(CanMail(), 0);
  Profile("[MAIL]\nMAPI=1\n");
  EXPECT_EQ(CanMail(), 0);
  EXPECT_EQ(Send("a@b", "s", "t", 1), 0U);
  EXPECT_EQ(sent, "");
}

TEST_F(MailTest, WhoAsksDuringTheTestIsNotToldNo) {
  LateModuleSwap const swap(&kSlow);
  Profile("[MAIL]\nMAPI=1\n");
  asking = 0;
  std::atomic<int> can = 0;
  auto const ask = [&can] {
    asking++;
    can += CanMail();
  };
  {
    std::jthread const first(ask);
    std::jthread const second(ask);
  }
  EXPECT_EQ(can, 2);
}

TEST_F(MailTest, AForkDuringTheTestLeavesAChildThatCanTest) {
  LateModuleSwap const swap(&kSlow);
  Profile("[MAIL]\nMAPI=1\n");
  asking = inside = 0;
  std::jthread const first(CanMail);
  while (inside == 0) std::this_thread::yield();
  Child child([](Child::Pipe &) {
    asking = 2;
    return CanMail();
  });
  EXPECT_EQ(child.Wait(), 1);
  asking = 2;
}

TEST_F(MailTest, TheWordsThatAllShareAreKeptAndNeverBelieved) {
  LateModuleSwap const swap(&kFake);
  Profile("[MAIL]\nMAPI=1\n");
  Child first([](Child::Pipe &pipe) {
    bool good = CanMail() == 1;
    SharedBlock const &block = Channel()->block;
    auto const isOurs = [&block] {
      return block.mailEntry == static_cast<uint32_t>(reinterpret_cast<uintptr_t>(FakeSendMail)) &&
             block.mailModule == static_cast<uint32_t>(reinterpret_cast<uintptr_t>(&kFake));
    };
    good = good && isOurs() && block.canMail == 1;
    pipe.Say("tested");
    pipe.Hear();
    good = good && isOurs() && block.canMail == 0;
    good = good && CanMail() == 1 && Send("a@b", "s", "t", 1) == 0 && !sent.empty();
    return good ? 0 : 1;
  });
  EXPECT_EQ(first.pipe().Hear(), "tested");
  Profile("[MAIL]\nMAPI=0\n");
  Child second([](Child::Pipe &) { return CanMail(); });
  EXPECT_EQ(second.Wait(), 0);
  first.pipe().Say("on");
  EXPECT_EQ(first.Wait(), 0);
}

TEST_F(MailTest, TheMessageIsFilledAsItShould) {
  LateModuleSwap const swap(&kFake);
  Profile("[MAIL]\nMAPI=1\n");
  for (auto const &[silent, flags] : {std::pair{0, "9"}, std::pair{1, "1"}, std::pair{-7, "1"}}) {
    EXPECT_EQ(Send("anna@example.org", "Hello", "Text", silent), 0U);
    EXPECT_EQ(sent, std::string("anna@example.org SMTP:anna@example.org Hello Text ") + flags);
  }
}

TEST_F(MailTest, OnlyRealFailuresAreTold) {
  LateModuleSwap const swap(&kFake);
  Profile("[MAIL]\nMAPI=1\n");
  for (uint32_t const code : {0U, 1U, 2U, 3U, 26U}) {
    answer = code;
    bool const told = code == 2 || code == 26;
    EXPECT_EQ(ToldBy([&] { EXPECT_EQ(Send("a", "b", "c", 1), code); }),
              told ? "zolt41: Send Mail failed to send message.\n" : "")
        << code;
  }
}

TEST_F(MailTest, WithoutADesktopSendmailGetsTheMessage) {
  StandIn("sendmail");
  EXPECT_EQ(CanMail(), 1);
  EXPECT_EQ(Send("anna@example.org", "Gr\xFC\xDF\x65", "one\r\ntwo\rthree", 0), 0U);
  EXPECT_EQ(Heard("sendmail"),
            "<-i><--><anna@example.org>\nTo: anna@example.org\nSubject: =?UTF-8?B?R3LDvMOfZQ==?=\n"
            "MIME-Version: 1.0\nContent-Type: text/plain; charset=UTF-8\n"
            "Content-Transfer-Encoding: 8bit\n\none\ntwo\nthree\n");
}

TEST_F(MailTest, NoLineOfTheHeadIsTooLong) {
  StandIn("sendmail");
  for (size_t const before : {0U, 1U}) {
    Send("a@b", std::string(before, 'x') + std::string(80, '\xFC'), "", 1);
    std::istringstream head(Heard("sendmail"));
    size_t longest = 0;
    for (std::string line; std::getline(head, line);) longest = std::max(longest, line.size());
    EXPECT_GT(longest, 70U);
    EXPECT_LE(longest, 76U);
  }
}

TEST_F(MailTest, WhatMailCannotCarryAsItIsIsEncoded) {
  StandIn("sendmail");
  std::string const longest(998, 'x');
  Send("a@b", longest.substr(9), longest, 1);
  std::string heard = Heard("sendmail");
  EXPECT_TRUE(Has(heard, "\nSubject: " + longest.substr(9) + "\nMIME"));
  EXPECT_TRUE(heard.ends_with("Encoding: 8bit\n\n" + longest + "\n"));

  Send("a@b", "a =?UTF-8?Q?b?=", "", 1);
  EXPECT_TRUE(Has(Heard("sendmail"), "\nSubject: =?UTF-8?B?YSA9P1VURi04P1E/Yj89?=\n"));

  // Three x are eHh4.
  Send("a@b", longest.substr(8), "yyy\n" + longest + "x", 1);
  heard = Heard("sendmail");
  std::string const word = "=?UTF-8?B?";
  std::string subject = "Subject: " + word;
  for (size_t i = 0; i < 990; i += 3) {
    if (i == 39 || (i > 39 && (i - 39) % 45 == 0)) subject += "?=\n " + word;
    subject += "eHh4";
  }
  EXPECT_TRUE(Has(heard, "\n" + subject + "?=\nMIME"));
  // The text is yyy CR LF, 999 of x, CR LF.
  std::string digits = "eXl5DQp4";
  for (int i = 0; i < 332; i++) digits += "eHh4";
  digits += "eHgNCg==";
  std::string text;
  for (size_t i = 0; i < digits.size(); i += 76) text += digits.substr(i, 76) + "\n";
  EXPECT_TRUE(heard.ends_with("Encoding: base64\n\n" + text)) << heard;
}

TEST_F(MailTest, OnADesktopItsMailProgramShowsTheMessage) {
  setenv("DISPLAY", ":none", 1);
  StandIn("sendmail");
  // Options, and empty fields among them, make the real one fail.
  StandIn("xdg-email", "case $#$1 in 1mailto:*) exit 0; esac; exit 1");
  std::tuple<char const *, char const *, char const *, std::string> const rows[] = {
      {"anna@example.org", "it's $(x)", "a \"b\"\r\nc\\d\n",
       "anna@example.org?subject=it%27s%20%24%28x%29&body=a%20%22b%22%0D%0Ac%5Cd%0D%0A"},
      {"a+b", "", "-n", "a%2Bb?body=-n"},
      {"a@b", "-\xFC", "", "a@b?subject=-%C3%BC"},
      {"a@b", "", "", "a@b"},
      {"a@b?attach=/x&cc=e@x%41", "", "", "a@b%3Fattach%3D%2Fx%26cc%3De@x%2541"}};
  for (auto const &[to, subject, text, uri] : rows) {
    EXPECT_EQ(Send(to, subject, text, 0), 0U);
    EXPECT_EQ(Heard("xdg-email"), "<mailto:" + uri + ">\n");
  }
  EXPECT_EQ(Heard("sendmail"), "");
  EXPECT_EQ(Send("anna@example.org", "s", "t", 1), 0U);
  EXPECT_TRUE(Heard("sendmail").starts_with("<-i><--><anna@example.org>\n"));
  StandIn("xdg-email", "exit 3");
  ToldBy([&] { EXPECT_EQ(Send("a@b", "s", "t", 0), 2U); });
  unsetenv("DISPLAY");
}

TEST_F(MailTest, WhatIsMoreThanOneAddressOrASubjectIsRefused) {
  StandIn("sendmail");
  for (char const *to : {"-oQ/tmp", "a\nBcc: b", "", "a\x7F", "a@b,c@d", "a@b;c@d", "a@b c@d",
                         ":include:/x", "A <a@b>", "\xFC@b"})
    ToldBy([&] { EXPECT_EQ(Send(to, "s", "t", 1), 25U) << to; });
  for (char const *subject : {"s\r\nBcc: b", "s\x81"})
    ToldBy([&] { EXPECT_EQ(Send("a", subject, "t", 1), 2U) << subject; });
  EXPECT_EQ(Heard("sendmail"), "");
  EXPECT_EQ(Send("a+b/c?d@e", "-s", "t", 1), 0U);
  StandIn("sendmail", "exit 75");
  ToldBy([&] { EXPECT_EQ(Send("a", "s", "t", 1), 2U); });
}

}  // namespace
}  // namespace zolt::testing
