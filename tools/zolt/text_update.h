#ifndef ZOLT41_TOOLS_ZOLT_TEXT_UPDATE_H_
#define ZOLT41_TOOLS_ZOLT_TEXT_UPDATE_H_

#include <string>

#include "tools/zolt/preference_text.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/store_update.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

// The preference text that a call names, and where it goes: to the store of -L, or without that to
// the one it was taken from.
PreferenceText TextFrom(Call const &call, std::string_view file);

// What of a store a text changes, and only that; with `replace` also the removal of what it does
// not name in its sections. Sections that are missing are among it, with no value. Throws a usage
// error, with the place, for a section that lies in one which is neither in the store nor in the
// text.
StoreUpdate UpdateOf(PreferenceText const &text, bool replace, Progress *progress = nullptr);

// Writes what of a store a text changes, as --replace and --undo of the call have it: after the
// questions that it takes, in one transaction, with all that is said about it. Gives the exit code.
int LoadText(PreferenceText text, Call const &call);

// Write the text that makes an update, or that takes it back; sections stay.
void WritePatch(Level const &level, StoreUpdate const &update, Output &out);
void WriteUndo(Level const &level, StoreUpdate const &update, Output &out);

// Says what an update did or, under -n and value by value, would do. Gives the exit code.
int ReportUpdate(StoreUpdate const &update, Level const &level, Call const &call);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_TEXT_UPDATE_H_
