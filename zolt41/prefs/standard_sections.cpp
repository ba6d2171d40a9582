#include "zolt41/prefs/standard_sections.h"

#include <algorithm>
#include <array>

#include "zolt41/prefs/pref_sections.h"
#include "zolt41/prefs/section_name_hash.h"

namespace zolt {

namespace {

constexpr int32_t kConferencing = SectionLetters("gONG");

constexpr std::array<StandardSection, 24> kSections = {{
    {SectionLetters("INST"), "Installer", 0, 1},
    {SectionNameHash("Components"), "Components", 0, 2},
    {SectionLetters("GNRL"), "General", 0, 3},
    {SectionLetters("IDNT"), "Identity", 0, 4},
    {SectionLetters("NTFC"), "Notification Agent", 0, 5},
    {SectionLetters("COPR"), "Connection Preferences", 0, 8},
    {SectionLetters("GTKP"), "Gatekeeper", 0, 9},
    {SectionLetters("DIRE"), "Directory", 0, 10},
    {SectionLetters("PUBL"), "Publisher", 0, 11},
    {SectionNameHash("Companion"), "Companion", 0, 13},
    {SectionLetters("FAVO"), "Favorites", 0, 14},
    {SectionLetters("PHBK"), "PhoneBook", 0, 15},
    {SectionLetters("MAND"), "Manual Dial", 0, 16},
    {SectionLetters("WEBP"), "WebPlaces", 0, 17},
    {SectionNameHash("Communities"), "Communities", 0, 18},
    {kConferencing, "Conferencing", 0, 19},
    {SectionLetters("BUDY"), "Contact list", 0, 24},
    {SectionLetters("gONF"), "Conference", kConferencing, 21},
    {SectionLetters("P2P!"), "Point2Point", kConferencing, 20},
    {SectionLetters("COLL"), "Collaboration", kConferencing, 12},
    {SectionLetters("AUDI"), "Audio", kConferencing, 6},
    {SectionLetters("VIDO"), "Video", kConferencing, 7},
    {SectionNameHash("Chat"), "Chat", kConferencing, 23},
    {SectionLetters("LYTS"), "Layouts", kConferencing, 22},
}};

constexpr std::array<int32_t, kSections.size()> InUnregisterOrder() {
  std::array<int32_t, kSections.size()> ids = {};
  for (StandardSection const &section : kSections) ids[section.unregisterRank - 1] = section.id;
  return ids;
}

constexpr std::array<int32_t, kSections.size()> kUnregisterOrder = InUnregisterOrder();

}  // namespace

std::span<StandardSection const> StandardSections() {
  return kSections;
}

bool RegisterStandardSections() {
  return std::ranges::all_of(kSections, [](StandardSection const &section) {
    return section.parent == 0 ? RegisterPrefSection(section.id, section.name) != 0
                               : RegisterPrefSection(section.id, section.parent, section.name) != 0;
  });
}

void UnregisterStandardSections() {
  for (int32_t const id : kUnregisterOrder) UnRegisterPrefSection(id, 0);
}

}  // namespace zolt
