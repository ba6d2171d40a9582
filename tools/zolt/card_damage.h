#ifndef ZOLT41_TOOLS_ZOLT_CARD_DAMAGE_H_
#define ZOLT41_TOOLS_ZOLT_CARD_DAMAGE_H_

#include <string>
#include <string_view>
#include <vector>

namespace zolt::tool {

// What keeps a card from being read whole.
struct CardDamage {
  std::string place;  // "byte 72" of a card file, "line 6" of card text, "" of the whole
  std::string what;
  bool lost;  // what stands there is not read; else it is only not as it should be
};

// The bytes are of the form with a head, sound or not.
bool IsCardFile(std::string_view bytes);

// They are a card in either form, whatever its damage.
bool IsCard(std::string_view bytes);

// Of what a file holds. Nothing for a card that is sound; for what is no card in either form, that
// it is none. Card text is looked over with the names of sections that the library knows.
std::vector<CardDamage> DamageOf(std::string_view bytes);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_DAMAGE_H_
