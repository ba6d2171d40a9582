#ifndef ZOLT41_TOOLS_ZOLT_CARD_SOURCE_H_
#define ZOLT41_TOOLS_ZOLT_CARD_SOURCE_H_

#include <memory>
#include <string>
#include <string_view>

#include "tools/zolt/card_lock.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/verbs.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

// The card of a file, in either form. Throws if it cannot be read, or something of it is lost. One
// that another program has open is waited for.
std::unique_ptr<CallCard> LoadCard(Call const &call, std::string_view path);

// The same of a card of which something is lost, too: what is left of it, which needs a yes. Throws
// if nothing is.
std::unique_ptr<CallCard> LoadRestOfCard(Call const &call, std::string_view path);

// A card that is to be changed, which no other run of this tool changes meanwhile.
class EditedCard {
 public:
  // Throws as LoadCard does, and for a card that is not sound in every way.
  EditedCard(Call const &call, std::string_view path);

  CallCard *card() { return card_.get(); }
  // Saves it again. Throws if that fails; what card text cannot hold needs a yes.
  void Save();

 private:
  Call const &call_;
  CardLock lock_;
  std::unique_ptr<CallCard> card_;
};

// Starts the library, which knows the names of sections that card text has.
void NeedSectionNames(Call const &call);

// Saves a card under another name; an old file there goes, with what it has. One that another
// program has open is waited for, `wait` milliseconds.
void SaveCardAs(CallCard *card, int32_t format, std::string const &path, uint32_t wait = 0);
// What --profile says; 3.0 if it is not given. Throws a usage error.
VCardProfile ProfileOption(Arguments const &arguments);
// Writes it as a vCard, in the same way.
void SaveVCard(CallCard *card, VCardProfile profile, std::string const &path, uint32_t wait = 0);

// Why the last operation on a file failed.
ToolError FileFailure(std::string const &path);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_SOURCE_H_
