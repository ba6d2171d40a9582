#ifndef ZOLT41_TOOLS_ZOLT_CARD_SOURCE_H_
#define ZOLT41_TOOLS_ZOLT_CARD_SOURCE_H_

#include <memory>
#include <string>
#include <string_view>

#include "tools/zolt/errors.h"
#include "tools/zolt/verbs.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

// The card of a file, in either form. Throws if it cannot be read, or is no whole card.
std::unique_ptr<CallCard> LoadCard(Call const &call, std::string_view path);

// Starts the library, which knows the names of sections that card text has.
void NeedSectionNames(Call const &call);

// Saves it again. Throws if that fails.
void SaveCard(CallCard *card);
// Saves it under another name; an old file there goes, with what it has.
void SaveCardAs(CallCard *card, int32_t format, std::string const &path);
// Writes it as a vCard.
void SaveVCard(CallCard *card, VCardProfile profile, std::string const &path);

// Why the last operation on a file failed.
ToolError FileFailure(std::string const &path);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_SOURCE_H_
