#include "zolt41/interchange/card_text_check.h"

#include <bit>

#include "tests/interchange/interchange_fixture.h"
#include "zolt41/interchange/card_text_import.h"

namespace zolt::testing {
namespace {

using CardTextCheckTest = InterchangeTest;

// The lines, each with ! if something is lost; "none" of what is no card text.
std::string Found(std::string const &text) {
  std::string found;
  auto const add = [](void *to, CardTextFinding const &finding) {
    *static_cast<std::string *>(to) += std::to_string(finding.line) + (finding.lost ? "! " : " ");
  };
  auto const size = static_cast<int32_t>(text.size());
  return CheckCardText(text.data(), size, add, &found) == 1 ? found : "none";
}

TEST_F(CardTextCheckTest, WhatIsNotReadIsFound) {
  std::string const head = "1\n2\n\n[Card Infos]\n";
  std::string const prefs = head + "\n[General]\n";
  std::string const name32(32, 'n');
  std::pair<std::string, std::string> const cases[] = {
      {head + "A=ASCII:HOME:x=3D\nB=UNICODE::<41000000>A\nC=DATA::<0A>\n", ""},
      {WithLineEnds(ExampleOf("card_text.md")) + "\r\n[Preferences]\r\nLost=1\r\n", ""},
      {prefs + "A=1\n\n[Flow Control]\nMaxCap=1\n\n[Preferences]\n\n", ""},
      {"", "none"},
      {"# Notes\n\nfor [Card Infos]\n", "none"},
      {"[Card Infos]\nA=ASCII::x\n", "none"},
      {head + std::string("A=ASCII::x\0y\n", 13), "none"},
      {"1\n2 x\ty\n\n[Card Infos]\n", "none"},
      {"1\n2\n\n[General]\nA=1\n", "none"},
      {head + "A=ASCII::x\nFoo=BOGUS::x\nB=ASCII::x\n", "6! "},
      {head + "A=ASCII::x\nno property\n\nstray\nmore\n[General]\nA=1\n", "6! "},
      {head + "A=ASCII::1", "5 "},
      {head + "A=UNICODE::<4100zz0000>\nB=ASCII::x\n", "5! "},
      {head + "A=BITMAP::<0A0", "5! "},
      {head + "A=BITMAP::<0A0\n", "5! "},
      {head + "A=BITMAP::<0A>x\n", "5! "},
      {head + "A=BITMAP::0A\nB=ASCII::\xE9\n", "5! "},
      {head + "A=ASCII::x\xE9\nB=ASCII::x\ty\nC=ASCII::=4\nD=ASCII::=zz\n", "5! 6! 7! 8! "},
      {head + "A=ASCII:HOME,HOEM:x\n", "5! "},
      {head + "A=ASCII:HOME:x\na=ASCII:HOME:y\nA=ASCII::z\n", "6! 7! "},
      {head + "T=UNICODE:HOME:<31000000>1\nt=ASCII::2\n", "6! "},
      {head + "P=BITMAP:HOME,FAX:<47>\nP=URL:HOME:x\nP=URL:WORK:y\n", "6! "},
      {head + "T=ASCII::1\nT=ASCII:HOME:2\nT=BITMAP::<47>\nT=DATA::<47>\n", ""},
      {head + "N=ASCII::\nT=ASCII:HOME:1\nT=ASCII::\nT=ASCII::2\nU=UNICODE::\n", "5 7! "},
      {head + "C=ASCII::a=00b\nD=UNICODE::a=00b\nE=ASCII::a=3D00\n", "5! 6! "},
      {"10.0.0.1\tgone\n0\n\n[Card Infos]\n", "1! "},
      {"1\xE9 x\n0\n\n[Card Infos]\nX-BRNDL-IP=ASCII::1=E9 x\n", "1! "},
      {"10.0.0.1\n22 Elm\n\n[Card Infos]\n", "2! "},
      {"10.0.0.1\n22 Elm\n\n[Card Infos]\nX-BRNDL-CONFID=ASCII::22 Elm\n", ""},
      {"10.0.0.1\n0\n\n[Card Infos]\nx-brndl-ip=ASCII::10.0.0.2\n", "1! "},
      {std::string(64, '1') + "\n\n\n[Card Infos]\nX-BRNDL-IP=ASCII::" + std::string(65, '1') +
           "\n",
       ""},
      {prefs + "A=1\na=2\n\n[Audio]\nA=1\n\n[general]\nA=3\n", "8! 14! "},
      {prefs + "AutoOpen=1\n\n[Settings]\nautoopen=2\n", "10! "},
      {head + "[General]\nA=1\n", "5! "},
      {"1\n2\nstray\n[Card Infos]\n", "3 "},
      {head + "\nsome\ttab\n[General]\nA=1\n", "6! "},
      {prefs + "zw\xF6lf=1\nB=2\n", "7! "},
      {prefs + "A=zw\xF6lf\n" + name32 + "=1\nB=" + std::string(1024, 'v') + "\n", "7! 8! 9! "},
      {prefs + "A=1\nB=2", "8! "},
      {head + "\n[Nowhere]\nA=1\nB=2\n", "7 "},
      {head + "\n[" + std::string(65, 'n') + "]\nA=1\n", "6! "},
      {head + "\n[General\nA=1\n", "6! "}};
  for (auto const &[text, found] : cases) EXPECT_EQ(Found(text), found) << text;
}

// Each set of seven of the fourteen flags from POSTAL on; none holds another.
std::string TextOfManySets() {
  std::string text = "1\n2\n\n[Card Infos]\n";
  for (uint32_t set = 0; set < 1U << 16; set += 4) {
    if (std::popcount(set) != 7) continue;
    text += "A=ASCII:";
    for (uint32_t bit = 0; bit < 16; bit++) {
      if ((set >> bit & 1) == 0) continue;
      text += kPropertyFlagNames[bit];
      text += ',';
    }
    text += ":x\n";
  }
  return text;
}

// More than are looked through one by one.
TEST_F(CardTextCheckTest, OfManySetsOfFlagsThoseAreReplacedThatHoldAnother) {
  constexpr uint32_t kSets = 3432;
  std::string const text = TextOfManySets() + "A=ASCII:POSTAL,PARCEL:y\n";
  EXPECT_EQ(Found(text), std::to_string(kSets + 5) + "! ");
  PCardStorage card;
  AddText(&card, "a", 0x1FC | 1U << 20, "goes: its first seven are one of the sets");
  AddText(&card, "a", 0xF8, "stays");
  AddText(&card, "B", 0x1FC, "stays");
  EXPECT_EQ(ImportCard(&card, text.data(), static_cast<int32_t>(text.size())), 1);
  // Those that have both flags have five of the other twelve.
  EXPECT_EQ(card.PropCount(), 2 + 2 + kSets - 792 + 1);
}

}  // namespace
}  // namespace zolt::testing
